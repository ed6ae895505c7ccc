// What a hand or a script types wrongly: one line says so, the status is 2, and nothing is touched.
#include "quorvanectl/entry/command_line.h"

#include "quorvanectl/commands/commands.h"
#include "run_tool.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

using support::Answer;
using support::runTool;

class WrongUsageTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void lines_data();
    void lines();
    void everyCommandCountsItsArguments_data();
    void everyCommandCountsItsArguments();
    void everyCommandRefusesAnOptionThatIsNone_data();
    void everyCommandRefusesAnOptionThatIsNone();
    void helpGoesBeforeWhatIsWrong_data();
    void helpGoesBeforeWhatIsWrong();
};

void WrongUsageTest::lines_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("line");
    const QString see = "; see quorvanectl ";
    QTest::newRow("an empty word") << QStringList{""} << "no command ''" + see + "--help";
    QTest::newRow("a blank") << QStringList{" "} << "no command ' '" + see + "--help";
    QTest::newRow("two words in one")
        << QStringList{"script check"} << "no command 'script check'" + see + "--help";
    QTest::newRow("a family in large letters")
        << QStringList{"Script", "check"} << "no command 'Script'" + see + "--help";
    QTest::newRow("the end of options alone")
        << QStringList{"--"} << "no command '--'" + see + "--help";
    QTest::newRow("the end of options before a command")
        << QStringList{"--", "script", "check"} << "no command '--'" + see + "--help";
    QTest::newRow("an option before its command")
        << QStringList{"--format", "json", "script", "check"}
        << "no command '--format'" + see + "--help";
    QTest::newRow("help without its dashes")
        << QStringList{"help"} << "no command 'help'" + see + "--help";
    QTest::newRow("a place for another text")
        << QStringList{"%1", "%2"} << "no command '%1'" + see + "--help";
    QTest::newRow("a line feed and a terminal's order")
        << QStringList{"a\n\x1b[2J"} << "no command 'a\\n\\x1b[2J'" + see + "--help";
    QTest::newRow("an empty command")
        << QStringList{"script", ""} << "no command 'script '" + see + "script --help";
    QTest::newRow("an option in a command's place")
        << QStringList{"script", "--format", "json"}
        << "no command 'script --format'" + see + "script --help";
    QTest::newRow("a command of another family")
        << QStringList{"script", "verify"} << "no command 'script verify'" + see + "script --help";
    QTest::newRow("a command in large letters")
        << QStringList{"script", "CHECK"} << "no command 'script CHECK'" + see + "script --help";

    const QString ofCheck = see + "script check --help";
    const QString dashes =
        ": an option has two dashes, and a name that begins with a dash goes behind --";
    QTest::newRow("an option with one dash is many letters")
        << QStringList{"script", "check", "a.ys", "-format"}
        << "Unknown options: f, o, r, m, a, t" + dashes + ofCheck;
    QTest::newRow("the beginning of an option")
        << QStringList{"script", "check", "a.ys", "--form"} << "Unknown option 'form'" + ofCheck;
    QTest::newRow("an option of another command")
        << QStringList{"script", "check", "a.ys", "--force"} << "Unknown option 'force'" + ofCheck;
    QTest::newRow("a value for an option that takes none")
        << QStringList{"update", "canonical", "m.json", "--force=yes"}
        << "Unexpected value after '--force'" + see + "update canonical --help";
    QTest::newRow("a file's name that begins with a dash")
        << QStringList{"script", "check", "-a.ys"}
        << "Unknown options: a, ., y, s" + dashes + ofCheck;
    QTest::newRow("a folder's name that begins with two dashes")
        << QStringList{"update", "stick", "--site", "stick"}
        << "Unknown option 'site'" + dashes + see + "update stick --help";
    QTest::newRow("behind an option that is none, a name behind the end of options")
        << QStringList{"script", "check", "--form", "--", "-f"}
        << "Unknown option 'form'" + ofCheck;
    QTest::newRow("an option with an empty value")
        << QStringList{"script", "check", "a.ys", "--format="}
        << "--format is given an empty value" + ofCheck;
    QTest::newRow("an option with a value and an empty one")
        << QStringList{"update", "manifest", "--plugin", "a,1.0,b", "--plugin", ""}
        << "--plugin is given an empty value" + see + "update manifest --help";
    const QString missing = "Missing value after '--out'" + see + "update canonical --help";
    QTest::newRow("another option in the place of a value")
        << QStringList{"update", "canonical", "m.json", "--out", "--force"} << missing;
    QTest::newRow("the same option once more")
        << QStringList{"update", "canonical", "--out", "--out", "c.bin", "m.json"} << missing;
    QTest::newRow("an option with its value in the place of one")
        << QStringList{"script", "check", "a.ys", "--library", "--format=json"}
        << "Missing value after '--library'" + ofCheck;
    QTest::newRow("the short option in the place of a value")
        << QStringList{"update", "canonical", "m.json", "--out", "-h"} << missing;
    QTest::newRow("the end of options in the place of a value")
        << QStringList{"update", "canonical", "--out", "--", "m.json"} << missing;
    QTest::newRow("an option's name as a value, in one word")
        << QStringList{"update", "canonical", "m.json", "--out=--force"} << "m.json: no such file";
    QTest::newRow("a value that only begins as an option does")
        << QStringList{"update", "canonical", "m.json", "--out", "--forces"}
        << "m.json: no such file";
    QTest::newRow("a value below zero") << QStringList{"keys", "new", "k", "--passphrase-fd", "-1"}
                                        << "--passphrase-fd -1: is no number of a descriptor";
    QTest::newRow("an option as a name behind the end of options")
        << QStringList{"update", "canonical", "--", "--out", "--force"}
        << "update canonical takes manifest.json" + see + "update canonical --help";
    QTest::newRow("the same behind the end of options")
        << QStringList{"script", "check", "--library", "none.ini", "--", "-a.ys"}
        << "none.ini: no such file";
    QTest::newRow("options behind the end of options are names")
        << QStringList{"script", "check", "--", "a.ys", "--help"}
        << "script check takes FILE.ys" + ofCheck;
    QTest::newRow("an empty file's name")
        << QStringList{"script", "check", "", "--library", "none.ini"} << "none.ini: no such file";
    QTest::newRow("an empty file's name is an argument")
        << QStringList{"script", "check", "", ""} << "script check takes FILE.ys" + ofCheck;
    QTest::newRow("a file's name with a line feed")
        << QStringList{"update", "canonical", "a\nb.json"} << "a\\nb.json: no such file";
    QTest::newRow("the input as a file's name")
        << QStringList{"update", "canonical", "-"} << "-: no such file";
}

