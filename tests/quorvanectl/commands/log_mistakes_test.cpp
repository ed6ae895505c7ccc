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
    refusal("two logs", "", "@ launcher.log launcher.log", "log takes [FILE]" + seeHelp);
    refusal("a number that is none", "", "@ launcher.log --last many",
            "many: is neither a number above 0 nor \"all\"");
    refusal("no start at all", "", "@ launcher.log --last 0",
            "0: is neither a number above 0 nor \"all\"");
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
