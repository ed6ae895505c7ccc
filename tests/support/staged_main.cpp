#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QProcess>
#include <QScreen>
#include <QTemporaryDir>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace support {
namespace {

const char marker[] = "--staged";

// A hard link costs nothing; another volume needs a copy.
bool placeProgram(const QString &from, const QString &to) {
    std::error_code failed;
    std::filesystem::create_hard_link(from.toStdU16String(), to.toStdU16String(), failed);
    return !failed || QFile::copy(from, to);
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
    return child.exitStatus() == QProcess::NormalExit ? child.exitCode() : 125;
}

} // namespace support
