// quorvanectl project recover: what an update that was broken off has left, and a way back.
#include "frame/app_paths.h"
#include "frame/settings_schema.h"
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/commands/recover_printing.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/manifest/public_key.h"
#include "quorvanectl/recovery/package_recovery.h"
#include "quorvanectl/recovery/project_recovery.h"
#include "quorvanectl/recovery/recovery_survey.h"
#include "quorvanectl/recovery/running_programs.h"
#include "quorvanectl/shell/data_option.h"
#include "quorvanectl/shell/inspected_installation.h"
#include "quorvanectl/shell/installation.h"
#include "quorvanectl/shell/progress.h"
#include "quorvanectl/support/support_files.h"
#include "update/files/failure.h"
#include "update/files/place_facts.h"
#include "update/files/work_lock.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QLockFile>

#include <algorithm>
#include <limits>

namespace ctl {
namespace {

const QLatin1String applyOption("apply");
const QLatin1String packageOption("package");
const QLatin1String fromOption("from");
const QLatin1String manifestOption("manifest");
const QLatin1String keyOption("key");
const QLatin1String installOption("install");
const QLatin1String libraryOption("library");

void declare(QCommandLineParser &parser) {
    parser.addOption({applyOption, QStringLiteral("Puts a whole project back.")});
    declareData(parser);
    parser.addOption({packageOption,
                      QStringLiteral("The package of the update, if it came from a stick."),
                      QStringLiteral("file")});
    parser.addOption({fromOption,
                      QStringLiteral("Puts the project of this package in place, where no whole "
                                     "copy is left."),
                      QStringLiteral("PACKAGE.zip")});
    parser.addOption({manifestOption, QStringLiteral("The signed manifest that names the package."),
                      QStringLiteral("manifest.json")});
    parser.addOption({keyOption,
                      QStringLiteral("The public key to verify it with, if not the one of the "
                                     "installation."),
                      QStringLiteral("update.pub")});
    declareInstall(parser);
    declareLibrary(parser);
}

bool look(const Console &console, const RecoveryPlaces &places, UpdateRemains *remains,
          QString *error) {
    const Progress progress(console, QStringLiteral("looking at what is left"));
    return lookAtRemains(places, remains, error);
}

// Tells what became of it, and looks once more.
int tellResult(const Console &console, const RecoveryPlaces &places, const RecoveryResult &result) {
    if (!result.keptAs.isEmpty())
        printLine(console, QStringLiteral("Kept:      what lay in its place, as ") +
                               spelledOut(result.keptAs));
    for (const QString &folder : result.done)
        printLine(console, QStringLiteral("Kept:      a left-over, as ") + spelledOut(folder));
    if (!result.ok) {
        tell(console, result.error);
        return Findings;
    }
    UpdateRemains now;
    QString error;
    if (!look(console, places, &now, &error))
        return refuse(console, error);
    printLine(console, QStringLiteral("Now:       ") + spelledOut(now.project.projectFile) +
                           (now.project.runs() ? QStringLiteral(" passes the validator.")
                                               : QStringLiteral(" fails the validator.")));
    return now.project.runs() ? Clean : Findings;
}

template<typename Work>
int apply(const Console &console, const RecoveryPlaces &places, Work work) {
    return tellResult(console, places,
                      whileTelling(console, QStringLiteral("putting the project back"), work));
}

bool isUsableData(const QCommandLineParser &parser, QString *error) {
    const QString data = parser.value(dataOption);
    if (!QFileInfo::exists(data))
        return true;
    if (!QFileInfo(data).isDir())
        return failAbout(data, QStringLiteral("is no folder"), error);
    const QString meant = dataFolderAround(data);
    return meant.isEmpty() ||
           failAbout(data, QStringLiteral("is not the data folder, which is %1").arg(meant), error);
}

bool isUsablePackage(const QString &file, QString *error) {
    return file.isEmpty() || isUsableFile(file, error, std::numeric_limits<qint64>::max());
}

bool readPlaces(const QCommandLineParser &parser, RecoveryPlaces *places, QString *error) {
    const QString file = firstArgument(parser);
    places->projectFile = QDir::cleanPath(QFileInfo(file).absoluteFilePath());
    places->data = dataFolder(parser);
    places->package = parser.value(packageOption);
    if (!file.endsWith(QLatin1String(".yslib"), Qt::CaseInsensitive)) {
        *error = QStringLiteral("%1: is no project file").arg(file);
        return false;
    }
    return isUsableData(parser, error) && canBeNamed(file, error) &&
           (!QFileInfo::exists(file) || isUsableFile(file, error)) &&
           isUsablePackage(places->package, error);
}

// What does not go together.
QString mistake(const QCommandLineParser &parser) {
    if (parser.isSet(fromOption) != parser.isSet(manifestOption))
        return QStringLiteral("--from and --manifest belong together");
    if (parser.isSet(keyOption) && !parser.isSet(fromOption))
        return QStringLiteral("--key belongs to --from");
    if (parser.isSet(fromOption) && parser.isSet(packageOption))
        return QStringLiteral("either --from or --package");
    const bool names =
        parser.isSet(applyOption) || parser.isSet(packageOption) || parser.isSet(fromOption);
    if (names && parser.positionalArguments().isEmpty())
        return QStringLiteral("without FILE.yslib it looks at every project, and changes nothing");
    return {};
}

bool readSource(const QCommandLineParser &parser, PackageSource *source, QString *error) {
    source->package = parser.value(fromOption);
    source->manifest = parser.value(manifestOption);
    source->key =
        parser.isSet(keyOption) ? parser.value(keyOption) : AppPaths::updatePublicKeyPath();
    return isUsablePackage(source->package, error) && isUsableFile(source->manifest, error) &&
           isPublicKey(source->key, error);
}

QString lockPath(const RecoveryPlaces &places) {
    return QDir(places.data.update()).filePath(QStringLiteral("recovery.lock"));
}

// Of two that write at once neither would know what it has left.
bool mayApply(const RecoveryPlaces &places, QLockFile &lock, QString *error) {
    const QStringList atWork = programsAtWork(places.projectFile, places.data.path);
    if (!atWork.isEmpty())
        *error = QStringLiteral("close this first: ") + atWork.join(QStringLiteral(", "));
    if (error->isEmpty() && QFileInfo(places.data.update()).isDir() &&
        !takeLock(lock, lockPath(places)))
        *error = lock.error() == QLockFile::LockFailedError
                     ? QStringLiteral("%1: another recovery is at work").arg(lockPath(places))
                     : QStringLiteral("%1: cannot write there").arg(places.data.update());
    return error->isEmpty();
}

int recoverFrom(const QCommandLineParser &parser, const Console &console,
                const RecoveryPlaces &places, const UpdateRemains &remains) {
    QString error;
    PackageSource source;
    ProvedPackage package;
    // What would make way is the folder that the link lies in: a desktop, and no project.
    if (isLink(QFileInfo(places.projectFile)))
        return refuse(console,
                      QStringLiteral("%1: is a link; name the project file that it leads to")
                          .arg(places.projectFile));
    if (!readSource(parser, &source, &error))
        return refuse(console, error);
    if (!whileTelling(console, QStringLiteral("proving the package"),
                      [&] { return package.prove(source, remains, &error); })) {
        tell(console, error);
        return Findings;
    }
    describePackage(console, remains, package, source.package);
    if (package.isInPlaceOf(remains.project))
        return Clean;
    const QString refusal = whyNotReplaced(remains.project.folder, places.data);
    if (!refusal.isEmpty())
        return refuse(console, refusal);
    if (parser.isSet(applyOption))
        return apply(console, places,
                     [&] { return recoverFromPackage(package, remains, places.data); });
    printLine(console, QStringLiteral("To do:     the same command with --apply."));
    return Findings;
}

int recover(const QCommandLineParser &parser, const Console &console, const RecoveryPlaces &places,
            const UpdateRemains &remains) {
    if (remains.project.projectFile.isEmpty() && remains.backup.folder.isEmpty())
        return refuse(console, QStringLiteral("%1: neither the project nor a backup of it is there")
                                   .arg(places.projectFile));
    describeRemains(console, remains);
    const bool known =
        remains.recovery != Recovery::Unknown && remains.recovery != Recovery::Impossible;
    if (parser.isSet(applyOption) && known)
        return apply(console, places, [&] { return recoverProject(remains); });
    if (known && remains.recovery != Recovery::None)
        printLine(console, QStringLiteral("To do:     the same command with --apply."));
    return remains.recovery == Recovery::None ? Clean : Findings;
}

// The one that the launcher remembers as the next, and those that it has started before. What keeps one from
// knowing them; empty if nothing does.
QString readRemembered(SurveyPlaces *places) {
    const QString database = places->data.database();
    const QJsonObject settings = launcherSettings(database);
    const QString fault = settings.value(QStringLiteral("error")).toString();
    if (!fault.isEmpty() && isTaken(database))
        return QStringLiteral("%1: %2; what the launcher remembers is not looked at")
            .arg(database, fault);
    places->selected = settings.value(QLatin1String(settings_schema::defaultProjectKey)).toString();
    const QJsonArray recent = settings.value(QStringLiteral("recent_projects")).toArray();
    for (const QJsonValue &row : recent)
        places->remembered.append(row.toArray().at(0).toString());
    return {};
}

int survey(const QCommandLineParser &parser, const Console &console) {
    QString error;
    if (!isUsableData(parser, &error))
        return refuse(console, error);
    SurveyPlaces places{dataFolder(parser), AppPaths::projectsDirectory(), {}, {}};
    const QString fault = readRemembered(&places);
    if (!fault.isEmpty())
        tell(console, fault);
    const Survey found =
        whileTelling(console, QStringLiteral("looking at what is left of every project"),
                     [&] { return surveyRemains(places); });
    QString options;
    for (const QLatin1String option : {installOption, dataOption, libraryOption}) {
        if (parser.isSet(option))
            options += QStringLiteral(" --%1 %2").arg(option, asWord(parser.value(option)));
    }
    describeSurvey(console, found, options);
    const auto is = [&](auto matches) {
        return std::any_of(found.projects.begin(), found.projects.end(), matches);
    };
    if (!fault.isEmpty() || is([](const SurveyedProject &one) { return !one.error.isEmpty(); }))
        return Refused;
    return is([](const SurveyedProject &one) { return one.remains.recovery != Recovery::None; })
               ? Findings
               : Clean;
}

int run(const QCommandLineParser &parser, Console &console) {
    RecoveryPlaces places;
    QString error = mistake(parser);
    if (!error.isEmpty() || !inspectInstallation(parser, &error) ||
        !loadLibrary(parser, console, &error))
        return refuse(console, error);
    if (parser.positionalArguments().isEmpty())
        return survey(parser, console);
    if (!readPlaces(parser, &places, &error))
        return refuse(console, error);
    QLockFile lock(lockPath(places));
    UpdateRemains remains;
    if ((parser.isSet(applyOption) && !mayApply(places, lock, &error)) ||
        !look(console, places, &remains, &error))
        return refuse(console, error);
    return parser.isSet(fromOption) ? recoverFrom(parser, console, places, remains)
                                    : recover(parser, console, places, remains);
}

} // namespace

Command projectRecover() {
    return {
        QStringLiteral("project"),
        QStringLiteral("recover"),
        QStringLiteral("[FILE.yslib]"),
        QStringLiteral("Finds what a broken-off update has left, and puts a whole project back."),
        QStringLiteral("quorvanectl project recover demo/demo.yslib"),
        declare,
        run};
}

} // namespace ctl
