// What an update offers: a verified manifest, what the user ticked, and the results of the workers.
//
// UpdateContext is a value. The main thread has one inside LauncherService; a worker gets a copy on
// its own stack and works on that copy alone. The only thing that is shared is the flag behind
// `cancelRef`.
#pragma once

#include "update/files/cancel_flag.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QUrl>

// A verified manifest. The records are kept as JSON and read key by key where they are needed, so a
// missing key and one of the wrong type are one case.
struct UpdateSnapshot {
    // The whole text as it was verified, signature included; verified a second time before a
    // project is replaced. Empty: no manifest is held.
    QString manifestText;
    QString source;           // stick: absolute file path; online: the URL
    QString baseLocation;     // stick: the manifest's folder; online: the URL without its file name
    QJsonObject projectEntry; // the record that matched and is eligible, else empty
    QJsonObject runtimeEntry;
    QJsonObject launcherEntry;
    QJsonObject editorEntry;
    QJsonObject pythonToolsEntry;
    QJsonArray plugins;
    bool fromUsb = false;
};

// What the user ticked in the update dialog.
struct UpdateSelection {
    bool project = true;
    bool runtime = true;
    bool launcher = true;
    bool editor = true;
    bool pythonTools = true;
};

// Whether one item of the update dialog can be chosen, and the reason for either answer.
struct UpdateChoice {
    bool available = false;
    QString reason;
};

struct UpdateChoices {
    UpdateChoice project;
    UpdateChoice runtime;
    UpdateChoice launcher;
    UpdateChoice editor;
    UpdateChoice pythonTools;
};

// The end of an update check.
struct UpdateCheckResult {
    bool found = false;     // at least one item is eligible
    bool cancelled = false; // the cancel flag was up when the worker ended
    UpdateSnapshot snapshot;
    QString summary;     // lines for the user, in all cases
    QString projectPath; // the project that it was made for, or empty
};

// The end of a project apply.
struct ApplyResult {
    bool success = false;
    QString message;     // English, for the log and the user
    QString projectPath; // on success the project file in the new folder
    QString errorClass;  // "cancelled", "verify", "network", "hash" or empty
};

// The end of a component setup.
struct ComponentSetupResult {
    bool success = false;
    QString summary;  // a line for each started component
    QString warnings; // a line for each failed component
    bool cancelled = false;
};

struct OfferWeighing;
struct StickManifest;
struct StickSearch;

// The four fields, and the operations that read them. Those that take no context are pure reads of
// files and JSON. Texts are translated in the context of LauncherService. Any thread, on its own
// copy.
struct UpdateContext {
    QString projectPath; // the selected project file, or empty
    UpdateSnapshot snapshot;
    UpdateSelection selection;
    const CancelFlag *cancelRef = nullptr; // null: cannot be cancelled

    // True when the user asked to cancel.
    [[nodiscard]] bool cancelRequested() const { return isCancelled(cancelRef); }

    // installed_versions.cpp: what is installed. Read anew at each call, so a finished installer
    // shows at once.

    // A key of config/release_version.json in the program's folder, else empty.
    [[nodiscard]] static QString releaseVersionValue(const QString &key);
    // Of "runtime", "launcher", "editor" or "pythonTools", in any case; empty when unknown.
    [[nodiscard]] static QString currentComponentVersion(const QString &key);
    [[nodiscard]] static QString currentLauncherVersion();
    // The versions line of the window; a version that cannot be read shows as unknown.
    [[nodiscard]] static QString versionSummary();

    // eligibility.cpp: the rules by which a manifest offers an item. `reason` receives the text for
    // either answer.

    // The version in a component record or in its package's name, else empty.
    [[nodiscard]] static QString targetComponentVersion(const QJsonObject &record);
    [[nodiscard]] static bool isComponentEligible(const QString &key, const QString &label,
                                                  const QJsonObject &record, bool fromUsb,
                                                  const QString &baseLocation,
                                                  QString *reason = nullptr);
    // About snapshot.projectEntry; logs the comparison of the versions.
    [[nodiscard]] bool isProjectEligible(QString *reason = nullptr) const;
    // Without regard to case. A record named "demo" serves every folder whose name begins so.
    [[nodiscard]] static bool projectRecordMatches(const QString &recordName,
                                                   const QString &projectName,
                                                   const QString &folderName);

