// How the lines of a log are cut into starts, and how each of them ended.
#include "quorvanectl/log/start_verdict.h"

#include "support/staged_main.h"
#include "written_log.h"

#include <QCoreApplication>
#include <QJsonArray>

using support::logOf;
using support::startsOf;

namespace {

QStringList endingsOf(const QVector<QJsonObject> &starts) {
    QStringList endings;
    for (const QJsonObject &start : starts)
        endings.append(start["ending"].toString() + (start["failed"].toBool() ? "!" : ""));
    return endings;
}

const QString search = "[task check_1] started kind=check";
const QString none = "[task check_1] phase=check elapsedMs=0 none";
const QString found = "[task check_1] phase=check elapsedMs=0 found";
const QString cancel = "[task check_1] cancel requested by user";
const QString offer = "A genuine update is available (from /s/manifest.json).\nIt can update: "
                      "Project -> 1.2.0, Runtime -> 2.0";
const QString passed = "Precheck passed for /p/a b.yslib";
const QString launch =
    "Launching /q/LineRunner.exe --parent-pid=7 --nonce=0 --project=/p/a b.yslib --locale=en";
const QString exited = "Target exited with code 0. Log: /d/launcher.log";
const QString apply = "[task apply_2] started kind=apply";
const QString applied = "[task apply_2] phase=apply elapsedMs=0 Project updated to 1.2.0 in 9 ms. "
                        "Backup: /d/b";
const QString setUp = "[task apply_2] phase=setup elapsedMs=0";
const QString installers = "[task setup_3] started kind=setup";

} // namespace

class StartVerdictTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void endings_data();
    void endings();
    void whatAStartTells();
    void parts();
    void gaps_data();
    void gaps();
    void linesOfAnyForm_data();
    void linesOfAnyForm();
    void veryManyLinesAreLeftOut();
    void reasonsWithinReasons();
};

void StartVerdictTest::endings_data() {
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QString>("endings");
    const auto row = [](const char *name, const QStringList &lines, const QString &endings) {
        QTest::newRow(name) << lines << endings;
    };
    const QStringList start{search, none, passed, launch};
    row("the line ended", start + QStringList{exited}, "exited");
    row("with a code", start + QStringList{"Target exited with code 3. Log: l"}, "exited!");
    row("the log ends while the line runs", start, "running");
    row("its end is not there and the next start is", start + start + QStringList{exited},
        "never-ended! exited");
    row("started once more by hand", start + QStringList{exited, passed, launch, exited},
        "exited exited");
    row("launched twice", start + QStringList{launch, exited}, "never-ended! exited");
    row("F8 while the line runs, and its end", start + QStringList{search, none, exited},
        "exited closed");
    row("a search after the check", {passed, search, none, launch, exited}, "exited");
    row("two searches, the first one cancelled", {search, cancel, none, search, none, launch},
        "running");
    row("another search after a closed launcher", {search, none, search, none, launch},
        "closed running");
    row("cut off in the search", {search, search, none, launch}, "search-broken-off running");
    row("the project cannot run", {search, none, "项目预检失败：\nx\n日志：l"}, "cannot-run!");
    row("the project is gone", {search, none, "Project file not found: /p\nLog: l"}, "cannot-run!");
    row("mended after that, and started",
        {search, none, "Project file not found: /p\nLog: l", passed, launch, exited},
        "cannot-run! exited");
    row("the target is missing",
        {passed, "LineRunner.exe not found in /q.\nProduction layout requires Runtime (R2). "
                 "Install Runtime beside Launcher."},
        "not-started!");
    row("the target does not start", {passed, launch, "Failed to start /q: Permission denied"},
        "not-started!");
    const QStringList offered{search, offer, found, apply};
    row("an update", offered + QStringList{applied, "项目更新已完成。\nx", setUp, launch, exited},
        "exited");
    row("broken off", offered + QStringList{search, none, launch}, "update-broken-off! running");
    row("broken off, and nothing since", offered, "update-broken-off!");
    row("broken off among the installers", offered + QStringList{applied}, "update-broken-off!");
    row("failed", offered + QStringList{"[hash] Update zip hash failed: x"}, "update-failed!");
    row("failed, and the line was started",
        offered + QStringList{"[hash] Update zip hash failed: x", passed, launch, exited},
        "exited!");
    row("cancelled", offered + QStringList{"更新任务已取消。"}, "update-cancelled");
    row("installers cancelled",
        {search, offer, found, installers, "[task setup_3] cancel requested by user"}, "closed");
    row("installers broken off", {search, offer, found, installers}, "update-broken-off!");
    row("refused, and the line was started",
        {search, "更新被拒绝：signature is empty（source=s）。将继续使用当前版本。", none, passed,
         launch, exited},
        "exited!");
    row("settings before the search",
        {search, none, launch, exited, "Settings are not available: d is held by another program.",
         search, none},
        "exited closed");
}

