// What an update offers: a verified manifest, what the user ticked, and the results of the workers.
//
// UpdateContext is a value. The main thread has one inside LauncherService; a worker gets a copy on
// its own stack and works on that copy alone. The only thing that is shared is the flag behind
// `cancelRef`.
#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include <atomic>

// Raised to a value other than 0 by the main thread, polled by workers with relaxed loads.
using CancelFlag = std::atomic<qint32>;

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
    QString summary; // lines for the user, in all cases
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

struct UpdateContext {
    QString projectPath; // the selected project file, or empty
    UpdateSnapshot snapshot;
    UpdateSelection selection;
    const CancelFlag *cancelRef = nullptr; // null: cannot be cancelled

    // True when the user asked to cancel. Any thread.
    [[nodiscard]] bool cancelRequested() const {
        return cancelRef && cancelRef->load(std::memory_order_relaxed) != 0;
    }
};
