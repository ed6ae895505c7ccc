// Not QFile::copy, which waits for the disk after each file: a project of many files would take
// several times as long. Instead the whole volume is waited for once, before anything is removed.
#include "update/files/file_copy.h"

#include <QFile>

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

bool copyFileContent(const QString &source, const QString &destination) {
    const auto native = [](const QString &path) {
        return std::filesystem::path(QFile::encodeName(path).toStdString());
    };
    std::error_code failure;
    return std::filesystem::copy_file(native(source), native(destination), failure);
}

bool flushVolume(const QString &folder) {
    const int descriptor =
        ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    const bool flushed = ::syncfs(descriptor) == 0;
    ::close(descriptor);
    return flushed;
}

bool mayTakeFrom(const QString &folder) {
    return ::euidaccess(QFile::encodeName(folder).constData(), W_OK | X_OK) == 0;
}

bool mayRead(const QString &file) {
    return ::euidaccess(QFile::encodeName(file).constData(), R_OK) == 0;
}

// What is open can be removed all the same, and is gone for all others.
bool isHeld(const QString &) {
    return false;
}

// A system too old to tell lets the attempt fail.
bool isMountPoint(const QString &folder) {
    struct statx about {};
    return ::statx(AT_FDCWD, QFile::encodeName(folder).constData(), AT_SYMLINK_NOFOLLOW, 0,
                   &about) == 0 &&
           (about.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
}
