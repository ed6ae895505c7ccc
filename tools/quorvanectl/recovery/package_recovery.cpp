#include "quorvanectl/recovery/package_recovery.h"

#include "frame/app_paths.h"
#include "launcher/offer/apply_places.h"
#include "launcher/offer/project_apply.h"
#include "project/project_file.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/files/unpack.h"
#include "quorvanectl/recovery/folders_aside.h"
#include "update/files/failure.h"
#include "update/files/file_copy.h"
#include "update/files/file_operations.h"
#include "update/files/patient_files.h"
#include "update/files/place_facts.h"
#include "update/files/text_file.h"
#include "update/manifest_keys.h"
#include "update/manifest_signature.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace ctl {
namespace {

// Behind the name of a folder that made way, so that it is not taken for what an update has left.
QString asideEnding() {
    return QStringLiteral(".set_aside");
}

// The project file of a folder that is to bear the name `folderName`, and does not yet.
QString projectFileIn(const QString &folder, const QString &folderName) {
    const QString named = QDir(folder).filePath(folderName + QStringLiteral(".yslib"));
    return QFileInfo::exists(named) ? named : findProjectFile(folder);
}

QString folderNameOf(const ProjectCopy &project) {
    return QFileInfo(project.folder).fileName();
}

// The name by which a record is chosen; empty where nothing tells it any more.
QString nameOf(const UpdateRemains &remains) {
    const QString name = readProjectName(remains.project.projectFile);
    return name.isEmpty() ? readProjectName(remains.backup.projectFile) : name;
}

// What is in a project file, but for the version, which an update writes anew.
QJsonObject projectWithoutVersion(const QString &projectFile) {
    QJsonObject root = QJsonDocument::fromJson(readTextFile(projectFile).toUtf8()).object();
    QJsonObject project = root.value(QStringLiteral("project")).toObject();
    project.remove(QStringLiteral("version"));
    root.insert(QStringLiteral("project"), project);
    return root;
}

// Of `content` only what `names` has as well.
FolderContent onlyNamesOf(FolderContent content, const FolderContent &names) {
    for (auto entry = content.entries.begin(); entry != content.entries.end();)
        entry =
            names.entries.contains(entry.key()) ? std::next(entry) : content.entries.erase(entry);
    return content;
}

// Whether `outer` is `inner` or a folder on the way to it, links aside.
bool holds(const QString &outer, const QString &inner) {
    const QString below = realPath(inner) + QLatin1Char('/');
    return QFileInfo::exists(outer) && QFileInfo::exists(inner) &&
           below.startsWith(realPath(outer) + QLatin1Char('/'));
}

// A project file that is named one folder too high would take all projects of the line out of their places.
bool holdsProjects(const QString &folder) {
    const QStringList files{QStringLiteral("*.yslib")};
    const QDir place(folder);
    if (!place.entryList(files, QDir::Files).isEmpty())
        return false; // they lie within a project
    const QStringList names = place.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    return 1 < std::count_if(names.begin(), names.end(), [&](const QString &name) {
               return !QDir(place.filePath(name)).entryList(files, QDir::Files).isEmpty();
           });
}

// Where logs of the project may lie, those that count most at the end. A recovery that was killed between
// its two renamings has left the old folder under its new name.
QStringList placesOfLogs(const UpdateRemains &remains, const DataFolder &data) {
    QStringList places{remains.backup.folder};
    const QString target = remains.project.folder;
    if (!QFileInfo::exists(target)) {
        const QString pattern =
            apply_places::backupPrefix(target) + QStringLiteral("*") + asideEnding();
        const QDir backups(data.updateBackup());
        for (const QString &name : backups.entryList({pattern}, QDir::Dirs, QDir::Name))
            places.append(backups.filePath(name));
        const QDir beside(QFileInfo(target).path());
        const QString other = QFileInfo(target).fileName() + QStringLiteral(".set_aside_*");
        for (const QString &name : beside.entryList({other}, QDir::Dirs, QDir::Name))
            places.append(beside.filePath(name));
    }
    places.append(target);
    return places;
}

bool takeLogs(const QString &copy, const QStringList &places, QString *error) {
    for (const QString &place : places) {
        const QString logs = QDir(place).filePath(apply_places::keptFolder());
        if (!place.isEmpty() && QFileInfo(logs).isDir() &&
            !copyDirectory(logs, QDir(copy).filePath(apply_places::keptFolder()), error))
            return false;
    }
    return true;
}

// The new project, whole and on the disk, under a name of its own.
bool makeCopy(const ProvedPackage &package, const UpdateRemains &remains, const DataFolder &data,
              const QString &copy, QString *error) {
    if (!removeFolderWhenFree(copy, error) || !ctl::unpack(package.path(), copy, error) ||
        !takeLogs(copy, placesOfLogs(remains, data), error))
        return false;
    const QString file = projectFileIn(copy, folderNameOf(remains.project));
    (void)stampProjectVersion(file,
                              package.version()); // without a stamp the update is offered again
    if (!validatorErrors(file).isEmpty())
        return fail(QStringLiteral("%1: what was unpacked cannot run").arg(copy), error);
    return flushFolder(copy) || fail(QStringLiteral("cannot write %1").arg(copy), error);
}

} // namespace

