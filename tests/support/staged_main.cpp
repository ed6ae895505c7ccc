#include "support/staged_main.h"

#include "support/platform.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QProcess>
#include <QScreen>
#include <QTemporaryDir>
#include <QThread>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace support {
namespace {

constexpr char marker[] = "--staged";

// A hard link costs nothing; another volume needs a copy. So does Windows, which lets nobody remove a
// link while the program runs by another, as we do.
bool placeProgram(const QString &from, const QString &to) {
    if (onWindows)
        return QFile::copy(from, to);
    std::error_code failed;
    std::filesystem::create_hard_link(from.toStdU16String(), to.toStdU16String(), failed);
    return !failed || QFile::copy(from, to);
}

// Windows may hold the file of a program that has just ended for a moment more.
void removeStage(const QString &path) {
    const QDeadlineTimer deadline(10000); // ms
    while (!QDir(path).removeRecursively()) {
        if (deadline.hasExpired()) {
            std::fprintf(stderr, "cannot remove %s\n", qPrintable(path));
            return;
        }
        QThread::msleep(10);
    }
}

} // namespace

bool isStaged(int argc, char **argv) {
    return argc > 1 && std::strcmp(argv[1], marker) == 0;
}

void dropStagedMarker(int &argc, char **argv) {
    for (int i = 1; i + 1 < argc; ++i)
        argv[i] = argv[i + 1];
    argv[--argc] = nullptr;
}

// Visible from outside, so that the compiler cannot do without it.
QList<QScreen *> *keptScreens = nullptr;

void keepScreens() {
    keptScreens = new QList<QScreen *>(QGuiApplication::screens());
}

QString stageRoot() {
    return QDir(QCoreApplication::applicationDirPath() + "/..").absolutePath();
}

int runStaged(int argc, char **argv) {
    const QCoreApplication application(argc, argv);
    QTemporaryDir stage;
    stage.setAutoRemove(false);
    const QDir root(stage.path());
    const QFileInfo self(QCoreApplication::applicationFilePath());
    const QString program = root.filePath("app/" + self.fileName());
    if (!stage.isValid() || !root.mkpath("app") || !root.mkpath("data") ||
        !placeProgram(self.filePath(), program)) {
        std::fprintf(stderr, "cannot stage %s\n", qPrintable(self.filePath()));
        return 125;
    }
    qputenv("XDG_DATA_HOME", QFile::encodeName(root.filePath("data")));
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedChannels);
    child.setInputChannelMode(QProcess::ForwardedInputChannel);
    child.start(program, QStringList(marker) + QCoreApplication::arguments().mid(1));
    child.waitForFinished(-1);
    removeStage(stage.path());
    return child.exitStatus() == QProcess::NormalExit ? child.exitCode() : 125;
}

} // namespace support
