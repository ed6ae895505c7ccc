// log: what it prints in both languages, which starts it chooses, and how much memory a long log takes.
#include "run_tool.h"
#include "support/file_tree.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

using support::Answer;
using support::runTool;

namespace {

const QByteArray threeStarts = R"(2026-11-19 06:00:00 [task check_1] started kind=check
2026-11-19 06:00:03 Online updates are not available (network request timed out). You can update from a USB stick instead: QuorvanerUpdate/manifest.json.
2026-11-19 06:00:03 [task check_1] phase=check elapsedMs=0 none
2026-11-19 06:00:05 Precheck passed for /p/line 3.yslib
2026-11-19 06:00:05 Launching /q/LineRunner.exe --parent-pid=7 --nonce=0 --project=/p/line 3.yslib --locale=en
2026-11-19 15:02:00 Target exited with code 0. Log: /d/launcher.log
2026-11-20 06:00:00 [task check_2] started kind=check
2026-11-20 06:00:01 [task check_2] phase=check elapsedMs=0 found
2026-11-20 06:00:09 [task apply_3] started kind=apply
2026-11-21 06:00:00 [task check_4] started kind=check
2026-11-21 06:00:01 更新被拒绝：signature is empty（source=/s/manifest.json）。将继续使用当前版本。
2026-11-21 06:00:01 [task check_4] phase=check elapsedMs=0 none
)";

} // namespace

class LogCommandTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void inEnglish();
    void inChinese();
    void whichStarts_data();
    void whichStarts();
    void everyLineIfAsked();
    void theLastTwentyWithoutAnOption();
    void anArchiveForSupport();
    void aLongLogTakesLittleMemory();

private:
    QString path() const { return folder.filePath("launcher.log"); }
    void write(const QByteArray &log) const {
        support::writeTree(folder.path(), {{"launcher.log", log}});
    }

    const QTemporaryDir folder;
};

void LogCommandTest::init() {
    write(threeStarts);
}

