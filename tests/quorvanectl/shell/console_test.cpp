// What reaches a console, and what of a foreign text must not.
#include "quorvanectl/shell/console.h"

#include "quorvanectl/shell/command.h"
#include "run_tool.h"
#include "support/file_tree.h"
#include "support/platform.h"
#include "support/staged_main.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QTemporaryDir>

using ctl::Ink;
using support::FileTree;
Q_DECLARE_METATYPE(Ink)

namespace {

struct Buffers {
    QBuffer out;
    QBuffer err;
    ctl::Console console;

    Buffers() {
        out.open(QIODevice::WriteOnly);
        err.open(QIODevice::WriteOnly);
        console.out = &out;
        console.err = &err;
    }
};

} // namespace

class ConsoleTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void inksOfTheirOwn_data();
    void inksOfTheirOwn();
    void controlCharactersAreSpelledOut_data();
    void controlCharactersAreSpelledOut();
    void harmlessTextKeepsItsColumns_data();
    void harmlessTextKeepsItsColumns();
    void resultsAndRemarksGoApart();
    void aRemarkIsOneLineWhateverItQuotes();
    void aRefusalSaysWhyAndGivesItsStatus();
    void halfACharacterIsWrittenAsASign();
    void aForeignNameSteersNoTerminal();
    void aClosedStreamDoesNotSpoilAFile_data();
    void aClosedStreamDoesNotSpoilAFile();
};

void ConsoleTest::inksOfTheirOwn_data() {
    QTest::addColumn<Ink>("ink");
    QTest::addColumn<QString>("coloured");
    QTest::newRow("an error is red") << Ink::Error << "\x1b[31ma\x1b[0m";
    QTest::newRow("a warning is yellow") << Ink::Warning << "\x1b[33ma\x1b[0m";
    QTest::newRow("what is good is green") << Ink::Good << "\x1b[32ma\x1b[0m";
    QTest::newRow("a heading is bold") << Ink::Heading << "\x1b[1ma\x1b[0m";
    QTest::newRow("a caret is cyan") << Ink::Caret << "\x1b[36ma\x1b[0m";
}

void ConsoleTest::inksOfTheirOwn() {
    QFETCH(Ink, ink);
    ctl::Console console;
    QCOMPARE(ctl::inked(console, ink, "a"), QString("a")); // where no colours are shown
    console.colour = true;
    QTEST(ctl::inked(console, ink, "a"), "coloured");
}

void ConsoleTest::controlCharactersAreSpelledOut_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("spelled");
    QTest::newRow("nothing stays nothing") << ""
                                           << "";
    QTest::newRow("a plain name stays") << "a b.ys"
                                        << "a b.ys";
    QTest::newRow("Chinese stays") << QStringLiteral("产线三") << QStringLiteral("产线三");
    QTest::newRow("a character of two units stays")
        << QString::fromUtf8("\xF0\x9F\x98\x80") << QString::fromUtf8("\xF0\x9F\x98\x80");
    QTest::newRow("a backslash stays one") << "a\\nb"
                                           << "a\\nb";
    QTest::newRow("a blank that is no control character stays")
        << QString(QChar(0xa0)) << QString(QChar(0xa0));
    QTest::newRow("a line feed") << "a\nb"
                                 << "a\\nb";
    QTest::newRow("a line feed at the end") << "a\n"
                                            << "a\\n";
    QTest::newRow("a carriage return, which would write over the line") << "a\rb"
                                                                        << "a\\x0db";
    QTest::newRow("a tab") << "a\tb"
                           << "a\\x09b";
    QTest::newRow("the beginning of a terminal's order") << "\x1b[2J"
                                                         << "\\x1b[2J";
    QTest::newRow("the same in one character") << QString(QChar(0x9b)) + "2J"
                                               << "\\x9b2J";
    QTest::newRow("a bell") << "\a"
                            << "\\x07";
    QTest::newRow("a NUL") << QString(QChar(0)) + "x"
                           << "\\x00x";
    QTest::newRow("a delete") << "\x7f"
                              << "\\x7f";
    QTest::newRow("a mark that turns the name around")
        << QString::fromUtf8("line\xE2\x80\xAEslay.exe") << "line\\u202eslay.exe";
    QTest::newRow("a joiner that turns nothing stays")
        << QString(QChar(0x200d)) << QString(QChar(0x200d));
}

void ConsoleTest::controlCharactersAreSpelledOut() {
    QFETCH(QString, text);
    QTEST(ctl::spelledOut(text), "spelled");
}

