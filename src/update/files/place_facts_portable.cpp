#include "update/files/place_facts.h"

#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>

std::filesystem::file_type kindOf(const QString &path) {
    const auto place = std::filesystem::u8path(path.toUtf8().constData());
    std::error_code failure;
    return std::filesystem::symlink_status(place, failure).type();
}

QString realPath(const QString &path) {
    return QFileInfo(path).canonicalFilePath();
}

bool isSamePlace(const QString &one, const QString &other) {
    struct stat first {};
    struct stat second {};
    return ::stat(QFile::encodeName(one).constData(), &first) == 0 &&
           ::stat(QFile::encodeName(other).constData(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

QString rootOfVolume(const QString &path) {
    return QStorageInfo(path).rootPath();
}

bool mayTakeFrom(const QString &folder) {
    return ::euidaccess(QFile::encodeName(folder).constData(), W_OK | X_OK) == 0;
}

bool mayRead(const QString &file) {
    return ::euidaccess(QFile::encodeName(file).constData(), R_OK) == 0;
}

// What is open can be removed all the same, and is gone for all others.
bool isHeld(const QString &, Patience *) {
    return false;
}

// A system too old to tell lets the attempt fail.
bool isMountPoint(const QString &folder) {
    struct statx about {};
    return ::statx(AT_FDCWD, QFile::encodeName(folder).constData(), AT_SYMLINK_NOFOLLOW, 0,
                   &about) == 0 &&
           (about.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
}
