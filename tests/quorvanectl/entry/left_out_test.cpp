// The commands that Windows has not: asked for, each is refused in words that say so.
#include "run_tool.h"
#include "support/staged_main.h"

#include <QCoreApplication>

using support::Answer;

class LeftOutTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aCommandIsRefused_data();
    void aCommandIsRefused();
    void theHelpSaysSo_data();
    void theHelpSaysSo();
};

void LeftOutTest::aCommandIsRefused_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("line");
    const auto row = [](const QString &arguments, const QString &line) {
        QTest::newRow(qPrintable(arguments)) << arguments.split(' ') << line;
    };
    row("update pack demo --version 1.2.0 --out packages",
        "there is no command 'update pack' on Windows; see quorvanectl update --help");
    row("update pack --help",
        "there is no command 'update pack' on Windows; see quorvanectl update --help");
    row("update sign manifest.json --key private.pem",
        "there is no command 'update sign' on Windows; see quorvanectl update --help");
    row("keys new keys", "there is no command 'keys' on Windows; see quorvanectl --help");
    row("keys", "there is no command 'keys' on Windows; see quorvanectl --help");
    row("support collect --out support.zip",
        "there is no command 'support collect' on Windows; see quorvanectl --help");
    row("doctor", "there is no command 'doctor' on Windows; see quorvanectl --help");
    row("update pakc", "no command 'update pakc'; see quorvanectl update --help");
    row("keyz new", "no command 'keyz'; see quorvanectl --help");
}

void LeftOutTest::aCommandIsRefused() {
    QFETCH(QStringList, arguments);
    QFETCH(QString, line);
    const Answer answer = support::runProgram(arguments, support::stageRoot());
    QCOMPARE(answer.err, "quorvanectl: " + line + '\n');
    QCOMPARE(answer.out, QString());
    QCOMPARE(answer.status, 2);
}

void LeftOutTest::theHelpSaysSo_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("the program's") << QStringList{"--help"};
    QTest::newRow("a family's") << QStringList{"update", "--help"};
}

void LeftOutTest::theHelpSaysSo() {
    QFETCH(QStringList, arguments);
    const Answer answer = support::runProgram(arguments, support::stageRoot());
    QCOMPARE(answer.status, 0);
    QVERIFY2(answer.out.endsWith("\nOn Windows there are no commands `update pack`, `update "
                                 "sign`, `keys`, `support collect` and `doctor`.\n"),
             qPrintable(answer.out));
    for (const char *command :
         {"update pack", "update sign", "keys new", "support collect", "doctor"})
        QVERIFY(!answer.out.contains(QString("$ quorvanectl ") + command));
}

QUORVANE_TEST_MAIN(QCoreApplication, LeftOutTest)
#include "left_out_test.moc"
