#include "update/files/patient_files.h"

#include "update/files/failure.h"
#include "update/files/file_operations.h"

#include <QDir>
#include <QFile>

#include <filesystem>
#include <system_error>

bool renameWhenFree(const QString &from, const QString &to) {
    return QDir().rename(from, to);
}

bool renameOverWhenFree(const QString &from, const QString &to, QString *error) {
    const auto native = [](const QString &path) {
        return std::filesystem::path(QFile::encodeName(path).toStdString());
    };
    std::error_code failure;
    std::filesystem::rename(native(from), native(to), failure);
    return !failure || failAbout(to, QString::fromLocal8Bit(failure.message().c_str()), error);
}

bool removeFileWhenFree(const QString &path, QString *error) {
    QFile file(path);
    return file.remove() || failAbout(path, file.errorString(), error);
}

bool removeFolderWhenFree(const QString &path, QString *error) {
    return removeDirectory(path, error);
}

void waitUntilFree(const QString &) {}
