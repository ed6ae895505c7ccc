#include "quorvanectl/recovery/update_remains.h"

#include "launcher/offer/apply_places.h"
#include "launcher/offer/project_apply.h"
#include "project/project_file.h"
#include "project/project_validator.h"
#include "quorvanectl/recovery/recovery_verdict.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

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

bool isSameProject(const ProjectCopy &staging, const ProjectCopy &backup) {
    const QString name = readProjectName(staging.projectFile);
    return !name.isEmpty() && name == readProjectName(backup.projectFile);
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

// How surely a folder holds the package that the update with the backup unpacked; 0: it does not.
int likelihood(const ProjectCopy &staging, const UpdateRemains &remains) {
    if (isBeingCopiedIn(remains.project, staging, remains.backup))
        return 3;
    const qint64 earlier =
        apply_places::stampOf(staging.folder).secsTo(apply_places::stampOf(remains.backup.folder));
    if (earlier >= 0 && earlier <= longestCheckS)
        return 2;
    // Whoever set the clock between unpacking and backup has left a time that tells nothing.
    return staging.runs() && isSameProject(staging, remains.backup) ? 1 : 0;
}

// The package that was unpacked by the update that made the backup: of several the likeliest, and of
// these the newest.
bool readStaging(const RecoveryPlaces &places, UpdateRemains *remains, QString *error) {
    int best = 0;
    const auto folders = stampedFolders(places.data.updateTemp(), apply_places::stagingPrefix());
    for (const QString &folder : folders) {
        ProjectCopy copy;
        if (!readCopy(folder, findProjectFile(folder), &copy, error))
            return false;
        const int likely = likelihood(copy, *remains);
        if (likely > best)
            remains->staging = copy;
        best = qMax(best, likely);
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

} // namespace

QString validatorErrors(const QString &projectFile) {
    return errorLines(validateProjectFile(projectFile)).join(QLatin1Char('\n'));
}

QStringList packagesOf(const DataFolder &data) {
    QStringList packages = filesIn(data.updateCache(), QStringLiteral("*.zip"));
    for (const QString &folder : apply_places::packageFolders(data.updateTemp()))
        packages += filesIn(folder, QStringLiteral("*"));
    return packages;
}

bool lookAtRemains(const RecoveryPlaces &places, UpdateRemains *remains, QString *error) {
    *remains = UpdateRemains();
    if (!readProject(places.projectFile, &remains->project, error) ||
        !readBackup(places, &remains->backup, error) ||
        (!remains->backup.folder.isEmpty() && !readStaging(places, remains, error)))
        return false;
    remains->packages = packagesOf(places.data);
    decideRecovery(places, remains);
    return true;
}

} // namespace ctl
