#include "update/files/file_operations.h"

#include "update/files/failure.h"
#include "update/files/file_copy.h"
#include "update/files/folder_listing.h"
#include "update/files/folder_removal.h"
#include "update/files/patience.h"
#include "update/files/place_facts.h"
#include "update/files/text_file.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <filesystem>
#include <vector>

namespace {

bool isFolder(const QString &path) {
    return !path.isEmpty() && QFileInfo(path).isDir();
}

using FileType = std::filesystem::file_type;

// A place that cannot be looked at counts as taken: what is there must not be mixed with anything.
bool isThere(const QString &path) {
    const FileType kind = kindOf(path);
    return kind == FileType::symlink ? QFileInfo::exists(path) : kind != FileType::not_found;
}

// A read-only file cannot be removed on Windows; a link to a folder is removed like one there. The
// permissions of a link are those of what it leads to, and not ours to change.
bool removeEntry(const QString &path) {
    if (QFile::remove(path))
        return true;
    if (!isLink(QFileInfo(path)))
        QFile::setPermissions(path, QFile::permissions(path) | QFile::WriteUser);
    return QFile::remove(path) || removeEmptyFolder(path);
}

bool failCopying(const QString &path, QString *error) {
    return fail(QStringLiteral("unable to copy file: %1")
                    .arg(QDir::cleanPath(QFileInfo(path).absoluteFilePath())),
                error);
}

// From the top down, folders in a list of their own: their depth is not bounded by the stack.
bool removeTree(const QString &path) {
    bool removed = true;
    QStringList folders{path};
    for (int i = 0; i < folders.size(); ++i) {
        QDirIterator entries(folders.at(i),
                             QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
        while (entries.hasNext()) {
            const QString entry = entries.next();
            const QFileInfo info = entries.fileInfo();
            if (info.isDir() && !isLink(info))
                folders.append(entry);
            else
                removed = removeEntry(entry) && removed;
        }
    }
    std::reverse(folders.begin(), folders.end());
    for (const QString &folder : qAsConst(folders))
        removed = removeEmptyFolder(folder) && removed;
    return removed;
}

bool copyFile(const QString &source, const QString &destination, QString *error) {
    if (!ensureParentDir(destination, error))
        return false;
    if (QFileInfo::exists(destination) && !QFile::remove(destination))
        return fail(QStringLiteral("unable to replace file: %1").arg(destination), error);
    return copyFileContent(source, destination) || failCopying(source, error);
}

// A copy counts once it would outlive a power cut.
bool waitForDisk(const QString &folder, QString *error) {
    return flushFolder(folder) || failCopying(folder, error);
}

// A link to a folder becomes a folder; what is neither a folder nor a file is left out.
bool copyEntry(const QFileInfo &info, const QString &destination, QString *error) {
    if (!info.isDir())
        return !info.isFile() || copyFile(info.filePath(), destination, error);
    return QDir().mkpath(destination) ||
           fail(QStringLiteral("unable to create directory: %1").arg(destination), error);
}

// A folder, and whether it or one above it in the project is hidden.
struct Inside {
    QString path;
    bool hidden;
};

// Of a folder that cannot be listed only its removal tells whether it is empty. If it was, one that
// can be listed takes its place, for the copies to come.
bool isEmptyWhenRemoved(const QString &folder) {
    return removeEmptyFolder(folder) && QDir().mkdir(folder);
}

// The project is still whole. One of which a file could not be copied could not be backed up whole,
// and one that something cannot be taken out of would be left in parts. What is hidden is not copied.
bool canBeTakenApart(const QString &target, QString *error) {
    const bool targetIsLink = isLink(QFileInfo(target)); // all of it that is removed
    Patience patience;
    bool removable = mayTakeFrom(QFileInfo(QDir::cleanPath(target)).absolutePath()) &&
                     !isHeld(target, &patience);
    std::vector<Inside> folders{{target, false}};
    QStringList unlisted;
    for (std::size_t i = 0; i < folders.size(); ++i) {
        const Inside folder = folders[i];
        QFileInfoList entries;
        if (!listFolder(folder.path, &entries))
            unlisted.append(folder.path);
        if (!targetIsLink)
            removable = removable && !isMountPoint(folder.path) &&
                        (entries.isEmpty() || mayTakeFrom(folder.path));
        for (const QFileInfo &info : qAsConst(entries)) {
            const bool hidden = folder.hidden || info.isHidden();
            if (info.isFile() && !hidden && !mayRead(info.filePath()))
                return failCopying(info.filePath(), error);
            removable = removable && (targetIsLink || !isHeld(info.filePath(), &patience));
            if (info.isDir() && !isLink(info))
                folders.push_back({info.filePath(), hidden});
        }
    }
    // What a link leads to stays as it is.
    removable = removable &&
                (targetIsLink ? unlisted.isEmpty()
                              : std::all_of(unlisted.begin(), unlisted.end(), isEmptyWhenRemoved));
    return removable || fail(QStringLiteral("unable to remove directory: %1").arg(target), error);
}

// The real place of a path of which only the first part need exist.
QString placeOf(const QString &path) {
    const QString absolute = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    const QFileInfo info(absolute);
    if (info.exists())
        return realPath(absolute);
    const QString parent = info.path();
    return parent == absolute
               ? absolute
               : QDir::cleanPath(placeOf(parent) + QLatin1Char('/') + info.fileName());
}

// Whether `inner` is `outer` or lies below it. One folder can have several names: each folder above
// is compared by what it is, and by its name where that is not there yet.
bool liesIn(const QString &outer, const QString &inner) {
    QString place = inner;
    while (place != outer && !isSamePlace(place, outer)) {
        const QString above = QFileInfo(place).path();
        if (above == place)
            return false;
        place = above;
    }
    return true;
}

void dropBackup(const QString &backup) {
    (void)removeDirectory(backup); // a leftover does no harm
}

// The old files overwrite those of the package.
bool preserve(const QStringList &names, const QString &target, const QString &staging,
              const QString &backup, QString *error) {
    for (const QString &name : names) {
        const QString kept = QDir(target).filePath(name);
        if (!isThere(kept) || copyDirectory(kept, QDir(staging).filePath(name), error))
            continue;
        (void)restoreDirectory(backup, target); // the copy's error is the one to tell
        dropBackup(backup);
        return false;
    }
    return true;
}

// From here on the old project is taken apart, and the power may be cut at any moment.
bool waitForBoth(const QString &staging, const QString &backup, QString *error) {
    if (waitForDisk(backup, error) && waitForDisk(staging, error))
        return true;
    dropBackup(backup);
    return false;
}

// If the folder cannot be removed, what is left of it makes way for the backup. Where it cannot be
// removed a second time either, the backup is dropped all the same.
bool clearTarget(const QString &target, const QString &backup, QString *error) {
    if (removeDirectory(target, error))
        return true;
    if (isFolder(backup) && removeDirectory(target) && !QDir().rename(backup, target))
        (void)(copyDirectory(backup, target) && flushFolder(target));
    dropBackup(backup);
    return false;
}

// A rename where both lie on one volume, else a copy.
bool moveIn(const QString &staging, const QString &target, const QString &backup, QString *error) {
    if (QDir().rename(staging, target))
        return true;
    if (copyDirectory(staging, target, error) && waitForDisk(target, error)) {
        (void)removeDirectory(staging); // a leftover does no harm
        return true;
    }
    if (isFolder(backup))
        (void)restoreDirectory(backup, target); // the copy's error is the one to tell
    dropBackup(backup);
    return false;
}

} // namespace

QString findFileBySuffix(const QString &folder, const QString &suffix) {
    QDirIterator files(folder, {QLatin1Char('*') + suffix}, QDir::Files,
                       QDirIterator::Subdirectories);
    return files.hasNext() ? files.next() : QString();
}

bool removeDirectory(const QString &path, QString *error) {
    const FileType kind = path.isEmpty() ? FileType::not_found : kindOf(path);
    const bool isLinked = kind == FileType::symlink || isLink(QFileInfo(path));
    if (isLinked ? !isFolder(path) : kind != FileType::directory && kind != FileType::none)
        return true;
    if (kind != FileType::none && (isLinked ? removeEntry(path) : removeTree(path)))
        return true;
    return fail(QStringLiteral("unable to remove directory: %1").arg(path), error);
}

bool copyDirectory(const QString &source, const QString &target, QString *error) {
    if (!isFolder(source))
        return fail(QStringLiteral("source directory not found: %1").arg(source), error);
    if (target.isEmpty() || !QDir().mkpath(target)) {
        return fail(QStringLiteral("unable to create destination directory: %1").arg(target),
                    error);
    }
    QStringList folders{QString()}; // relative to source, each with a slash behind it
    for (int i = 0; i < folders.size(); ++i) {
        const QString below = folders.at(i);
        QFileInfoList entries;
        QString unreadable;
        if (!listFolder(source + QLatin1Char('/') + below, &entries, &unreadable))
            return failCopying(unreadable, error);
        for (const QFileInfo &info : qAsConst(entries)) {
            const QString relative = below + info.fileName();
            if (!info.isHidden() && !copyEntry(info, QDir(target).filePath(relative), error))
                return false;
            if (!info.isHidden() && info.isDir() && !isLink(info))
                folders.append(relative + QLatin1Char('/'));
        }
    }
    return true;
}

bool backUpDirectory(const QString &target, const QString &backup, QString *error) {
    if (!removeDirectory(backup, error))
        return false;
    if (!QFileInfo::exists(target))
        return fail(QStringLiteral("backup source not found: %1").arg(target), error);
    return copyDirectory(target, backup, error);
}

bool mayBeReplaced(const QString &target, const QStringList &others) {
    if (target.isEmpty())
        return false;
    const QString place = placeOf(target);
    if (QDir(place).isRoot() || (QFileInfo::exists(place) && isRootOfVolume(place)))
        return false;
    return std::none_of(others.begin(), others.end(),
                        [&place](const QString &other) { return liesIn(place, placeOf(other)); });
}

bool replaceDirectory(const QString &staging, const QString &target,
                      const QStringList &preservedNames, const QString &backup, QString *error) {
    if (!isFolder(staging))
        return fail(QStringLiteral("staging directory not found: %1").arg(staging), error);
    const QString backupPath =
        backup.trimmed().isEmpty() ? target + QStringLiteral(".apply_backup") : backup;
    if (!mayBeReplaced(target, {staging, backupPath, QCoreApplication::applicationDirPath()}))
        return fail(QStringLiteral("unable to remove directory: %1").arg(target), error);

    if (isThere(target)) {
        if (!canBeTakenApart(target, error) || !backUpDirectory(target, backupPath, error) ||
            !preserve(preservedNames, target, staging, backupPath, error) ||
            !waitForBoth(staging, backupPath, error) || !clearTarget(target, backupPath, error))
            return false;
    }
    if (!moveIn(staging, target, backupPath, error))
        return false;
    dropBackup(backupPath);
    return true;
}

bool restoreDirectory(const QString &backup, const QString &target, QString *error) {
    if (!isFolder(backup))
        return fail(QStringLiteral("backup directory not found: %1").arg(backup), error);
    if (!removeDirectory(target, error))
        return false;
    if (QDir().rename(backup, target))
        return true;
    if (!copyDirectory(backup, target, error) || !waitForDisk(target, error))
        return false;
    (void)removeDirectory(backup); // a leftover does no harm
    return true;
}
