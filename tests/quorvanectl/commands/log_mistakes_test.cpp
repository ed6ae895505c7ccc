// log in the hands of somebody in a hurry: files that are no log, and times that are none.
#include "desk.h"
#include "support/staged_main.h"

#include <QCoreApplication>

using support::Desk;
using support::FileTree;
using support::refusal;

namespace {

const QString command = "quorvanectl log";
const QString seeHelp = "; see quorvanectl log --help";

FileTree engineersFiles() {
    return {{"launcher.log", "2026-11-20 06:00:00 [task check_1] started kind=check\n"},
            {"picture.png", "PNG\n"},
            {"broken.zip", "no archive"},
            {"folder/", ""}};
}

} // namespace

class LogMistakesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void refusals_data();
    void refusals();
    void odditiesThatAreRead_data();
    void odditiesThatAreRead();
};

void LogMistakesTest::refusals_data() {
    support::addRefusals();
    refusal("a file that is missing", "", "@ none.log", "none.log: no such file");
    refusal("a folder", "", "@ folder", "folder: is a folder");
    refusal("a pipe, which is not waited for", "mkfifo pipe", "@ pipe", "pipe: is no plain file");
    refusal("somebody else's", "chmod 755 .; chmod 000 launcher.log", "$user @ launcher.log",
            "launcher.log: Permission denied");
    refusal("a picture", "", "@ picture.png", "picture.png: is no launch log");
    refusal("a picture, in JSON", "", "@ picture.png --format json",
            "picture.png: is no launch log");
    refusal("an archive that is none", "", "@ broken.zip", "broken.zip: Not a zip archive");
    refusal("an archive of something else", "python3 -m zipfile -c s.zip picture.png", "@ s.zip",
            "s.zip: holds no launcher.log");
    refusal("an archive that was packed once more, with its folder",
            "mkdir support; mv launcher.log support; python3 -m zipfile -c s.zip support",
            "@ s.zip", "s.zip: holds no launcher.log");
    refusal("an archive with a folder of that name",
            "rm launcher.log; mkdir launcher.log; python3 -m zipfile -c s.zip launcher.log",
            "@ s.zip", "s.zip: holds no launcher.log");
    refusal("an archive whose log is none",
            "mv picture.png launcher.log; python3 -m zipfile -c s.zip launcher.log", "@ s.zip",
            "s.zip: is no launch log");
    refusal(
        "an archive that leads out of its folder",
        "python3 -c \"import zipfile; zipfile.ZipFile('s.zip', 'w').writestr('../launcher.log', "
        "'x')\"",
        "@ s.zip", "s.zip: unsafe zip entry: ../launcher.log");
    refusal("an archive that was copied in part",
            "python3 -m zipfile -c s.zip launcher.log; truncate -s -9 s.zip", "@ s.zip",
            "s.zip: Not a zip archive");
    refusal("an archive with another name's end", "python3 -m zipfile -c s.log launcher.log",
            "@ s.log", "s.log: is no launch log");
    refusal("a log in the two bytes of another system", "iconv -t UTF-16 launcher.log >wide.log",
            "@ wide.log", "wide.log: is no launch log");
    refusal("a log whose times were taken away", "cut -c21- launcher.log >short.log", "@ short.log",
            "short.log: is no launch log");
    refusal("a PC on which the launcher never ran", "", "XDG_DATA_HOME=$PWD/none @",
            "@here/none/Quorvane/launcher.log: no such file");
    refusal("a link that leads nowhere", "ln -s none link", "@ link", "link: no such file");
    refusal("a name that steers a terminal", "", "@ \"$(printf 'a\\033[2J')\"",
            "a\\x1b[2J: no such file");
    refusal("two logs", "", "@ launcher.log launcher.log", "log takes [FILE]" + seeHelp);
    refusal("a number that is none", "", "@ launcher.log --last many",
            "many: is neither a number above 0 nor \"all\"");
    refusal("no start at all", "", "@ launcher.log --last 0",
            "0: is neither a number above 0 nor \"all\"");
    refusal("a number below it", "", "@ launcher.log --last -1",
            "-1: is neither a number above 0 nor \"all\"");
    refusal("half a start", "", "@ launcher.log --last 1.5",
            "1.5: is neither a number above 0 nor \"all\"");
    refusal("all, written large", "", "@ launcher.log --last ALL",
            "ALL: is neither a number above 0 nor \"all\"");
    refusal("a variable of a script that is not set", "", "@ launcher.log --last \"$N\"",
            "--last is given an empty value" + seeHelp);
    refusal("another one", "", "@ launcher.log --since \"$DAY\"",
            "--since is given an empty value" + seeHelp);
    refusal("a time in two words", "", "@ launcher.log --since 2026-11-20 06:00:00",
            "log takes [FILE]" + seeHelp);
    refusal("a time without seconds", "", "@ launcher.log --since '2026-11-20 06:00'",
            "2026-11-20 06:00: is no time such as 2026-11-20 or \"2026-11-20 06:00:00\"");
    refusal("a time as programs write it", "", "@ launcher.log --since 2026-11-20T06:00:00",
            "2026-11-20T06:00:00: is no time such as 2026-11-20 or \"2026-11-20 06:00:00\"");
    refusal("a language in another form", "", "@ launcher.log --locale zh-CN",
            "zh-CN: the languages are en and zh_CN");
    refusal("a time that is none", "", "@ launcher.log --since yesterday",
            "yesterday: is no time such as 2026-11-20 or \"2026-11-20 06:00:00\"");
    refusal("a day that is none", "", "@ launcher.log --since 2026-02-30",
            "2026-02-30: is no time such as 2026-11-20 or \"2026-11-20 06:00:00\"");
    refusal("a language that it has not", "", "@ launcher.log --locale zh",
            "zh: the languages are en and zh_CN");
    refusal("a format that it has not", "", "@ launcher.log --format sarif",
            "no format 'sarif'; there are: text, json");
}

