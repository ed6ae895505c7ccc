#include "quorvanectl/shell/data_option.h"

#include "frame/app_paths.h"

#include <QCommandLineParser>
#include <QDir>

void ctl::declareData(QCommandLineParser &parser) {
    parser.addOption({dataOption, QStringLiteral("The launcher's data folder, if not this user's."),
                      QStringLiteral("folder")});
}

DataFolder ctl::dataFolder(const QCommandLineParser &parser) {
    const QString named = parser.value(dataOption);
    return {QDir(named.isEmpty() ? AppPaths::dataDirectory() : named).absolutePath()};
}
