// What is told of a start in words, in both languages: its ending, answer, parts, gaps and versions.
#include "quorvanectl/log/start_text.h"

#include "support/staged_main.h"
#include "written_log.h"

#include <QCoreApplication>

using ctl::Language;
using support::logOf;
using support::startsIn;

namespace {

// The lines about the first start that have this label.
QStringList told(const QByteArray &log, const QString &label, Language language) {
    QStringList texts;
    for (const ctl::Labelled &line : ctl::linesOf(ctl::judge(startsIn(log).first()), language)) {
        if (line.label == label)
            texts.append(line.text);
    }
    return texts;
}

void addTexts() {
    QTest::addColumn<QByteArray>("log");
    QTest::addColumn<QStringList>("english");
    QTest::addColumn<QStringList>("chinese");
}

void row(const char *name, const QStringList &lines, const QStringList &english,
         const QStringList &chinese) {
    QTest::newRow(name) << logOf(lines) << english << chinese;
}

void compare(const QString &label, const QString &chineseLabel) {
    QFETCH(QByteArray, log);
    QTEST(told(log, label, Language::English), "english");
    QTEST(told(log, chineseLabel, Language::Chinese), "chinese");
}

const QString search = "[task check_1] started kind=check";
const QString found = "[task check_1] phase=check elapsedMs=0 found";
const QString offer = "A genuine update is available (from /s/m.json).\nIt can update: "
                      "Project -> 1.2.0, Runtime -> 2.0";
const QString passed = "Precheck passed for /p/a.yslib";
const QString launch = "Launching /q/LineRunner.exe --project=/p/a.yslib --locale=en";
const QString exited = "Target exited with code 0. Log: /l";
const QString apply = "[task apply_2] started kind=apply";
const QString applied = "[task apply_2] phase=apply elapsedMs=0 Project updated to 1.2.0";
const QString installers = "[task setup_3] started kind=setup";

} // namespace

class StartTextTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void endings_data();
    void endings() { compare("Ended", "结束"); }
    void answers_data();
    void answers() { compare("Answered", "回答"); }
    void parts_data();
    void parts() { compare("Took", "用时"); }
    void gaps_data();
    void gaps() { compare("Gap", "空缺"); }
    void aLongSilenceBefore();
    void versions_data();
    void versions() { compare("Versions", "版本"); }
    void offers_data();
    void offers() { compare("Offered", "可更新"); }
    void startedInstallers_data();
    void startedInstallers() { compare("Installers", "安装程序"); }
    void projects_data();
    void projects() { compare("Project", "项目"); }
};

void StartTextTest::endings_data() {
    addTexts();
    row("ended", {launch, exited}, {"the line ended, code 0"}, {"产线程序已结束，代码 0"});
    row("crashed", {launch, "Target exited with code -5（进程崩溃）. Log: /l"},
        {"the line ended, code -5: it crashed"}, {"产线程序已结束，代码 -5：进程崩溃"});
    row("ended from outside",
        {launch, "Target exited with code 1（可能被外部终止，如任务管理器）. Log: /l"},
        {"the line ended, code 1"}, {"产线程序已结束，代码 1"});
    row("running", {launch},
        {"the line was started; the log tells no end, so it is running or was cut off"},
        {"产线程序已启动；日志中没有它的结束，它正在运行或被突然中断"});
    row("never ended", {launch, launch},
        {"the line was started and its end was never logged: the power failed, or the launcher "
         "was ended by force"},
        {"产线程序已启动，但日志中没有它的结束：断电，或者启动器被强制结束"});
    row("cannot run", {"Project file not found: p\nLog: l"}, {"the project cannot run"},
        {"项目无法运行"});
    row("not started", {launch, "Failed to start /q: x"}, {"the line could not be started"},
        {"产线程序无法启动"});
    row("in the middle of an update", {apply},
        {"in the middle of an update: it was broken off, or is still running. Look at the project "
         "with quorvanectl project recover"},
        {"更新进行到一半：被中断，或者仍在进行。请用 quorvanectl project recover 检查项目"});
    row("a failed update", {apply, "[hash] Update zip hash failed: x"},
        {"the update failed, and the line was not started"}, {"更新失败，产线程序没有启动"});
    row("a cancelled update", {apply, "更新任务已取消。"},
        {"the update was cancelled, and the line was not started"},
        {"更新已取消，产线程序没有启动"});
    row("in the search", {search}, {"while updates were looked for; the line was not started"},
        {"在查找更新时结束，产线程序没有启动"});
    row("before the line", {search, found}, {"before the line was started"},
        {"在启动产线程序之前结束"});
}