bool ProvedPackage::prove(const PackageSource &source, const UpdateRemains &remains,
                          QString *error) {
    if (!place.isValid())
        return fail(place.errorString(), error);
    QJsonArray records;
    return readManifest(source, &records, error) && takeCopy(source, error) &&
           findRecord(source, records, remains, error) && unpack(source, error);
}

bool ProvedPackage::readManifest(const PackageSource &source, QJsonArray *records, QString *error) {
    const QString text = readText(source.manifest, error);
    if (text.isNull())
        return false;
    const ManifestProof proof = proveManifest(text, source.key);
    if (!proof.result.ok)
        return fail(QStringLiteral("%1: %2").arg(source.manifest, proof.result.message), error);
    *records = proof.manifest->value(manifest_keys::projects).toArray();
    return true;
}

bool ProvedPackage::takeCopy(const PackageSource &source, QString *error) {
    copy = place.filePath(QStringLiteral("package.zip"));
    return copyFileContent(source.package, copy) ||
           fail(QStringLiteral("%1: cannot be copied to %2").arg(source.package, copy), error);
}

bool ProvedPackage::findRecord(const PackageSource &source, const QJsonArray &records,
                               const UpdateRemains &remains, QString *error) {
    const QString hash = fileSha256Hex(copy, error);
    const QString wanted = nameOf(remains);
    QString other; // a project that the package is of, and not this one
    for (const QJsonValue &value : records) {
        const QJsonObject record = value.toObject();
        const QString name = record.value(manifest_keys::name).toString();
        if (record.value(manifest_keys::zipSha256)
                .toString()
                .trimmed()
                .compare(hash, Qt::CaseInsensitive) != 0)
            continue;
        // Of a project of which nothing can be read any more, who calls this says which it is.
        if (wanted.isEmpty() ||
            UpdateContext::projectRecordMatches(name, wanted, folderNameOf(remains.project))) {
            recordName = name;
            recordVersion = record.value(manifest_keys::version).toString();
            return true;
        }
        other = name;
    }
    return fail(other.isEmpty()
                    ? QStringLiteral("%1: no project record of %2 has its hash, %3")
                          .arg(source.package, source.manifest, hash)
                    : QStringLiteral("%1: is of the project \"%2\", and this one is \"%3\"")
                          .arg(source.package, other, wanted),
                error);
}

bool ProvedPackage::unpack(const PackageSource &source, QString *error) {
    const QString unpacked = place.filePath(QStringLiteral("unpacked"));
    QString reason;
    if (!ctl::unpack(copy, unpacked, &reason))
        return fail(
            QStringLiteral("%1: %2").arg(source.package, reason.replace(copy, source.package)),
            error);
    projectFile = findProjectFile(unpacked);
    if (projectFile.isEmpty())
        return fail(QStringLiteral("%1: holds no project file").arg(source.package), error);
    const QString errors = validatorErrors(projectFile);
    if (!errors.isEmpty())
        return fail(QStringLiteral("%1: cannot run: %2")
                        .arg(source.package, errors.section(QLatin1Char('\n'), 0, 0)),
                    error);
    return readContent(unpacked, &content, error);
}

bool ProvedPackage::isInPlaceOf(const ProjectCopy &project) const {
    if (!project.runs() ||
        projectWithoutVersion(project.projectFile) != projectWithoutVersion(projectFile))
        return false;
    FolderContent package = without(content, apply_places::keptFolder());
    package.entries.remove(QDir(content.folder).relativeFilePath(projectFile));
    return isSame(package, onlyNamesOf(project.content, package));
}

QString whyNotReplaced(const QString &projectFolder, const DataFolder &data) {
    const QString reason = QStringLiteral("%1: may not be replaced: ").arg(projectFolder);
    if (QFileInfo(projectFolder).isDir() && isRootOfVolume(projectFolder))
        return reason + QStringLiteral("it is the root of a volume");
    if (holds(projectFolder, data.path))
        return reason + QStringLiteral("the data folder lies in it");
    if (holds(projectFolder, AppPaths::applicationDirectory()))
        return reason + QStringLiteral("the launcher lies in it");
    if (holdsProjects(projectFolder))
        return reason + QStringLiteral("several projects lie in it");
    return {};
}

RecoveryResult recoverFromPackage(const ProvedPackage &package, const UpdateRemains &remains,
                                  const DataFolder &data) {
    RecoveryResult result;
    const QString target = remains.project.folder;
    const QString copy = copyName(target);
    if (!QDir().mkpath(QFileInfo(target).path()) || !QDir().mkpath(data.updateBackup())) {
        result.error = QStringLiteral("cannot make a folder for %1").arg(target);
        return result;
    }
    const QString backup =
        QDir(data.updateBackup())
            .filePath(apply_places::backupPrefix(target) + apply_places::stamp());
    // To another volume nothing is renamed: then it stays beside the project.
    result.ok = makeCopy(package, remains, data, copy, &result.error) &&
                swapIn(copy, target, {freeName(backup, asideEnding()), asideOf(target)},
                       &result.keptAs, &result.error);
    if (result.ok) {
        retire(remains.backup.folder, &result.done);
        retire(remains.staging.folder, &result.done);
    } else {
        (void)removeFolderWhenFree(copy); // it may have filled the disk
    }
    return result;
}

} // namespace ctl