void StartVerdictTest::endings() {
    QFETCH(QStringList, lines);
    QTEST(endingsOf(startsOf(logOf(lines))).join(' '), "endings");
}

void StartVerdictTest::whatAStartTells() {
    const QJsonObject start = startsOf(
        logOf({search, "Project version check: local=1.0 remote=1.2.0 compare=-1 path=/p/a b.yslib",
               offer, found, passed, launch,
               "Target exited with code -1073741819（进程崩溃）. Log: l"}))[0];
    QCOMPARE(start["project"].toString(), QString("/p/a b.yslib"));
    QCOMPARE(start["installed"].toString(), QString("1.0"));
    QCOMPARE(start["onOffer"].toString(), QString("1.2.0"));
    QCOMPARE(start["source"].toString(), QString("/s/manifest.json"));
    QCOMPARE(start["offered"].toArray(), (QJsonArray{"Project -> 1.2.0", "Runtime -> 2.0"}));
    QCOMPARE(start["answer"].toString(), QString("started-only"));
    QCOMPARE(start["exitCode"].toString(), QString("-1073741819"));
    QVERIFY(start["crashed"].toBool());
    const auto answer = [](const QStringList &lines) {
        return startsOf(logOf(lines))[0]["answer"].toString();
    };
    QCOMPARE(answer({search, none}), QString("none"));
    QCOMPARE(answer({search, offer, found}), QString("unknown"));
    QCOMPARE(answer({search, offer, found, apply}), QString("updated"));
    QCOMPARE(answer({search, offer, found, installers}), QString("installers"));
    QCOMPARE(answer({search, offer, found,
                     "Online update skipped fingerprint=a components=[b] source=c", launch}),
             QString("skipped"));
}

void StartVerdictTest::parts() {
    const QJsonArray parts = startsOf(logOf({search, "+4 " + found, apply, "+9 " + applied, setUp,
                                             launch, "+3599 " + exited}))[0]["parts"]
                                 .toArray();
    QStringList told;
    for (const QJsonValue &part : parts)
        told.append(part.toObject()["part"].toString() + ' ' +
                    QString::number(part.toObject()["seconds"].toInt()));
    QCOMPARE(told.join(", "), QString("search 5, update 10, setup 1, target 3600"));
    const QJsonArray open = startsOf(logOf({search}))[0]["parts"].toArray();
    QVERIFY(open[0].toObject()["seconds"].isNull());
}

void StartVerdictTest::gaps_data() {
    QTest::addColumn<QByteArray>("log");
    QTest::addColumn<QString>("gaps");
    const auto row = [](const char *name, const QByteArray &log, const QString &gaps) {
        QTest::newRow(name) << log << gaps;
    };
    row("none", logOf({search, "+898 " + none}), "");
    row("a quarter of an hour and more", logOf({search, "+900 " + none}), "silence 0");
    row("not while the line runs", logOf({launch, "+99999 " + exited}), "");
    row("a week before a start", logOf({search, none, launch, exited, "+604800 " + search}),
        "silence-before 0");
    row("the clock goes back", logOf({search, "+-9 " + none}), "clock-back 0");
    row("two programs within two seconds", logOf({search, "+-3 " + none}), "");
    row("zero bytes", QByteArray(5, '\0') + logOf({search}), "zeros 5");
}