void ConsoleTest::harmlessTextKeepsItsColumns_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");
    const QString sign(QChar::ReplacementCharacter);
    QTest::newRow("a plain text stays") << "int a;"
                                        << "int a;";
    QTest::newRow("lines and tabs stay") << "a\n\tb\n"
                                         << "a\n\tb\n";
    QTest::newRow("a carriage return becomes a sign") << "a\r\n"
                                                      << "a" + sign + "\n";
    QTest::newRow("each control character becomes one sign") << "\x1b[0m\a" << sign + "[0m" + sign;
    QTest::newRow("one of two bytes becomes one sign") << QString(QChar(0x85)) << sign;
    QTest::newRow("a NUL becomes a sign") << QString(QChar(0)) << sign;
    QTest::newRow("a mark that turns the line around becomes a sign")
        << "a" + QString(QChar(0x2067)) << "a" + sign;
}

void ConsoleTest::harmlessTextKeepsItsColumns() {
    QFETCH(QString, text);
    QTEST(ctl::harmless(text), "shown");
    QCOMPARE(ctl::harmless(text).size(), text.size());
}

void ConsoleTest::resultsAndRemarksGoApart() {
    Buffers buffers;
    ctl::print(buffers.console, "a");
    ctl::printLine(buffers.console, QStringLiteral("名"));
    ctl::printLine(buffers.console);
    ctl::tell(buffers.console, "careful");
    QCOMPARE(buffers.out.data(), QByteArray("a\xE5\x90\x8D\n\n"));
    QCOMPARE(buffers.err.data(), QByteArray("quorvanectl: careful\n"));
}

void ConsoleTest::aRemarkIsOneLineWhateverItQuotes() {
    Buffers buffers;
    ctl::tell(buffers.console, "a\nb\x1b%1");
    QCOMPARE(buffers.err.data(), QByteArray("quorvanectl: a\\nb\\x1b%1\n"));
}

void ConsoleTest::aRefusalSaysWhyAndGivesItsStatus() {
    Buffers buffers;
    QCOMPARE(ctl::refuse(buffers.console, "no"), int(ctl::Refused));
    QCOMPARE(buffers.err.data(), QByteArray("quorvanectl: no\n"));
    QCOMPARE(buffers.out.data(), QByteArray());
}

// UTF-16 that no UTF-8 can say: a name of Windows may hold it.
void ConsoleTest::halfACharacterIsWrittenAsASign() {
    Buffers buffers;
    ctl::print(buffers.console, "a" + QString(QChar(0xd83d)) + "b");
    QCOMPARE(buffers.out.data(), QByteArray("a?b"));
}

void ConsoleTest::aForeignNameSteersNoTerminal() {
    const support::Answer answer = support::runTool({"script", "check", "a\x1b[2J\nb.ys"});
    QVERIFY2(!answer.err.contains('\x1b'), qPrintable(answer.err));
    QVERIFY2(answer.err.endsWith("\nquorvanectl: a\\x1b[2J\\nb.ys: no such file\n"),
             qPrintable(answer.err));
}

void ConsoleTest::aClosedStreamDoesNotSpoilAFile_data() {
    QTest::addColumn<QString>("streams");
    QTest::addColumn<int>("status"); // of a program that reports what it wrote
    QTest::newRow("all are open") << "" << int(ctl::Clean);
    QTest::newRow("no input") << "<&-" << int(ctl::Clean);
    QTest::newRow("no output") << ">&-" << int(ctl::Refused);
    QTest::newRow("no errors") << "2>&-" << int(ctl::Clean);
    QTest::newRow("neither input nor output") << "<&- >&-" << int(ctl::Refused);
    QTest::newRow("none at all") << "<&- >&- 2>&-" << int(ctl::Refused);
}

// Else the first file that is opened would get the stream's number, and the report would land in it.
void ConsoleTest::aClosedStreamDoesNotSpoilAFile() {
    if (support::onWindows)
        QSKIP("it takes a shell to close a stream");
    QFETCH(QString, streams);
    const QTemporaryDir folder;
    support::writeTree(folder.path(), {{"m.json", "{}"}});
    const support::Answer expected =
        support::runLine("quorvanectl update canonical m.json", folder.path());
    const support::Answer answer = support::runLine(
        "quorvanectl update canonical m.json --out c.bin " + streams, folder.path());
    QTEST(answer.status, "status");
    QCOMPARE(support::readTree(folder.path()),
             FileTree({{"m.json", "{}"}, {"c.bin", expected.out.toUtf8()}}));
}

QUORVANE_TEST_MAIN(QCoreApplication, ConsoleTest)
#include "console_test.moc"
