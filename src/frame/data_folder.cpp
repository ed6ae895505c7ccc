#include "frame/data_folder.h"

#include <QDir>

DataFolder DataFolder::below(const QString &systemFolder) {
    return {QDir(systemFolder).filePath(QStringLiteral("Quorvane"))};
}

QString DataFolder::database() const {
    return QDir(path).filePath(QStringLiteral("Quorvane.db"));
}

QString DataFolder::launchLog() const {
    return QDir(path).filePath(QStringLiteral("launcher.log"));
}

QString DataFolder::dumps() const {
    return QDir(path).filePath(QStringLiteral("dumps"));
}

QString DataFolder::update() const {
    return QDir(path).filePath(QStringLiteral("update"));
}

QString DataFolder::updateTemp() const {
    return QDir(update()).filePath(QStringLiteral("temp"));
}

QString DataFolder::updateBackup() const {
    return QDir(update()).filePath(QStringLiteral("backup"));
}

QString DataFolder::updateCache() const {
    return QDir(update()).filePath(QStringLiteral("cache"));
}