    // plugin_warnings.cpp: one text for each plug-in that is missing or too old. They never block
    // anything.
    [[nodiscard]] static QStringList collectPluginWarnings(const QJsonArray &plugins);

    // offer_weighing.cpp: the offer. Each call weighs the held manifest against what is installed
    // now.

    // The record that the others are views of; logs the comparison of the project's versions.
    [[nodiscard]] OfferWeighing weigh() const;
    // Tells an online offer from another in the memory of skipped ones; empty: nothing is offered.
    [[nodiscard]] QString onlineUpdateFingerprint() const;
    // The same offer for the log.
    [[nodiscard]] QString onlineUpdateItems() const;
    // Each item of the update dialog.
    [[nodiscard]] UpdateChoices choices() const;

    // update_check.cpp: the check, and where packages lie.

    // Looks for a manifest on a stick, else online, proves it genuine and evaluates it. Blocks for
    // seconds: only ever on a worker. True when something can be offered; `summary` receives lines
    // for the user in all cases.
    [[nodiscard]] bool runUpdateCheck(QString *summary);
    // The same with the stick's manifest already found, and with the search over; an empty path:
    // there is no stick. `weighed`, here and below, receives the weighing if there was one.
    [[nodiscard]] bool runUpdateCheck(const QString &stickManifest, QString *summary,
                                      OfferWeighing *weighed = nullptr);
    [[nodiscard]] bool runUpdateCheck(const StickSearch &stick, QString *summary,
                                      OfferWeighing *weighed = nullptr);
    // The rest of the check for a manifest that was fetched from `url`.
    [[nodiscard]] bool weighOnlineManifest(const QUrl &url, const QByteArray &body,
                                           QString *summary, OfferWeighing *weighed = nullptr);
    // Takes a verified manifest apart into `snapshot` and weighs it. True when at least one item is
    // eligible. `summary` receives lines for the user in both cases. The project's record stays in
    // `snapshot` if it is eligible.
    [[nodiscard]] bool evaluateManifest(const QJsonObject &root, QString *summary,
                                        OfferWeighing *weighed = nullptr);
    // Makes a package's address usable: a URL, or a path joined to the manifest's place.
    [[nodiscard]] static QString resolveManifestUrl(const UpdateSnapshot &snapshot,
                                                    const QString &value);

    // Whether a package can be kept under the last part of its address: not if that is empty (the
    // address ends in a slash) or leads to a folder, "." or "..".
    [[nodiscard]] static bool isPackageName(const QString &name);

    // component_setup.cpp: the component setup.

    // Gets, checks and starts the installer of each selected component. Blocks for the downloads:
    // only ever on a worker. A component that fails is left out with a warning.
    [[nodiscard]] ComponentSetupResult runComponentSetup() const;
    // One component: returns a note for the user, or nothing if its record names no installer or
    // it failed. The reason goes to the log and to `error`; "cancelled" after a cancel. Without
    // `autoStart` the installer is left to the user.
    [[nodiscard]] QString setupComponent(const QJsonObject &record, const QString &label,
                                         bool autoStart, QString *error = nullptr) const;

private:
    // update_check.cpp: the steps of the check.
    [[nodiscard]] QString takeStickManifest(const StickManifest &stick);
    [[nodiscard]] QString fetchOnlineManifest(QString *error);
    [[nodiscard]] QString takeOnlineManifest(const QUrl &url, const QByteArray &body);
    [[nodiscard]] bool weighManifest(const QString &text, QString *summary, OfferWeighing *weighed);
    [[nodiscard]] OfferWeighing weighFor(const QJsonArray &projects);

    // eligibility.cpp: the version of the selected project; unread without a record to weigh it
    // against.
    [[nodiscard]] QString offeredProjectVersion() const;

    // Public: the texts of the whole room stand in the context of the service that shows them.
    Q_DECLARE_TR_FUNCTIONS(LauncherService)
};
