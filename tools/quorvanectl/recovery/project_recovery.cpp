#include "quorvanectl/recovery/project_recovery.h"

#include "quorvanectl/files/unpack.h"
#include "quorvanectl/files/work_folder.h"
#include "quorvanectl/recovery/folders_aside.h"
#include "update/files/failure.h"
#include "update/files/file_copy.h"
#include "update/files/file_operations.h"
#include "update/files/patient_files.h"
#include "update/files/place_facts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace ctl {
namespace {

// A copy beside the target, proved to be one, that would outlive a power cut. One that was broken off
// earlier is begun anew.
bool copyBeside(const ProjectCopy &source, const QString &copy, QString *error) {
    FolderContent copied;
    if (!removeFolderWhenFree(copy, error) || !copyDirectory(source.folder, copy, error) ||
        !readContent(copy, &copied, error))
        return false;
    if (!isSame(source.content, copied))
        return fail(QStringLiteral("the copy differs from %1").arg(source.folder), error);
    if (!flushFolder(copy))
        return fail(QStringLiteral("cannot write %1").arg(copy), error);
    const QString file = QDir(source.folder).relativeFilePath(source.projectFile);
    return validatorErrors(QDir(copy).filePath(file)).isEmpty() ||
           fail(QStringLiteral("the copy of %1 cannot run").arg(source.folder), error);
}

bool putInPlace(const ProjectCopy &source, const QString &target, QString *keptAs, QString *error) {
    const bool onOneVolume = lieOnOneVolume(source.folder, QFileInfo(target).absolutePath());
    if (onOneVolume && swapIn(source.folder, target, {asideOf(target)}, keptAs, error))
        return true;
    const QString copy = copyName(target);
    return copyBeside(source, copy, error) &&
           swapIn(copy, target, {asideOf(target)}, keptAs, error);
}

bool takeProjectFile(const QString &package, const ProjectCopy &project, QString *keptAs,
                     QString *error) {
    const WorkFolder place;
    const QString unpacked = place.filePath(QStringLiteral("package"));
    if (!place.isValid())
        return fail(place.errorString(), error);
    if (!unpack(package, unpacked, error))
        return false;
    QFile source(
        QDir(unpacked).filePath(QDir(project.folder).relativeFilePath(project.projectFile)));
    const QString aside = asideOf(project.projectFile);
    if (!QFile::copy(project.projectFile, aside))
        return fail(QStringLiteral("cannot write %1").arg(aside), error);
    QSaveFile target(project.projectFile);
    if (!source.open(QIODevice::ReadOnly) || !target.open(QIODevice::WriteOnly) ||
        target.write(source.readAll()) != source.size())
        return fail(QStringLiteral("cannot write %1").arg(project.projectFile), error);
    waitUntilFree(project.projectFile);
    if (!target.flush() || // commit() does not look at what its own flush comes to
        !target.commit())
        return fail(QStringLiteral("cannot write %1").arg(project.projectFile), error);
    *keptAs = aside;
    return true;
}

} // namespace

RecoveryResult recoverProject(const UpdateRemains &remains) {
    RecoveryResult result;
    const QString &target = remains.project.folder;
    switch (remains.recovery) {
    case Recovery::None:
        result.ok = true;
        break;
    case Recovery::Backup:
        result.ok = putInPlace(remains.backup, target, &result.keptAs, &result.error);
        break;
    case Recovery::Staging:
        result.ok = putInPlace(remains.staging, target, &result.keptAs, &result.error);
        break;
    case Recovery::ProjectFile:
        result.ok = takeProjectFile(remains.source, remains.project, &result.keptAs, &result.error);
        break;
    case Recovery::Unknown:
        result.error = QStringLiteral("whether %1 is whole cannot be known").arg(target);
        break;
    case Recovery::Impossible:
        result.error = QStringLiteral("there is no whole copy of %1").arg(target);
        break;
    }
    if (result.ok) {
        retire(remains.backup.folder, &result.done);
        retire(remains.staging.folder, &result.done);
        (void)removeFolderWhenFree(copyName(target)); // of a recovery that was broken off
    }
    return result;
}

} // namespace ctl