void StartTextTest::answers_data() {
    addTexts();
    row("nothing was offered", {search, launch}, {}, {});
    row("none", {offer, found}, {"no answer in the log"}, {"日志中没有回答"});
    row("started without it", {offer, found, launch}, {"the line was started without it"},
        {"未更新，直接启动"});
    row("updated", {offer, found, apply, applied}, {"updated"}, {"已更新"});
    row("updated without an offer in the log", {apply, applied, launch}, {"updated"}, {"已更新"});
    row("installers", {offer, found, installers, launch}, {"installers alone"}, {"只运行安装程序"});
    row("skipped", {offer, found, "Online update skipped fingerprint=a components=[b] source=c"},
        {"this version is skipped"}, {"跳过此版本"});
    row("offered again after it was skipped",
        {offer, "Online update skipped fingerprint=a components=[b] source=c", offer},
        {"no answer in the log"}, {"日志中没有回答"});
}

void StartTextTest::parts_data() {
    addTexts();
    const auto lasting = [](int seconds) {
        return QStringList{launch, QString("+%1 ").arg(seconds - 1) + exited};
    };
    row("none", {passed}, {}, {});
    row("no second", lasting(0), {"line 0 s"}, {"产线程序 0 秒"});
    row("59 seconds", lasting(59), {"line 59 s"}, {"产线程序 59 秒"});
    row("a minute", lasting(60), {"line 1 min 0 s"}, {"产线程序 1 分 0 秒"});
    row("just no hour", lasting(3599), {"line 59 min 59 s"}, {"产线程序 59 分 59 秒"});
    row("an hour", lasting(3600), {"line 1 h 0 min"}, {"产线程序 1 小时 0 分"});
    row("just no day", lasting(86399), {"line 23 h 59 min"}, {"产线程序 23 小时 59 分"});
    row("a day", lasting(86400), {"line 1 d 0 h"}, {"产线程序 1 天 0 小时"});
    row("a month", lasting(31 * 86400 + 7200), {"line 31 d 2 h"}, {"产线程序 31 天 2 小时"});
    row("all of them",
        {search, found, apply, applied, "[task apply_2] phase=setup elapsedMs=0", launch},
        {"search 1 s, update 1 s, installers 1 s, line without an end"},
        {"查找更新 1 秒, 更新 1 秒, 安装程序 1 秒, 产线程序 没有结束"});
    row("installers alone", {installers, "[task setup_3] phase=setup elapsedMs=0"},
        {"installers 1 s"}, {"安装程序 1 秒"});
    row("a failed update ends it", {apply, "+4 [hash] Update zip hash failed: x"}, {"update 5 s"},
        {"更新 5 秒"});
    row("so does a cancelled one", {apply, "+4 更新任务已取消。"}, {"update 5 s"}, {"更新 5 秒"});
    row("and a start that fails", {launch, "+4 Failed to start /q: x"}, {"line 5 s"},
        {"产线程序 5 秒"});
    row("a cancelled search and another one",
        {search, "[task check_1] cancel requested by user", search, found},
        {"search without an end, search 1 s"}, {"查找更新 没有结束, 查找更新 1 秒"});
    row("an end without a beginning", {found, exited}, {}, {});
}

void StartTextTest::gaps_data() {
    addTexts();
    row("just none", {search, "+899 " + found}, {}, {});
    row("a silence", {search, "+900 " + found},
        {"nothing was logged from 2026-11-20 06:00:00 to 2026-11-20 06:15:01 (15 min 1 s)"},
        {"从 2026-11-20 06:00:00 到 2026-11-20 06:15:01 没有任何记录（15 分 1 秒）"});
    row("a silence after the line", {launch, exited, "+900 x"},
        {"nothing was logged from 2026-11-20 06:00:01 to 2026-11-20 06:15:02 (15 min 1 s)"},
        {"从 2026-11-20 06:00:01 到 2026-11-20 06:15:02 没有任何记录（15 分 1 秒）"});
    row("two programs", {search, "+-3 " + found}, {}, {});
    row("the clock", {search, "+-4 " + found},
        {"the clock went back from 2026-11-20 06:00:00 to 2026-11-20 05:59:57 (3 s)"},
        {"时钟从 2026-11-20 06:00:00 倒退到 2026-11-20 05:59:57（3 秒）"});
    row("the clock while the line runs", {launch, "+-3601 " + exited},
        {"the clock went back from 2026-11-20 06:00:00 to 2026-11-20 05:00:00 (1 h 0 min)"},
        {"时钟从 2026-11-20 06:00:00 倒退到 2026-11-20 05:00:00（1 小时 0 分）"});
    QTest::newRow("zero bytes") << QByteArray(12, '\0') + logOf({search})
                                << QStringList{"12 zero bytes before 2026-11-20 06:00:00: the "
                                               "power failed while the log was written"}
                                << QStringList{"2026-11-20 06:00:00 之前有 12 "
                                               "个零字节：写入日志时断电"};
    QStringList many;
    for (int i = 0; i < 203; ++i)
        many.append("x");
    row("lines left out", many,
        {"3 lines between 2026-11-20 06:01:39 and 2026-11-20 06:01:43 are left out here"},
        {"此处省略了 2026-11-20 06:01:39 与 2026-11-20 06:01:43 之间的 3 行"});
}

