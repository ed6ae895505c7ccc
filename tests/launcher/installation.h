// The temporary installation that a test of the launcher runs in: its target, its projects, its log.
#pragma once

#include "frame/app_paths.h"
#include "frame/settings_store.h"
#include "update/files/text_file.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStringList>
#include <QTranslator>

namespace installation {

// A translation that marks each text of the service, so that a test sees what went through it.
class MarkingTranslator : public QTranslator {
public:
    MarkingTranslator() { QCoreApplication::installTranslator(this); }
    ~MarkingTranslator() override { QCoreApplication::removeTranslator(this); }
    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] QString translate(const char *context, const char *source, const char *,
                                    int) const override {
        return qstrcmp(context, "LauncherService") == 0 ? "<" + QString::fromUtf8(source) + ">"
                                                        : QString();
    }
};

inline QString appPath(const QString &name) {
    return QCoreApplication::applicationDirPath() + '/' + name;
}

inline bool write(const QString &path, const QString &text) {
    return writeTextFile(path, text);
}

// A project in the user's folder; returns the path of its project file.
inline QString addProject(const QString &folder, const QString &text = "{}") {
    const QString path = AppPaths::projectsDirectory() + '/' + folder + "/demo.yslib";
    return write(path, text) ? path : QString();
}

// A project without findings, and the core plug-in; returns the path of the project file.
inline QString addRunnableProject(const QString &folder, const QString &version = QString()) {
    const QString text = QStringLiteral(R"({"schemaVersion": 1,
"project": {"name": "line", "displayName": "Line", "createdAt": "2026-01-01", "version": "%1"},
"scripts": [{"id": "main", "path": "main.ys", "role": "main"}],
"tasks": {"main": {"entryScriptId": "main"}}})")
                             .arg(version);
    const QString path = addProject(folder, text);
    const bool done = write(QFileInfo(path).absolutePath() + "/main.ys", "") &&
                      write(appPath("plugins/CoreOperators.dll"), "");
    return done ? path : QString();
}

// Puts the stand-in runtime into the program's folder. `plan` tells it what to do, see
// line_runner.cpp.
inline bool addTarget(const QString &plan, const QString &name = "LineRunner.exe") {
    QFile::remove(appPath(name));
    QFile::remove(appPath("LineRunner.seen"));
    return QFile::copy(LINE_RUNNER_PROGRAM, appPath(name)) &&
           write(appPath("LineRunner.plan"), plan);
}

// What the stand-in runtime saw: its arguments, then its folder.
inline QStringList targetSaw() {
    return readTextFile(appPath("LineRunner.seen")).remove('\r').split('\n', Qt::SkipEmptyParts);
}

inline void release() {
    (void)write(appPath("LineRunner.go"), "");
}

// The lines of the launch log without their time stamps; the log is gone afterwards.
inline QStringList takeLog() {
    QString text = readTextFile(AppPaths::launchLogPath()).remove('\r'); // line ends of Windows
    QFile::remove(AppPaths::launchLogPath());
    static const QRegularExpression stamp("^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d ",
                                          QRegularExpression::MultilineOption);
    return text.remove(stamp).split('\n', Qt::SkipEmptyParts);
}

// Back to an installation that was just unpacked and never started.
inline void reset() {
    for (const char *name : {"LineRunner.exe", "LineStudio.exe", "LineRunner.plan",
                             "LineRunner.seen", "LineRunner.go"})
        QFile::remove(appPath(name));
    for (const char *folder : {"plugins", "config", "examples", "translations"})
        QDir(appPath(folder)).removeRecursively();
    QDir(AppPaths::userDirectory()).removeRecursively();
    QFile::remove(AppPaths::launchLogPath());
    qunsetenv("QUORVANE_DEV");
    AppPaths::initialize();
    (void)SettingsStore::instance().open();
    // Each write reaches the disk, so only what a test left is written over.
    for (const char *key : {"default_project_path", "update/online_skipped_version_fingerprint"}) {
        if (!SettingsStore::instance().value(key, "").isEmpty())
            SettingsStore::instance().setValue(key, "");
    }
}

} // namespace installation