void LogCommandTest::inEnglish() {
    const Answer answer = runTool({"log", path()});
    QCOMPARE(answer.err, QString());
    QCOMPARE(answer.status, 1);
    QCOMPARE(answer.out, QString(R"(2026-11-19 06:00:00
  Project: /p/line 3.yslib
  Took: search 3 s, line 9 h 1 min
  Ended: the line ended, code 0
  06:00:03  Online updates are not available (network request timed out). You can update from a USB stick instead: QuorvanerUpdate/manifest.json.
            When: The server did not answer as it should.
            Tells: `network request timed out` is one of the texts under "The network" below.
            - network request timed out
              Cause: The server did not answer within 3 seconds (the manifest) or 120 (a package).
              Remedy: Check cable, proxy, firewall; update from a stick meanwhile.

2026-11-20 06:00:00
  Answered: updated
  Took: search 1 s, update without an end
  Ended: in the middle of an update: it was broken off, or is still running. Look at the project with quorvanectl project recover

2026-11-21 06:00:00
  Took: search 1 s
  Ended: before the line was started
  06:00:01  The update was refused: signature is empty (from /s/manifest.json). Do not use it; what is installed stays in use.
            When: A manifest failed its verification.
            Tells: `signature is empty` is one of the texts under "Signatures and hashes" below.
            - signature is empty
              Cause: The manifest was never signed.
              Remedy: Tell the publisher: `quorvanectl update sign`.

3 starts in the log, 3 told, 2 of these failed.
)"));
}

void LogCommandTest::inChinese() {
    const Answer answer = runTool({"log", path(), "--locale", "zh_CN", "--last", "1"});
    QCOMPARE(answer.status, 1);
    QCOMPARE(answer.out, QString(R"(2026-11-21 06:00:00
  用时: 查找更新 1 秒
  结束: 在启动产线程序之前结束
  06:00:01  更新被拒绝：signature is empty（source=/s/manifest.json）。将继续使用当前版本。
            何时: 清单没有通过验证。
            说明: `signature is empty` 是下文“签名与哈希”中的一条文字。
            - signature is empty
              原因: 清单没有签名。
              处理: 告知发布方：`quorvanectl update sign`。

日志中有 3 次启动，显示 1 次，其中失败 1 次。
)"));
}

void LogCommandTest::whichStarts_data() {
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("days");
    QTest::addColumn<int>("status");
    const auto row = [](const QString &options, const QString &days, int status) {
        QTest::newRow(qPrintable(options)) << options.split('_') << days << status;
    };
    row("--last_1", "21", 1);
    row("--last_2", "20 21", 1);
    row("--last_all", "19 20 21", 1);
    row("--failures", "20 21", 1);
    row("--failures_--last_1", "21", 1);
    row("--since_2026-11-20", "20 21", 1);
    row("--since_2026-11-19 15:02:00", "19 20 21", 1);
    row("--since_2026-11-19 15:02:01", "20 21", 1);
    row("--since_2026-11-22", "", 0);
    row("--since_2026-11-20_--last_1", "21", 1);
}

void LogCommandTest::whichStarts() {
    QFETCH(QStringList, options);
    QFETCH(int, status);
    const Answer answer = runTool(QStringList{"log", path(), "--format", "json"} + options);
    const QJsonObject json = QJsonDocument::fromJson(answer.out.toUtf8()).object();
    QStringList days;
    for (const auto &start : json["starts"].toArray())
        days.append(start.toObject()["begin"].toString().mid(8, 2));
    QTEST(days.join(' '), "days");
    QCOMPARE(json["startsInLog"].toInt(), 3);
    QCOMPARE(json["startsTold"].toInt(), days.size());
    QCOMPARE(json["log"].toString(), path());
    QCOMPARE(answer.status, status);
}

void LogCommandTest::everyLineIfAsked() {
    const Answer answer = runTool({"log", path(), "--lines", "--last", "all"});
    QCOMPARE(answer.out.count("\n  06:0") + answer.out.count("\n  15:0"), 12);
}

void LogCommandTest::theLastTwentyWithoutAnOption() {
    QByteArray log;
    for (int i = 10; i < 40; ++i)
        log += "2026-11-20 06:00:" + QByteArray::number(i) + " [task check_1] started kind=check\n";
    write(log);
    const Answer answer = runTool({"log", path()});
    QVERIFY(answer.out.startsWith("2026-11-20 06:00:20\n"));
    QVERIFY(answer.out.endsWith("\n30 starts in the log, 20 told, 0 of these failed.\n"));
    QCOMPARE(answer.status, 0);
    QVERIFY(runTool({"log", path(), "--since", "2026-11-20"}).out.contains("30 told"));
}

void LogCommandTest::anArchiveForSupport() {
    QVERIFY(QDir(folder.path()).mkpath("pc/bin/config"));
    const Answer made = support::runProgram(
        {"support", "collect", "--out", "s.zip", "--install", "pc", "--data", "."}, folder.path());
    if (made.status != 0)
        QSKIP("no archive for support on this system");
    const Answer answer = runTool({"log", folder.filePath("s.zip")});
    QCOMPARE(answer.out, runTool({"log", path()}).out);
}

// What it keeps does not grow with the log: 100 MB in a data segment of 64 MiB.
void LogCommandTest::aLongLogTakesLittleMemory() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    QSKIP("a sanitizer has a memory of its own");
#endif
#ifdef Q_OS_WIN
    QSKIP("no shell there limits the memory of a program");
#endif
    QFile file(path());
    QVERIFY(file.open(QIODevice::WriteOnly));
    const QByteArray block = threeStarts.repeated(1000);
    while (file.size() < 100000000)
        QCOMPARE(file.write(block), qint64(block.size()));
    file.close();
    const Answer answer = support::runLine("ulimit -d 65536 && quorvanectl log launcher.log "
                                           "--failures 2>/dev/null",
                                           folder.path());
    QCOMPARE(answer.status, 1);
    QVERIFY2(answer.out.endsWith(" starts in the log, 20 told, 20 of these failed.\n"),
             qPrintable(answer.out.right(200)));
}

QUORVANE_TEST_MAIN(QCoreApplication, LogCommandTest)
#include "log_test.moc"
