// Uses the frame in a process of its own, for tests that need another layout or a second process.
//
//   frame_probe paths                 initialises twice and prints every path as one JSON object
//   frame_probe inspect <folder>      the same about an installation that is only looked at
//   frame_probe first <operation>     calls one operation of an uninitialised AppPaths, prints the root
//   frame_probe log <word> <count>    writes that many lines to the launch log
//   frame_probe settings <word> <count>  opens the store and sets that many keys
#include "frame/app_paths.h"
#include "frame/launch_log.h"
#include "frame/settings_store.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>

namespace {

void printPaths() {
    AppPaths::initialize();
    AppPaths::initialize();
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
    if (command == "paths" || command == "inspect")
        printPaths();
    else if (command == "first")
        printRootAfter(arguments.value(2));
    else if (command == "log")
        writeLines(arguments.value(2), arguments.value(3).toInt());
    else if (command == "settings")
        writeSettings(arguments.value(2), arguments.value(3).toInt());
    else
        return 2;
    return 0;
}
