// The command line: one line and one status for each wrong usage, help that shows every command,
// and output that cannot be written.
#include "quorvanectl/entry/command_line.h"

#include "quorvanectl/commands/commands.h"
#include "run_tool.h"
#include "support/platform.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QSet>

using support::Answer;
using support::runTool;

class CommandLineTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void wrongUsage_data();
    void wrongUsage();
    void theHelpShowsEveryCommandWithItsExample();
    void theHelpOfAFamilyShowsItsCommandsAlone();
    void theHelpOfACommand();
    void everyCommandIsToldWell();
    void outputThatCannotBeWritten_data();
    void outputThatCannotBeWritten();
    void theVersion();
};

void CommandLineTest::wrongUsage_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("line");

    const auto row = [](const char *name, const QString &arguments, const QString &line) {
        QTest::newRow(name) << arguments.split(' ', Qt::SkipEmptyParts) << line;
    };
    row("nothing", "", "no command given; see quorvanectl --help");
    row("an unknown family", "proiect check", "no command 'proiect'; see quorvanectl --help");
    row("an unknown option of the program", "--wrong",
        "no command '--wrong'; see quorvanectl --help");
    row("a family alone", "script", "no command of 'script' given; see quorvanectl script --help");
    row("an unknown command", "script chekc",
        "no command 'script chekc'; see quorvanectl script --help");
    row("an unknown option", "script check a.ys --wrong",
        "Unknown option 'wrong'; see quorvanectl script check --help");
    row("an option without its value", "script check a.ys --library",
        "Missing value after '--library'; see quorvanectl script check --help");
    row("too few arguments", "script check",
        "script check takes FILE.ys; see quorvanectl script check --help");
    row("too many arguments", "script check a.ys b.ys",
        "script check takes FILE.ys; see quorvanectl script check --help");
    row("a format that is not there", "script check a.ys --format xml",
        "no format 'xml'; there are: text, json");
    row("a line feed", "script chekc\nall",
        "no command 'script chekc\\nall'; see quorvanectl script --help");
}

void CommandLineTest::wrongUsage() {
    QFETCH(QStringList, arguments);
    QFETCH(QString, line);
    const Answer answer = runTool(arguments);
    QCOMPARE(answer.err, "quorvanectl: " + line + "\n");
    QCOMPARE(answer.out, QString());
    QCOMPARE(answer.status, int(ctl::Refused));
}

namespace {

const QString helpEnd =
    "\n`quorvanectl FAMILY COMMAND --help` tells the options of a command.\n"
    "Exit status: 0 clean or warnings, 1 errors, 2 wrong usage or a file that cannot be used.\n";

} // namespace

void CommandLineTest::theHelpShowsEveryCommandWithItsExample() {
    const Answer answer = runTool({"--help"});
    QCOMPARE(answer.status, int(ctl::Clean));
    QCOMPARE(answer.err, QString());
    for (const ctl::Command &command : ctl::allCommands()) {
        const QString title = (ctl::titleOf(command) + ' ' + command.arguments).trimmed();
        QVERIFY2(answer.out.contains("\n" + title + "\n    " + command.summary + "\n    $ " +
                                     command.example + "\n"),
                 qPrintable(title));
    }
    QVERIFY(answer.out.startsWith("Usage: quorvanectl FAMILY COMMAND [options] ARGUMENTS\n\n"
                                  "Checks projects and scripts, makes and explains updates, "
                                  "helps where something went wrong.\n"));
    QVERIFY(answer.out.endsWith(helpEnd));
    QCOMPARE(runTool({"-h"}).out, answer.out);
}

void CommandLineTest::theHelpOfAFamilyShowsItsCommandsAlone() {
    for (const ctl::Command &shown : ctl::allCommands()) {
        if (shown.name.isEmpty())
            continue; // it has no family
        const Answer answer = runTool({shown.family, "--help"});
        QCOMPARE(answer.status, int(ctl::Clean));
        QVERIFY(answer.out.startsWith("Usage: quorvanectl " + shown.family +
                                      " COMMAND [options] ARGUMENTS\n"));
        QVERIFY(answer.out.endsWith(helpEnd));
        for (const ctl::Command &command : ctl::allCommands())
            QCOMPARE(answer.out.contains("$ " + command.example + "\n"),
                     command.family == shown.family);
    }
}

void CommandLineTest::theHelpOfACommand() {
    const Answer answer = runTool({"script", "check", "--help"});
    QCOMPARE(answer.status, int(ctl::Clean));
    QCOMPARE(answer.out, QString(R"(Usage: quorvanectl script check [options] FILE.ys

Shows the syntax error of a script, with its line.

Options:
  --library <FunctionLib.ini>  Reads the script language's words from this
                               file, not from the one of the installation.
  --format <name>              Form of the output: text, json (default: text).
  --strict                     Counts what a script leaves open as an error, in
                               the exit status.
  -h, --help                   Shows this help.

Example:
  $ quorvanectl script check main.ys
)"));
}

void CommandLineTest::everyCommandIsToldWell() {
    QSet<QString> titles;
    for (const ctl::Command &command : ctl::allCommands()) {
        const QString title = ctl::titleOf(command);
        QVERIFY2(!titles.contains(title), qPrintable(title));
        titles.insert(title);
        QVERIFY2(command.example.startsWith("quorvanectl " + title), qPrintable(title));
        QVERIFY2(command.summary.endsWith('.') && command.summary[0].isUpper(), qPrintable(title));
        const Answer help = runTool(title.split(' ') + QStringList("--help"));
        QCOMPARE(help.status, int(ctl::Clean));
        QVERIFY2(help.out.contains("$ " + command.example + "\n"), qPrintable(title));
        QVERIFY2(help.out.contains("\nOptions:\n"), qPrintable(title));
    }
}

void CommandLineTest::outputThatCannotBeWritten_data() {
    QTest::addColumn<QString>("streams");
    QTest::addColumn<QString>("line");
    QTest::newRow("a full disk") << ">/dev/full"
                                 << "standard output: No space left on device";
    QTest::newRow("closed") << ">&-"
                            << "standard output: Bad file descriptor";
}

void CommandLineTest::outputThatCannotBeWritten() {
    if (support::onWindows)
        QSKIP("it takes a shell to close a stream");
    QFETCH(QString, streams);
    QFETCH(QString, line);
    const Answer answer = support::runLine("quorvanectl --help " + streams, ".");
    QCOMPARE(answer.status, int(ctl::Refused));
    QCOMPARE(answer.err, "quorvanectl: " + line + "\n");
}

void CommandLineTest::theVersion() {
    QCoreApplication::setApplicationVersion("1.2.3");
    QCOMPARE(runTool({"--version"}).out, QString("quorvanectl 1.2.3\n"));
}

QUORVANE_TEST_MAIN(QCoreApplication, CommandLineTest)
#include "command_line_test.moc"
