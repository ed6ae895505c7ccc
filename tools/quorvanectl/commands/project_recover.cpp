// quorvanectl project recover: what an update that was broken off has left, and a way back.
#include "frame/app_paths.h"
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/recovery/project_recovery.h"
#include "quorvanectl/recovery/running_programs.h"
#include "quorvanectl/shell/installation.h"
#include "quorvanectl/shell/progress.h"
#include "update/files/work_lock.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QLockFile>

#include <limits>

namespace ctl {
namespace {

void declare(QCommandLineParser &parser) {
    parser.addOption({QStringLiteral("apply"), QStringLiteral("Puts a whole project back.")});
    parser.addOption({QStringLiteral("data"),
                      QStringLiteral("The launcher's data folder, if not this user's."),
                      QStringLiteral("folder")});
    parser.addOption({QStringLiteral("package"),
                      QStringLiteral("The package of the update, if it came from a stick."),
                      QStringLiteral("file")});
    declareLibrary(parser);
}

void describe(const Console &console, const QString &what, const ProjectCopy &copy) {
    if (copy.folder.isEmpty())
        return printLine(console, QStringLiteral("%1 none").arg(what));
    const QString state = !QFileInfo(copy.folder).isDir() ? QStringLiteral("is gone")
                          : copy.projectFile.isEmpty()    ? QStringLiteral("no project file")
                          : copy.runs()                   ? QStringLiteral("passes the validator")
                                                          : QStringLiteral("fails the validator");
    printLine(console, QStringLiteral("%1 %2: %3 files, %4")
                           .arg(what, spelledOut(copy.folder),
                                QString::number(copy.content.files()), state));
    for (const QString &error : copy.errors.split(QLatin1Char('\n'))) {
        if (!error.isEmpty())
            printLine(console, QStringLiteral("           ") + spelledOut(error));
    }
}

QString advice(const UpdateRemains &remains) {
    const QString source = spelledOut(remains.source);
    switch (remains.recovery) {
    case Recovery::None:
        return QStringLiteral("The project is whole.");
    case Recovery::Backup:
        return QStringLiteral("The backup belongs in the project's place: the old project, whole.");
    case Recovery::Staging:
        return QStringLiteral("The unpacked package belongs in the project's place: the new "
                              "project, whole.");
    case Recovery::ProjectFile:
        return QStringLiteral("The project file of %1 fits, all else is whole.").arg(source);
    case Recovery::Unknown:
        return QStringLiteral("Whether it is whole cannot be known: compare it with the backup, or "
                              "name the update's package with --package. Nothing is changed.");
    case Recovery::Impossible:
        break;
    }
    return QStringLiteral("No whole copy was found. Take the project from its last package or from "
                          "a copy of your own.");
}

void describe(const Console &console, const UpdateRemains &remains) {
    describe(console, QStringLiteral("Project:  "), remains.project);
    describe(console, QStringLiteral("Backup:   "), remains.backup);
    describe(console, QStringLiteral("Unpacked: "), remains.staging);
    for (const QString &package : remains.packages)
        printLine(console, QStringLiteral("Package:   ") + spelledOut(package));
    const QString reason = remains.reason.isEmpty() ? QString() : remains.reason + QLatin1Char(' ');
    printLine(console, QStringLiteral("Found:     ") + reason + advice(remains));
}

bool look(const Console &console, const RecoveryPlaces &places, UpdateRemains *remains,
          QString *error) {
    const Progress progress(console, QStringLiteral("looking at what is left"));
    return lookAtRemains(places, remains, error);
}

int apply(const Console &console, const RecoveryPlaces &places, const UpdateRemains &remains) {
    const RecoveryResult result = whileTelling(console, QStringLiteral("putting the project back"),
                                               [&] { return recoverProject(remains); });
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

bool readPlaces(const QCommandLineParser &parser, RecoveryPlaces *places, QString *error) {
    const QString file = firstArgument(parser);
    const QString data = parser.value(QStringLiteral("data"));
    places->projectFile = QDir::cleanPath(QFileInfo(file).absoluteFilePath());
    places->data = {QDir(data.isEmpty() ? AppPaths::dataDirectory() : data).absolutePath()};
    places->package = parser.value(QStringLiteral("package"));
    if (!file.endsWith(QLatin1String(".yslib"), Qt::CaseInsensitive)) {
        *error = QStringLiteral("%1: is no project file").arg(file);
        return false;
    }
    if (QFileInfo::exists(data) && !QFileInfo(data).isDir()) {
        *error = QStringLiteral("%1: is no folder").arg(data);
        return false;
    }
    return canBeNamed(file, error) && (!QFileInfo::exists(file) || isUsableFile(file, error)) &&
           (places->package.isEmpty() ||
            isUsableFile(places->package, error, std::numeric_limits<qint64>::max()));
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
        *error = QStringLiteral("%1: another recovery is at work").arg(lockPath(places));
    return error->isEmpty();
}

int run(const QCommandLineParser &parser, Console &console) {
    QString error;
    RecoveryPlaces places;
    if (!readPlaces(parser, &places, &error) || !loadLibrary(parser, &error))
        return refuse(console, error);
    const bool applies = parser.isSet(QStringLiteral("apply"));
    QLockFile lock(lockPath(places));
    UpdateRemains remains;
    if ((applies && !mayApply(places, lock, &error)) || !look(console, places, &remains, &error))
        return refuse(console, error);
    if (remains.project.projectFile.isEmpty() && remains.backup.folder.isEmpty())
        return refuse(console, QStringLiteral("%1: neither the project nor a backup of it is there")
                                   .arg(places.projectFile));
    describe(console, remains);
    const bool known =
        remains.recovery != Recovery::Unknown && remains.recovery != Recovery::Impossible;
    if (applies && known)
        return apply(console, places, remains);
    if (known && remains.recovery != Recovery::None)
        printLine(console, QStringLiteral("To do:     the same command with --apply."));
    return remains.recovery == Recovery::None ? Clean : Findings;
}

} // namespace

Command projectRecover() {
    return {
        QStringLiteral("project"),
        QStringLiteral("recover"),
        QStringLiteral("FILE.yslib"),
        QStringLiteral("Finds what a broken-off update has left, and puts a whole project back."),
        QStringLiteral("quorvanectl project recover demo/demo.yslib"),
        declare,
        run};
}

} // namespace ctl
