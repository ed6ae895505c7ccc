// What people do wrong with the server that only editors start.
#include "run_tool.h"
#include "support/staged_main.h"
#include "terminal.h"

#include <QCoreApplication>

class LanguageServerMistakesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void startedByHand();
    void whatIsPipedIntoItIsNoMessage();
    void aFileToCheck();
};

void LanguageServerMistakesTest::startedByHand() {
    support::Terminal terminal(QUORVANE_TOOL, {"language-server"});
    QCOMPARE(terminal.wait(), 2);
    QCOMPARE(terminal.screen(),
             QByteArray("quorvanectl: language-server is started by an editor, which speaks the "
                        "Language Server Protocol with it over standard input and output\r\n"));
}

void LanguageServerMistakesTest::whatIsPipedIntoItIsNoMessage() {
    const QString line = "printf 'int a;\\n' | quorvanectl language-server --library "
                         "'" QUORVANE_SOURCE_TREE "/resources/config/FunctionLib.ini'";
    const support::Answer answer = support::runLine(line, support::stageRoot());
    QCOMPARE(answer.status, 2);
    QCOMPARE(answer.out, QString());
    QCOMPARE(answer.err, QString("quorvanectl: standard input: a line of a header has no colon\n"));
}

void LanguageServerMistakesTest::aFileToCheck() {
    const support::Answer answer = support::runTool({"language-server", "main.ys"});
    QCOMPARE(answer.status, 2);
    QCOMPARE(answer.err, QString("quorvanectl: language-server takes no arguments; see quorvanectl "
                                 "language-server --help\n"));
}

QUORVANE_TEST_MAIN(QCoreApplication, LanguageServerMistakesTest)

#include "language_server_mistakes_test.moc"
