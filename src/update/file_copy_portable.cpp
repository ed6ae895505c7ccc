// Not QFile::copy, which waits for the disk after each file: a project of many files would take
// several times as long.
#include "update/file_copy.h"

#include <QFile>

#include <filesystem>
#include <system_error>

bool copyFileContent(const QString &source, const QString &destination) {
    const auto native = [](const QString &path) {
        return std::filesystem::path(QFile::encodeName(path).toStdString());
    };
    std::error_code failure;
    return std::filesystem::copy_file(native(source), native(destination), failure);
}
