// Ctrl-C in the middle of writing leaves the folder as it was.
#include "run_tool.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QProcess>

#include <csignal>

using support::ProjectFolder;

namespace {

// A project that takes seconds to pack.
void layOut(const ProjectFolder &folder) {
    folder.write("line/line.yslib", R"({"schemaVersion": 1,
"project": {"name": "line", "displayName": "Line", "createdAt": "2026-01-01"},
"scripts": [{"id": "main", "path": "main.ys", "role": "main"}],
"tasks": {"main": {"entryScriptId": "main"}}})");
    folder.write("line/main.ys", "");
    folder.writeZeros("line/model.bin", qint64(4) << 30);
    QDir(folder.path("")).mkdir("out");
}

// Whether a process has written some of a file that lies in `folder`, whatever its name yet.
bool isWriting(qint64 process, const QString &folder) {
    const QDir files(QString("/proc/%1/fd").arg(process));
    for (const QFileInfo &file :
         files.entryInfoList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System)) {
        const QString target = file.symLinkTarget();
        if (target.startsWith(folder) && QFileInfo(file.filePath()).size() > 4096)
            return true;
    }
    return false;
}

QStringList contentsOf(const QString &folder) {
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System |
                                  QDir::NoDotAndDotDot);
}

} // namespace

class InterruptionTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void nothingHalfWrittenIsLeft_data();
    void nothingHalfWrittenIsLeft();
    void hashingIsLeftOff();
};

void InterruptionTest::nothingHalfWrittenIsLeft_data() {
    QTest::addColumn<int>("signal");
    QTest::addColumn<bool>("over"); // a file that is there

    QTest::newRow("Ctrl-C") << SIGINT << false;
    QTest::newRow("Ctrl-C while a file is overwritten") << SIGINT << true;
    QTest::newRow("a request to end") << SIGTERM << false;
}

void InterruptionTest::nothingHalfWrittenIsLeft() {
    QFETCH(int, signal);
    QFETCH(bool, over);
    const ProjectFolder folder;
    layOut(folder);
    if (over)
        folder.write("out/line-1.0.0.zip", "old");
    const QStringList before = contentsOf(folder.path("out"));
    QProcess pack;
    pack.setWorkingDirectory(folder.path(""));
    pack.start(QUORVANE_TOOL,
               {"update", "pack", "line", "--version", "1.0.0", "--out", "out", "--force"});
    QVERIFY(pack.waitForStarted());
    const qint64 process = pack.processId();
    QTRY_VERIFY_WITH_TIMEOUT(isWriting(process, folder.path("out/")), 30000);
    QCOMPARE(kill(pid_t(process), signal), 0);
    QVERIFY(pack.waitForFinished(30000));
    QVERIFY(pack.exitStatus() != QProcess::NormalExit || pack.exitCode() == 2);
    QCOMPARE(contentsOf(folder.path("out")), before);
    if (over)
        QCOMPARE(folder.read("out/line-1.0.0.zip"), QByteArray("old"));
}

namespace {

bool hasOpen(qint64 process, const QString &path) {
    const QDir files(QString("/proc/%1/fd").arg(process));
    for (const QFileInfo &file :
         files.entryInfoList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System)) {
        if (file.symLinkTarget() == path)
            return true;
    }
    return false;
}

} // namespace

// The file would take minutes.
void InterruptionTest::hashingIsLeftOff() {
    const ProjectFolder folder;
    folder.writeZeros("data/model.bin", qint64(256) << 30);
    folder.write("pc/bin/config/release_version.json", "{}");
    QDir(folder.path("")).mkdir("out");
    QProcess collect;
    collect.setWorkingDirectory(folder.path(""));
    collect.start(QUORVANE_TOOL, {"support", "collect", "--out", "out/s.zip", "--install", "pc",
                                  "--data", "data"});
    QVERIFY(collect.waitForStarted());
    const qint64 process = collect.processId();
    QTRY_VERIFY_WITH_TIMEOUT(hasOpen(process, folder.path("data/model.bin")), 30000);
    QCOMPARE(kill(pid_t(process), SIGINT), 0);
    QVERIFY(collect.waitForFinished(30000));
    QCOMPARE(collect.exitStatus(), QProcess::NormalExit);
    QCOMPARE(collect.exitCode(), 2);
    QVERIFY(
        collect.readAllStandardError().contains("out/s.zip: interrupted, nothing was written\n"));
    QCOMPARE(contentsOf(folder.path("out")), QStringList());
}

QUORVANE_TEST_MAIN(QCoreApplication, InterruptionTest)
#include "interruption_test.moc"
