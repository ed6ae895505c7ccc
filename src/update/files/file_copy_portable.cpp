// Not QFile::copy, which waits for the disk after each file: a project of many files would take
// several times as long. Instead the whole volume is waited for once, before anything is removed.
#include "update/files/file_copy.h"

#include <QFile>

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>

bool copyFileContent(const QString &source, const QString &destination) {
    const auto native = [](const QString &path) {
        return std::filesystem::path(QFile::encodeName(path).toStdString());
    };
    std::error_code failure;
    return std::filesystem::copy_file(native(source), native(destination), failure);
}

bool flushFolder(const QString &folder) {
    const int descriptor =
        ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    const bool flushed = ::syncfs(descriptor) == 0;
    ::close(descriptor);
    return flushed;
}