// Beside the first start there is nothing before.
void StartTextTest::aLongSilenceBefore() {
    const auto gapsOf = [](int seconds, Language language) {
        const auto starts =
            startsIn(logOf({search, launch, exited, QString("+%1 ").arg(seconds - 1) + search}));
        QStringList texts;
        for (const ctl::Labelled &line : ctl::linesOf(ctl::judge(starts.last()), language)) {
            if (line.label == "Gap" || line.label == "空缺")
                texts.append(line.text);
        }
        return texts;
    };
    constexpr int week = 7 * 86400;
    QCOMPARE(gapsOf(week, Language::English), QStringList());
    QCOMPARE(gapsOf(week + 1, Language::English),
             QStringList("nothing was logged before it since 2026-11-20 06:00:02 (7 d 0 h)"));
    QCOMPARE(gapsOf(week + 1, Language::Chinese),
             QStringList("此前自 2026-11-20 06:00:02 起没有任何记录（7 天 0 小时）"));
    QCOMPARE(gapsOf(-2, Language::English),
             QStringList()); // two programs, whose lines may be out of order
    QCOMPARE(gapsOf(-3, Language::English),
             QStringList("the clock went back from 2026-11-20 06:00:02 to 2026-11-20 05:59:59 (3 "
                         "s)"));
}

void StartTextTest::versions_data() {
    addTexts();
    const QString compared = "Project version check: local=%1 remote=%2 compare=-1 path=/p/a.yslib";
    row("both", {compared.arg("1.0", "1.2")}, {"project 1.0, on offer 1.2"},
        {"项目 1.0，可用 1.2"});
    row("none of its own", {compared.arg("", "1.2")}, {"1.2"}, {"1.2"});
    row("the last ones that were compared",
        {compared.arg("1.0", "1.2"), compared.arg("1.2", "1.2")}, {"project 1.2, on offer 1.2"},
        {"项目 1.2，可用 1.2"});
    row("not readable", {"Project version check: local version unreadable, path=/p"}, {}, {});
}

void StartTextTest::offers_data() {
    addTexts();
    row("two", {offer}, {"Project -> 1.2.0, Runtime -> 2.0 (from /s/m.json)"},
        {"Project -> 1.2.0, Runtime -> 2.0（来源：/s/m.json）"});
    row("in Chinese, behind another line",
        {"已验证的更新可用（来源：http://h/m）。\n当前项目版本：1.0（/p/"
         "a.yslib）\n可更新项：Project "
         "-> 新版本"},
        {"Project -> 新版本 (from http://h/m)"}, {"Project -> 新版本（来源：http://h/m）"});
    row("no item", {"A genuine update is available (from /s/m.json).\nx"}, {}, {});
    row("none any more", {offer, "A genuine update is available (from /s/m.json).\nx"}, {}, {});
    row("the last one counts",
        {offer, "A genuine update is available (from /t).\nIt: Project -> 3"},
        {"Project -> 3 (from /t)"}, {"Project -> 3（来源：/t）"});
}

void StartTextTest::startedInstallers_data() {
    addTexts();
    row("two",
        {"The Runtime installer has been started: /c/r.exe (follow its window; it records "
         "the new version when it is done)",
         "Editor 安装包已自动启动：/c/e.exe（组件版本将在安装程序完成后写入本地配置）"},
        {"Runtime, Editor"}, {"Runtime, Editor"});
    row("one that did not pass its check",
        {"Runtime 安装包校验失败（signature is empty），将继续使用当前版本。"}, {}, {});
}

void StartTextTest::projects_data() {
    addTexts();
    row("started", {passed, "Launching /q --project=/p/b c.yslib --locale=en --reload-models"},
        {"/p/b c.yslib"}, {"/p/b c.yslib"});
    row("started, of an older line", {"Launching /q --project=/p/b c.yslib"}, {"/p/b c.yslib"},
        {"/p/b c.yslib"});
    row("started without one", {passed, "Launching /q --locale=en"}, {"/p/a.yslib"},
        {"/p/a.yslib"});
    row("checked", {passed}, {"/p/a.yslib"}, {"/p/a.yslib"});
    row("gone", {"Project file not found: /p/gone.yslib\nLog: /l"}, {"/p/gone.yslib"},
        {"/p/gone.yslib"});
    row("with errors, which do not name it", {"项目预检失败：\n[Error] 缺少 tasks 对象\n日志：/l"},
        {}, {});
    row("with no version", {"Project version check: local version unreadable, path=/p/c.yslib"},
        {"/p/c.yslib"}, {"/p/c.yslib"});
}

QUORVANE_TEST_MAIN(QCoreApplication, StartTextTest)
#include "start_text_test.moc"
