// Uses the frame in a process of its own, for tests that need another layout or a second process.
//
//   frame_probe paths                 initialises twice and prints every path as one JSON object
//   frame_probe inspect <folder>      the same about an installation that is only looked at
//   frame_probe changes <path>... prints them, makes each path (a folder if it ends in a slash, else
//                                 an empty file) and prints them again on a second line
//   frame_probe first <operation>     calls one operation of an uninitialised AppPaths, prints the root
//   frame_probe log <word> <count>    writes that many lines to the launch log
//   frame_probe settings <word> <count>  opens the store and sets that many keys
#include "frame/app_paths.h"
#include "frame/launch_log.h"
#include "frame/settings_store.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cstdio>

namespace {

void printPaths() {
    const QJsonObject paths{
        {"program", AppPaths::applicationDirectory()},
        {"launcher", AppPaths::applicationFile()},
        {"projects", AppPaths::projectsDirectory()},
        {"root", AppPaths::repositoryRoot()},
        {"repository", AppPaths::isRepositoryLayout()},
        {"install", AppPaths::installRoot()},
        {"user", AppPaths::userDirectory()},
        {"plugins", AppPaths::pluginsDirectory()},
        {"config", AppPaths::configDirectory()},
        {"library", AppPaths::functionLibraryPath()},
        {"key", AppPaths::updatePublicKeyPath()},
        {"data", AppPaths::dataDirectory()},
    };
    std::puts(QJsonDocument(paths).toJson(QJsonDocument::Compact).constData());
}

bool make(const QString &path) {
    if (path.endsWith('/'))
        return QDir().mkpath(path);
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly);
}

void printRootAfter(const QString &operation) {
    if (operation == "isRepositoryLayout")
        (void)AppPaths::isRepositoryLayout();
    else if (operation == "installRoot")
        (void)AppPaths::installRoot();
    else if (operation == "pluginsDirectory")
        (void)AppPaths::pluginsDirectory();
    else if (operation == "configDirectory")
        (void)AppPaths::configDirectory();
    else if (operation == "userDirectory")
        (void)AppPaths::userDirectory();
    std::puts(qPrintable(AppPaths::repositoryRoot()));
}

void writeLines(const QString &word, int count) {
    for (int i = 0; i < count; ++i)
        appendLaunchLog(QString("%1 %2 end").arg(word, QString::number(i)));
}

void writeSettings(const QString &word, int count) {
    SettingsStore &store = SettingsStore::instance();
    if (!store.open())
        std::puts("the store does not open");
    for (int i = 0; i < count; ++i)
        store.setValue(QString("%1/%2").arg(word, QString::number(i)), QString::number(i));
}

} // namespace

int main(int argc, char **argv) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QString command = arguments.value(1);
    if (command == "inspect")
        AppPaths::inspect(arguments.value(2));
    if (command == "paths" || command == "inspect" || command == "changes") {
        AppPaths::initialize();
        AppPaths::initialize();
        printPaths();
    }
    if (command == "changes") {
        const QStringList paths = arguments.mid(2);
        if (!std::all_of(paths.begin(), paths.end(), make))
            return 2;
        printPaths();
    }
    if (command == "first")
        printRootAfter(arguments.value(2));
    if (command == "log")
        writeLines(arguments.value(2), arguments.value(3).toInt());
    if (command == "settings")
        writeSettings(arguments.value(2), arguments.value(3).toInt());
    const QStringList known{"paths", "inspect", "changes", "first", "log", "settings"};
    return known.contains(command) ? 0 : 2;
}
