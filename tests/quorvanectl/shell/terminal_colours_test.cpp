// Colours are for a terminal that shows them, and only for one.
#include "run_tool.h"
#include "support/staged_main.h"
#include "terminal.h"

#include <QCoreApplication>

class TerminalColoursTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theTerminalDecides_data();
    void theTerminalDecides();
    void noColourGoesIntoAFile();
};

void TerminalColoursTest::theTerminalDecides_data() {
    QTest::addColumn<QByteArray>("terminal");
    QTest::addColumn<QByteArray>("noColour");
    QTest::addColumn<bool>("coloured");
    QTest::newRow("one that shows colours") << QByteArray("xterm") << QByteArray() << true;
    QTest::newRow("one that nobody has named") << QByteArray() << QByteArray() << false;
    QTest::newRow("one that shows none") << QByteArray("dumb") << QByteArray() << false;
    QTest::newRow("a user who wants none") << QByteArray("xterm") << QByteArray("1") << false;
    QTest::newRow("a user who wants none, whatever the word")
        << QByteArray("xterm") << QByteArray("0") << false;
}

void TerminalColoursTest::theTerminalDecides() {
    QFETCH(QByteArray, terminal);
    QFETCH(QByteArray, noColour);
    QFETCH(bool, coloured);
    qputenv("TERM", terminal);
    qputenv("NO_COLOR", noColour);
    support::Terminal shown(QUORVANE_TOOL, {"script", "--help"});
    QCOMPARE(shown.wait(), 0);
    QCOMPARE(shown.screen().contains("\x1b[1mscript check FILE.ys\x1b[0m"), coloured);
    QCOMPARE(shown.screen().contains('\x1b'), coloured);
    QVERIFY(shown.screen().contains("script check FILE.ys"));
}

void TerminalColoursTest::noColourGoesIntoAFile() {
    const support::Answer answer =
        support::runLine("quorvanectl script --help", ".", {{"TERM", "xterm"}});
    QCOMPARE(answer.status, 0);
    QVERIFY(!answer.out.contains('\x1b'));
}

QUORVANE_TEST_MAIN(QCoreApplication, TerminalColoursTest)
#include "terminal_colours_test.moc"
