#include "quorvanectl/shell/data_option.h"

#include "frame/app_paths.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>

namespace ctl {
namespace {

bool isFolder(const QString &path) {
    return QFileInfo(path).isDir();
}

} // namespace

void declareData(QCommandLineParser &parser) {
    parser.addOption({dataOption, QStringLiteral("The launcher's data folder, if not this user's."),
                      QStringLiteral("folder")});
}

DataFolder dataFolder(const QCommandLineParser &parser) {
    const QString named = parser.value(dataOption);
    return {QDir(named.isEmpty() ? AppPaths::dataDirectory() : named).absolutePath()};
}

QString dataFolderAround(const QString &named) {
    const QString path = QDir::cleanPath(QFileInfo(named).absoluteFilePath());
    if (isFolder(DataFolder{path}.update()))
        return {};
    const DataFolder below = DataFolder::below(path);
    if (isFolder(below.update()))
        return below.path;
    for (const QString &inner : {path, QFileInfo(path).path()}) {
        const DataFolder around{QFileInfo(inner).path()};
        if (around.update() == inner &&
            (isFolder(around.updateBackup()) || isFolder(around.updateTemp())))
            return around.path;
    }
    return {};
}

} // namespace ctl
