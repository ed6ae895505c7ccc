// Words as one types them in bash, up to the key that completes the last one.
#include "quorvanectl/commands/commands.h"
#include "run_tool.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace {

// What bash offers behind these words; the last one is being typed.
QStringList offered(const QStringList &words, const support::ProjectFolder &folder) {
    const QString tool = QFileInfo(QUORVANE_TOOL).fileName();
    QString line =
        "source " QUORVANE_SOURCE_TREE "/tools/quorvanectl/completion.bash; COMP_WORDS=(";
    for (const QString &word : QStringList(tool) + words)
        line += "'" + word + "' ";
    const QString previous = words.size() > 1 ? words[words.size() - 2] : tool;
    line += QString("); COMP_CWORD=%1; _quorvanectl %2 '%3' '%4'; printf '%5' \"${COMPREPLY[@]}\"")
                .arg(QString::number(words.size()), tool, words.last(), previous, "%s\\n");
    const support::Answer answer =
        support::runLine("exec bash -c \"$LINE\"", folder.path(""), {{"LINE", line}});
    if (!answer.err.isEmpty())
        qWarning("%s", qPrintable(answer.err));
    QStringList lines = answer.out.split('\n', Qt::SkipEmptyParts);
    lines.sort();
    return lines;
}

} // namespace

class CompletionTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void words_data();
    void words();
    void everyCommandIsOffered();
};

void CompletionTest::words_data() {
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<QStringList>("offers");

    const auto row = [](const char *name, const QStringList &words, const QString &offers) {
        QTest::newRow(name) << words << offers.split(' ', Qt::SkipEmptyParts);
    };
    row("a family", {"pro"}, "project");
    row("an option of the program", {"--v"}, "--version");
    row("a command", {"script", "t"}, "tokens tree");
    row("all commands of a family", {"script", ""}, "--help check tokens tree");
    row("a command that is not there", {"script", "x"}, "");
    row("a family that is not there", {"scirpt", ""}, "--help");
    row("an option", {"project", "check", "--co"}, "--core-plugin");
    row("all options of a command", {"script", "check", "-"}, "--format --help --library --strict");
    row("the formats of a command", {"project", "check", "--format", ""}, "json sarif text");
    row("a format", {"script", "check", "--format", "j"}, "json");
    row("a file", {"project", "check", "a"}, "a.yslib");
    row("a file with a blank", {"project", "check", "li"}, "line");
    row("a command without a family", {"lo"}, "log");
    row("a command without a family and without arguments", {"doctor", "--of"}, "--offline");
    row("a family of two words", {"la"}, "language-server");
    row("its options", {"language-server", "--"}, "--help --library --stdio");
    row("its option", {"log", "--fai"}, "--failures");
    row("an option behind its file", {"log", "a.yslib", "--fai"}, "--failures");
    row("its formats", {"log", "--format", ""}, "json text");
    row("its file", {"log", "a"}, "a.yslib");
    row("the value of an option", {"script", "check", "--library", "a"}, "a.yslib");
}

void CompletionTest::words() {
    QFETCH(QStringList, words);
    const support::ProjectFolder folder;
    folder.write("a.yslib", "");
    QVERIFY(QDir(folder.path("")).mkdir("line"));
    QTEST(offered(words, folder), "offers");
}

void CompletionTest::everyCommandIsOffered() {
    const support::ProjectFolder folder;
    for (const ctl::Command &command : ctl::allCommands()) {
        QVERIFY(offered({command.family}, folder).contains(command.family));
        QVERIFY2(command.name.isEmpty() ||
                     offered({command.family, ""}, folder).contains(command.name),
                 qPrintable(command.name));
    }
}

QUORVANE_TEST_MAIN(QCoreApplication, CompletionTest)
#include "completion_test.moc"