void LogMistakesTest::refusals() {
    support::expectRefusal(Desk(command, engineersFiles()));
}

void LogMistakesTest::odditiesThatAreRead_data() {
    support::addOutcomes();
    const QString told = "2026-11-20 06:00:00\n  Took: search without an end\n"
                         "  Ended: while updates were looked for; the line was not started\n\n"
                         "1 starts in the log, 1 told, 0 of these failed.\n";
    support::outcome("an empty log", ": >empty", "@ empty",
                     {0, "0 starts in the log, 0 told, 0 of these failed.\n"});
    support::outcome("a name with a blank and Chinese", "mv launcher.log '日 志'", "@ '日 志'",
                     {0, told});
    support::outcome("a link", "ln -s launcher.log link", "@ link", {0, told});
    support::outcome("one that was cut at its beginning",
                     "{ echo '(the last 9 bytes of 99)'; cat launcher.log; } >cut", "@ cut",
                     {0, QString(told).replace("1 starts", "The beginning of the log was left "
                                                           "out.\n1 starts")});
    support::outcome("the same in Chinese",
                     "{ echo '(the last 9 bytes of 99)'; cat launcher.log; } >cut",
                     "@ cut --locale zh_CN",
                     {0, "2026-11-20 06:00:00\n  用时: 查找更新 没有结束\n  结束: "
                         "在查找更新时结束，产线程序没有启动\n\n日志的开头部分已省略。\n日志中有 1 "
                         "次启动，显示 1 次，其中失败 0 次。\n"});
    support::outcome("an archive whose name is in capitals",
                     "python3 -m zipfile -c S.ZIP launcher.log", "@ S.ZIP", {0, told});
    support::outcome("one that an editor wrote, with its mark",
                     "{ printf '\\357\\273\\277'; cat launcher.log; } >marked", "@ marked",
                     {0, told});
    support::outcome("bytes that are no text", "printf '\\377\\376\\n' >>launcher.log",
                     "@ launcher.log", {0, told});
    support::outcome("more starts than there are", "", "@ launcher.log --last 99999999999",
                     {0, told});
    support::outcome("none since then", "", "@ launcher.log --since 2026-11-20\\ 06:00:01",
                     {0, "1 starts in the log, 0 told, 0 of these failed.\n"});
    support::outcome("none that failed", "", "@ launcher.log --failures",
                     {0, "1 starts in the log, 0 told, 0 of these failed.\n"});
    // What is not told does not count: whoever asks about the last start gets its answer.
    support::outcome("a failure before the last start",
                     "printf '2026-11-19 06:00:00 Project file not found: p\\nLog: l\\n' >old; "
                     "cat old launcher.log >both",
                     "@ both --last 1", {0, QString(told).replace("1 starts", "2 starts")});
    support::outcome("an empty log in JSON, of a name with blanks and quotes",
                     ": >'a  b\"\\\\c　d'", "@ 'a  b\"\\\\c　d' --format json",
                     {0,
                      "{\n    \"log\": \"a  b\\\"\\\\\\\\c　d\",\n    \"starts\": [\n    ],\n    "
                      "\"startsFailed\": 0,\n    \"startsInLog\": 0,\n    \"startsTold\": 0\n}\n"});
    support::outcome("a line that steers a terminal",
                     R"(printf '2026-11-20 06:00:01 Precheck warnings:\n\033[2J\n' >>launcher.log)",
                     "@ launcher.log",
                     {0, QString(told).replace("started\n\n", "started\n  06:00:01  Precheck "
                                                              "warnings:\n            \\x1b[2J\n"
                                                              "            When: The project can "
                                                              "run, with warnings.\n            "
                                                              "Tells: Only the log tells. The "
                                                              "texts are under \"Findings about a "
                                                              "project\".\n\n")});
}

void LogMistakesTest::odditiesThatAreRead() {
    support::expectOutcome(Desk(command, engineersFiles()));
}

QUORVANE_TEST_MAIN(QCoreApplication, LogMistakesTest)
#include "log_mistakes_test.moc"
