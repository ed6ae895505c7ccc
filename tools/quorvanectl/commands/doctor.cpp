// quorvanectl doctor: what will go wrong on this line PC before it does.
#include "quorvanectl/doctor/health.h"

#include "frame/app_paths.h"
#include "frame/settings_schema.h"
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/commands/update_options.h"
#include "quorvanectl/shell/data_option.h"
#include "quorvanectl/shell/inspected_installation.h"
#include "quorvanectl/shell/installation.h"
#include "quorvanectl/shell/json_output.h"
#include "quorvanectl/shell/progress.h"
#include "quorvanectl/support/support_files.h"
#include "update/default_manifest_url.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace ctl {
namespace {

const QLatin1String projectOption("project");
const QLatin1String urlOption("url");
const QLatin1String offlineOption("offline");

void declare(QCommandLineParser &parser) {
    declareInstall(parser);
    declareData(parser);
    parser.addOption({projectOption,
                      QStringLiteral("The project, if not the one that the launcher remembers."),
                      QStringLiteral("FILE.yslib")});
    parser.addOption({urlOption,
                      QStringLiteral("Asks this address for a manifest, not that of the "
                                     "launcher."),
                      QStringLiteral("address")});
    parser.addOption({offlineOption, QStringLiteral("Leaves the network alone.")});
    declareFormat(parser, textOrJson());
}

QString absolute(const QString &path) {
    return path.isEmpty() ? QString() : QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

bool readPlaces(const QCommandLineParser &parser, HealthPlaces *places, QString *error) {
    const QString data = parser.value(dataOption);
    places->data = dataFolder(parser);
    if (!data.isEmpty() && !QFileInfo(data).isDir())
        *error = QStringLiteral("%1: no such folder").arg(data);
    places->projectFile = absolute(parser.value(projectOption));
    if (!parser.isSet(projectOption))
        places->projectFile = absolute(launcherSettings(places->data.database())
                                           .value(QLatin1String(settings_schema::defaultProjectKey))
                                           .toString());
    const QString url = parser.value(urlOption);
    if (!parser.isSet(offlineOption))
        places->manifestUrl = QUrl(url.isEmpty() ? defaultManifestUrl() : url);
    if (!url.isEmpty() && !isServerAddress(url))
        *error = notAnAddress(url);
    return error->isEmpty();
}

void printHealth(const Console &console, const HealthPlaces &places, const Health &health) {
    const auto orUnknown = [](const QString &text) {
        return text.isEmpty() ? QStringLiteral("unknown") : spelledOut(text);
    };
    for (auto version = health.versions.begin(); version != health.versions.end(); ++version)
        printLine(console, QStringLiteral("%1: %2").arg(version.key(), orUnknown(version.value())));
    printLine(console, QStringLiteral("project: ") + orUnknown(places.projectFile));
    for (const HealthFinding &finding : health.findings) {
        const QString severity =
            finding.isError ? QStringLiteral("Error") : QStringLiteral("Warning");
        printLine(console,
                  inked(console, finding.isError ? Ink::Error : Ink::Warning, severity) +
                      QStringLiteral(" %1: %2").arg(finding.kind, spelledOut(finding.message)));
        printLine(console, QStringLiteral("    ") + finding.remedy);
    }
    if (health.findings.isEmpty())
        printLine(console, inked(console, Ink::Good,
                                 QStringLiteral("Nothing was found that would go wrong.")));
}

QJsonObject toJson(const HealthPlaces &places, const Health &health) {
    QJsonArray findings;
    for (const HealthFinding &finding : health.findings)
        findings.append(QJsonObject{{QStringLiteral("kind"), finding.kind},
                                    {QStringLiteral("severity"), finding.isError ? 0 : 1},
                                    {QStringLiteral("message"), finding.message},
                                    {QStringLiteral("remedy"), finding.remedy}});
    QJsonObject versions;
    for (auto version = health.versions.begin(); version != health.versions.end(); ++version)
        versions.insert(version.key(), version.value());
    return {{QStringLiteral("findings"), findings},
            {QStringLiteral("versions"), versions},
            {QStringLiteral("project"), places.projectFile},
            {QStringLiteral("data"), places.data.path},
            {QStringLiteral("freeBytes"), health.freeBytes},
            {QStringLiteral("neededBytes"), health.neededBytes}};
}

int run(const QCommandLineParser &parser, Console &console) {
    QString error;
    HealthPlaces places;
    const QString format = chosenFormat(parser, textOrJson(), &error);
    if (format.isEmpty() || !inspectInstallation(parser, &error) ||
        !readPlaces(parser, &places, &error))
        return refuse(console, error);
    (void)loadLibrary(AppPaths::functionLibraryPath(),
                      &places.libraryError); // which is a finding
    const Health health = whileTelling(console, QStringLiteral("looking at this line PC"),
                                       [&] { return examine(places); });
    if (format == QLatin1String("json"))
        printJson(console, QJsonDocument(toJson(places, health)));
    else
        printHealth(console, places, health);
    const bool hasError = std::any_of(health.findings.begin(), health.findings.end(),
                                      [](const HealthFinding &finding) { return finding.isError; });
    return hasError ? Findings : Clean;
}

} // namespace

Command doctor() {
    return {QStringLiteral("doctor"),
            QString(),
            QString(),
            QStringLiteral("Tells what will go wrong on a line PC before it does."),
            QStringLiteral("quorvanectl doctor --offline --install line_pc"),
            declare,
            run};
}

} // namespace ctl