void WrongUsageTest::lines() {
    QFETCH(QStringList, arguments);
    QFETCH(QString, line);
    const QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkdir("--site"));
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(folder.path()));
    const Answer answer = runTool(arguments);
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(answer.err, "quorvanectl: " + line + "\n");
    QCOMPARE(answer.out, QString());
    QCOMPARE(answer.status, 2);
}

void WrongUsageTest::everyCommandCountsItsArguments_data() {
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("wanted");
    for (const ctl::Command &command : ctl::allCommands())
        QTest::newRow(qPrintable(ctl::titleOf(command)))
            << ctl::titleOf(command) << command.arguments;
}

// One too few, where one must be, and one too many, where not any number may be.
void WrongUsageTest::everyCommandCountsItsArguments() {
    QFETCH(QString, title);
    QFETCH(QString, wanted);
    const QStringList words = wanted.split(' ', Qt::SkipEmptyParts);
    const QString line = "quorvanectl: " + title + " takes " +
                         (wanted.isEmpty() ? "no arguments" : wanted) + "; see quorvanectl " +
                         title + " --help\n";
    const QStringList command = title.split(' ');
    QStringList given;
    for (int i = 0; i < words.size() + 1; ++i)
        given.append("none" + QString::number(i));
    if (!words.isEmpty() && !words.first().startsWith('['))
        QCOMPARE(runTool(command + given.mid(0, words.size() - 1)).err, line);
    if (!wanted.contains("..."))
        QCOMPARE(runTool(command + given).err, line);
}

void WrongUsageTest::everyCommandRefusesAnOptionThatIsNone_data() {
    everyCommandCountsItsArguments_data();
}

void WrongUsageTest::everyCommandRefusesAnOptionThatIsNone() {
    QFETCH(QString, title);
    const Answer answer = runTool(title.split(' ') + QStringList("--no-such\noption"));
    QCOMPARE(answer.err, QStringLiteral("quorvanectl: Unknown option 'no-such\\noption'; see "
                                        "quorvanectl %1 --help\n")
                             .arg(title));
    QCOMPARE(answer.out, QString());
    QCOMPARE(answer.status, 2);
}

void WrongUsageTest::helpGoesBeforeWhatIsWrong_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("no argument") << QStringList{"script", "check", "--help"};
    QTest::newRow("too many") << QStringList{"script", "check", "a", "b", "-h"};
    QTest::newRow("a format that is none") << QStringList{"script", "check", "--format", "x", "-h"};
    QTest::newRow("a file that is none") << QStringList{"script", "check", "none.ys", "--help"};
}

void WrongUsageTest::helpGoesBeforeWhatIsWrong() {
    QFETCH(QStringList, arguments);
    const Answer answer = runTool(arguments);
    QCOMPARE(answer.err, QString());
    QVERIFY(answer.out.startsWith("Usage: quorvanectl script check [options] FILE.ys\n"));
    QCOMPARE(answer.status, 0);
}

QUORVANE_TEST_MAIN(QCoreApplication, WrongUsageTest)
#include "wrong_usage_test.moc"
