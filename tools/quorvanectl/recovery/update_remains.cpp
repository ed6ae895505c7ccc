#include "quorvanectl/recovery/update_remains.h"

#include "launcher/offer/apply_places.h"
#include "launcher/offer/project_apply.h"
#include "project/project_validator.h"
#include "update/files/text_file.h"
#include "update/files/zip_extract.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QTemporaryDir>

namespace ctl {
namespace {

// Between unpacking a package and the backup lies the check of the package alone.
constexpr qint64 longestCheckS = 3600;

// The folders of `place` whose name is `prefix` and a time, the newest first.
QStringList stampedFolders(const QString &place, const QString &prefix) {
    QStringList found;
    const auto names = QDir(place).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    for (const QString &name : names) {
        if (apply_places::isStamped(name, prefix))
            found.prepend(QDir(place).filePath(name));
    }
    return found;
}

bool readCopy(const QString &folder, const QString &projectFile, ProjectCopy *copy,
              QString *error) {
    copy->folder = folder;
    copy->projectFile = projectFile;
    if (!projectFile.isEmpty())
        copy->errors = validatorErrors(projectFile);
    return readContent(folder, &copy->content, error);
}

bool readProject(const QString &projectFile, ProjectCopy *project, QString *error) {
    const QString folder = QFileInfo(projectFile).absolutePath();
    // A package may have brought another name.
    const QString found = QFileInfo(projectFile).isFile() ? projectFile : findProjectFile(folder);
    return readCopy(folder, found, project, error);
}

// A backup is named after the project's folder alone, so it counts only with the project file in
// it.
bool readBackup(const RecoveryPlaces &places, ProjectCopy *backup, QString *error) {
    const QFileInfo project(places.projectFile);
    const QString prefix = apply_places::backupPrefix(project.absolutePath());
    for (const QString &folder : stampedFolders(places.data.updateBackup(), prefix)) {
        const QString file = QDir(folder).filePath(project.fileName());
        if (QFileInfo(file).isFile())
            return readCopy(folder, file, backup, error);
    }
    return true;
}

// The package that was unpacked by the update that made the backup.
bool readStaging(const RecoveryPlaces &places, const QString &backup, ProjectCopy *staging,
                 QString *error) {
    const QDateTime end = apply_places::stampOf(backup);
    for (const QString &folder :
         stampedFolders(places.data.updateTemp(), apply_places::stagingPrefix())) {
        const qint64 earlier = apply_places::stampOf(folder).secsTo(end);
        if (earlier >= 0 && earlier <= longestCheckS)
            return readCopy(folder, findProjectFile(folder), staging, error);
    }
    return true;
}

// The newest first.
QStringList filesIn(const QString &folder, const QString &pattern) {
    QStringList paths;
    for (const QFileInfo &file : QDir(folder).entryInfoList({pattern}, QDir::Files, QDir::Time))
        paths.append(file.absoluteFilePath());
    return paths;
}

// Of a stick's package a killed launcher leaves the copy that it was about to unpack.
QStringList packagesOf(const DataFolder &data) {
    QStringList packages = filesIn(data.updateCache(), QStringLiteral("*.zip"));
    for (const QString &folder : apply_places::packageFolders(data.updateTemp()))
        packages += filesIn(folder, QStringLiteral("*"));
    return packages;
}

// A write that was broken off leaves it empty or cut.
bool isDamaged(const QString &projectFile) {
    return !projectFile.isEmpty() &&
           !QJsonDocument::fromJson(readTextFile(projectFile).toUtf8()).isObject();
}

// Whether the package is the one that lies in the project's folder, but for the project file.
bool isPackageOf(const ProjectCopy &project, const QString &package) {
    const QTemporaryDir place;
    const QString unpacked = place.filePath(QStringLiteral("package"));
    QString error;
    FolderContent content;
    if (!place.isValid() || !extractZip(package, unpacked, &error))
        return false;
    const QString relative = QDir(project.folder).relativeFilePath(project.projectFile);
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
        const QString logs = apply_places::keptFolder();
        const FolderContent project = without(remains.project.content, logs);
        const FolderContent backup = without(remains.backup.content, logs);
        const FolderContent staging = without(remains.staging.content, logs);
        projectInBackup = isPartOf(project, backup);
        projectInStaging = isPartOf(project, staging);
        backupInProject = isPartOf(backup, project);
        stagingInProject = isPartOf(staging, project);
    }
};

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

void decideWithBackup(UpdateRemains *remains) {
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
        return take(remains, Recovery::None, QString(),
                    QStringLiteral("The new project was in place already."));
    (void)takeCopy(remains, relations, true,
                   QStringLiteral("What lies in the project's folder cannot run."));
}

void decide(const RecoveryPlaces &places, UpdateRemains *remains) {
    if (!remains->backup.folder.isEmpty())
        decideWithBackup(remains);
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

} // namespace

QString validatorErrors(const QString &projectFile) {
    return errorLines(validateProjectFile(projectFile)).join(QLatin1Char('\n'));
}

bool lookAtRemains(const RecoveryPlaces &places, UpdateRemains *remains, QString *error) {
    *remains = UpdateRemains();
    if (!readProject(places.projectFile, &remains->project, error) ||
        !readBackup(places, &remains->backup, error) ||
        (!remains->backup.folder.isEmpty() &&
         !readStaging(places, remains->backup.folder, &remains->staging, error)))
        return false;
    remains->packages = packagesOf(places.data);
    decide(places, remains);
    return true;
}

} // namespace ctl
