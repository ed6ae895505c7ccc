#include "quorvanectl/recovery/recovery_verdict.h"

#include "launcher/offer/apply_places.h"
#include "quorvanectl/files/unpack.h"
#include "quorvanectl/files/work_folder.h"
#include "update/files/text_file.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>

#include <algorithm>

namespace ctl {
namespace {

FolderContent withoutLogs(const ProjectCopy &copy) {
    return without(copy.content, apply_places::keptFolder());
}

// The project file's path in its folder.
QString nameIn(const ProjectCopy &copy) {
    return QDir(copy.folder).relativeFilePath(copy.projectFile);
}

FolderContent onlyProjectFile(const ProjectCopy &copy) {
    const QString name = nameIn(copy);
    return {copy.folder, {{name, copy.content.entries.value(name)}}};
}

// A write that was broken off leaves it empty or cut.
bool isDamaged(const QString &projectFile) {
    return !projectFile.isEmpty() &&
           !QJsonDocument::fromJson(readTextFile(projectFile).toUtf8()).isObject();
}

// Whether the package is the one that lies in the project's folder, but for the project file.
bool isPackageOf(const ProjectCopy &project, const QString &package) {
    const WorkFolder place;
    const QString unpacked = place.filePath(QStringLiteral("package"));
    QString error;
    FolderContent content;
    if (!place.isValid() || !unpack(package, unpacked, &error))
        return false;
    const QString relative = nameIn(project);
    const QString file = QDir(unpacked).filePath(relative);
    if (!QFileInfo(file).isFile() || !validatorErrors(file).isEmpty() ||
        !readContent(unpacked, &content, &error))
        return false;
    content.entries.remove(relative);
    return isPartOf(without(content, apply_places::keptFolder()), project.content);
}

void take(UpdateRemains *remains, Recovery recovery, const QString &source, const QString &reason) {
    remains->recovery = recovery;
    remains->source = source;
    remains->reason = reason;
}

// How the three folders stand to each other, logs aside.
struct Relations {
    bool projectInBackup;
    bool projectInStaging;
    bool backupInProject;  // the project holds all that the backup does
    bool stagingInProject; // and all that the package does

    explicit Relations(const UpdateRemains &remains) {
        const FolderContent project = withoutLogs(remains.project);
        const FolderContent backup = withoutLogs(remains.backup);
        const FolderContent staging = withoutLogs(remains.staging);
        projectInBackup = isPartOf(project, backup);
        projectInStaging = isPartOf(project, staging);
        backupInProject = isPartOf(backup, project);
        stagingInProject = isPartOf(staging, project);
    }
};

// Whether nothing has been removed from the old project, or it has been replaced: a removal leaves the
// project file of the backup, or none, and takes names away.
bool isProvedWhole(const UpdateRemains &remains, const Relations &relations) {
    if (remains.staging.runs() && relations.stagingInProject)
        return true;
    const FolderContent backup = withoutLogs(remains.backup);
    const FolderContent project = withoutLogs(remains.project);
    return !isSame(onlyProjectFile(remains.project), onlyProjectFile(remains.backup)) ||
           std::all_of(backup.entries.keyBegin(), backup.entries.keyEnd(),
                       [&](const QString &name) { return project.entries.contains(name); });
}

// The first of the two that runs and has something that the project has not.
bool takeCopy(UpdateRemains *remains, const Relations &relations, bool backupFirst,
              const QString &reason) {
    const bool backup = remains->backup.runs() && !relations.backupInProject;
    const bool staging = remains->staging.runs() && !relations.stagingInProject;
    if (backup && (backupFirst || !staging))
        take(remains, Recovery::Backup, remains->backup.folder, reason);
    else if (staging)
        take(remains, Recovery::Staging, remains->staging.folder, reason);
    return backup || staging;
}

// Of a project that runs and is neither the old one untouched nor known to be on its way out or in. A
// package from the cache proves nothing: the old project may have come from it.
void decideOnRunning(const RecoveryPlaces &places, UpdateRemains *remains,
                     const Relations &relations) {
    const bool whole = isProvedWhole(*remains, relations) ||
                       (!places.package.isEmpty() && isPackageOf(remains->project, places.package));
    if (whole)
        take(remains, Recovery::None, QString(),
             QStringLiteral("The new project was in place already."));
    else
        take(remains, Recovery::Unknown, QString(),
             QStringLiteral("The project runs with the backup's project file and lacks other files "
                            "of the backup."));
}

void decideWithBackup(const RecoveryPlaces &places, UpdateRemains *remains) {
    const Relations relations(*remains);
    const bool runs = remains->project.runs();
    if (runs && relations.backupInProject)
        return take(remains, Recovery::None, QString(),
                    QStringLiteral("The old project had not been touched yet."));
    // The new project is in place only if nothing of it is left that is not there.
    const bool newOneMissing = !remains->staging.folder.isEmpty() && !relations.stagingInProject;
    if (newOneMissing && relations.projectInBackup &&
        takeCopy(remains, relations, true, QStringLiteral("The old project was being removed.")))
        return;
    if (newOneMissing && relations.projectInStaging &&
        takeCopy(remains, relations, false, QStringLiteral("The new project was being copied in.")))
        return;
    if (runs)
        return decideOnRunning(places, remains, relations);
    (void)takeCopy(remains, relations, true,
                   QStringLiteral("What lies in the project's folder cannot run."));
}

} // namespace

bool isBeingCopiedIn(const ProjectCopy &project, const ProjectCopy &staging,
                     const ProjectCopy &backup) {
    const FolderContent there = withoutLogs(project);
    const FolderContent unpacked = withoutLogs(staging);
    return !isPartOf(there, withoutLogs(backup)) && isPartOf(there, unpacked) &&
           !isPartOf(unpacked, there);
}

void decideRecovery(const RecoveryPlaces &places, UpdateRemains *remains) {
    if (!remains->backup.folder.isEmpty())
        decideWithBackup(places, remains);
    else if (remains->project.runs())
        take(remains, Recovery::None, QString(), QStringLiteral("No swap had begun."));
    if (remains->recovery != Recovery::Impossible || !isDamaged(remains->project.projectFile))
        return;
    const QStringList packages =
        places.package.isEmpty() ? remains->packages : QStringList(places.package);
    for (const QString &package : packages) {
        if (isPackageOf(remains->project, package))
            return take(remains, Recovery::ProjectFile, package,
                        QStringLiteral("The version was being written into the project file."));
    }
}

} // namespace ctl