void StartVerdictTest::gaps() {
    QFETCH(QByteArray, log);
    const QJsonArray gaps = startsOf(log).last()["gaps"].toArray();
    QStringList told;
    for (const QJsonValue &gap : gaps)
        told.append(gap.toObject()["kind"].toString() + ' ' +
                    QString::number(gap.toObject()["count"].toInt()));
    QTEST(told.join(", "), "gaps");
}

void StartVerdictTest::linesOfAnyForm_data() {
    QTest::addColumn<QByteArray>("log");
    QTest::addColumn<QStringList>("texts");
    const QByteArray time = "2026-11-20 06:00:00 ";
    const auto row = [](const char *name, const QByteArray &log, const QStringList &texts) {
        QTest::newRow(name) << log << texts;
    };
    row("nothing", "", {});
    row("no line with a time", "a\nb\n", {});
    row("no line feed at the end", time + "a", {"a"});
    row("line feeds of Windows", time + "a\r\n" + time + "b\r\n", {"a", "b"});
    row("an empty text", time + "\n" + time + "b\n", {"", "b"});
    row("further lines", time + "a\n\nb\n" + time + "c\n", {"a\n\nb", "c"});
    row("a time that is none", time + "a\n2026-13-20 06:00:00 b\n", {"a\n2026-13-20 06:00:00 b"});
    row("lines before the first time", "(the last 9 bytes of 99)\n" + time + "a\n", {"a"});
    row("a long line is cut", time + QByteArray(9000, 'a') + "\n" + time + "b\n",
        {QString(8192, 'a'), "b"});
    row("a line longer than a MiB", time + QByteArray(3 << 20, 'a') + "\n" + time + "b\n",
        {QString(8192, 'a'), "b"});
    row("no log within the first MiB", QByteArray(3 << 20, '\n') + time + "b\n", {});
}

void StartVerdictTest::linesOfAnyForm() {
    QFETCH(QByteArray, log);
    QStringList texts;
    for (const QJsonObject &start : startsOf(log)) {
        for (const auto &line : start["lines"].toArray())
            texts.append(line.toObject()["text"].toString());
    }
    QTEST(texts, "texts");
}

void StartVerdictTest::veryManyLinesAreLeftOut() {
    QStringList lines;
    for (int i = 0; i < 250; ++i)
        lines.append(QString::number(i));
    const QJsonObject start = startsOf(logOf(lines))[0];
    const QJsonArray kept = start["lines"].toArray();
    QCOMPARE(kept.size(), 200);
    QCOMPARE(kept[99].toObject()["text"].toString(), QString("99"));
    QCOMPARE(kept[100].toObject()["text"].toString(), QString("150"));
    QCOMPARE(start["gaps"].toArray()[0].toObject()["count"].toInt(), 50);
}

void StartVerdictTest::reasonsWithinReasons() {
    const QJsonArray lines =
        startsOf(logOf({apply, "[network] Unable to resolve update zip: empty response body (HTTP "
                               "200) from http://a"}))[0]["lines"]
            .toArray();
    const QJsonObject line = lines[1].toObject();
    QCOMPARE(line["cause"].toString(),
             QString("The package could not be read or downloaded; the reason follows."));
    QCOMPARE(line["level"].toString(), QString("failure"));
    const QJsonObject reason = line["reasons"].toArray()[0].toObject();
    QCOMPARE(reason["text"].toString(), QString("empty response body (HTTP 200) from http://a"));
    QCOMPARE(reason["remedy"].toString(), QString("Look at the file on the server."));
    const QJsonArray findings =
        startsOf(logOf({"项目预检失败：\n[Error] scripts[0].path: 引用的文件不存在：a.ys\n"
                        "[Error] 缺少 tasks 对象\n日志：l"}))[0]["lines"]
            .toArray()[0]
            .toObject()["reasons"]
            .toArray();
    QCOMPARE(findings.size(), 2);
    QCOMPARE(findings[0].toObject()["cause"].toString(),
             QString("A file that the project names is missing."));
    QCOMPARE(findings[1].toObject()["cause"].toString(), QString("The key `tasks` is missing."));
}

QUORVANE_TEST_MAIN(QCoreApplication, StartVerdictTest)
#include "start_verdict_test.moc"
