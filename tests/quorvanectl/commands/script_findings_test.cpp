// The findings of a script as a person reads them: place, words, the line, and a caret below it.
#include "quorvanectl/commands/script_findings.h"

#include "support/library_file.h"
#include "support/staged_main.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QJsonArray>

using ctl::ScriptReport;

namespace {

QString printed(const ScriptReport &report, bool colour = false) {
    QBuffer out;
    out.open(QIODevice::WriteOnly);
    ctl::Console console;
    console.out = &out;
    console.colour = colour;
    ctl::printFindings(console, report);
    return QString::fromUtf8(out.data());
}

// A report of one finding on the first line.
ScriptReport reportOf(const QString &line, int column) {
    ScriptReport report;
    report.path = report.shownPath = "a.ys";
    report.lines = QStringList(line);
    ast::ScriptDiagnostic finding;
    finding.column = column;
    finding.code = "YS100";
    finding.message = "m";
    report.result.diagnostics = {finding};
    return report;
}

} // namespace

class ScriptFindingsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void carets_data();
    void carets();
    void longLines_data();
    void longLines();
    void linesThatAreNotThere_data();
    void linesThatAreNotThere();
    void foreignTextSteersNothing();
    void coloursOfCodes();
    void texts_data();
    void texts();
    void asJson();
};

void ScriptFindingsTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void ScriptFindingsTest::carets_data() {
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("shown");
    QTest::newRow("at the first character") << "ab" << 1 << "    ab\n    ^\n";
    QTest::newRow("at the last") << "ab" << 2 << "    ab\n     ^\n";
    QTest::newRow("behind the last") << "ab" << 3 << "    ab\n      ^\n";
    QTest::newRow("far behind the last") << "ab" << 99 << "    ab\n      ^\n";
    QTest::newRow("before the first") << "ab" << 0 << "    ab\n    ^\n";
    QTest::newRow("far before the first") << "ab" << -7 << "    ab\n    ^\n";
    QTest::newRow("in an empty line") << "" << 1 << "    \n    ^\n";
    QTest::newRow("behind a tab, which stays one") << "\tab" << 2 << "    \tab\n    \t^\n";
    QTest::newRow("behind Chinese, which is wide")
        << QStringLiteral("名a") << 2 << QStringLiteral("    名a\n      ^\n");
    QTest::newRow("behind a wide comma")
        << QStringLiteral("，a") << 2 << QStringLiteral("    ，a\n      ^\n");
    QTest::newRow("behind Korean")
        << QStringLiteral("한a") << 2 << QStringLiteral("    한a\n      ^\n");
    QTest::newRow("behind an accent, which is narrow")
        << QStringLiteral("éa") << 2 << QStringLiteral("    éa\n     ^\n");
    QTest::newRow("behind a character of two units, which is as wide")
        << QString::fromUtf8("\xF0\x9F\x98\x80x") << 3
        << QString::fromUtf8("    \xF0\x9F\x98\x80x\n      ^\n");
    QTest::newRow("with the line end of Windows") << "ab\r" << 2 << "    ab\n     ^\n";
    QTest::newRow("with several of them") << "ab\r\r" << 4 << "    ab\n      ^\n";
}

void ScriptFindingsTest::carets() {
    QFETCH(QString, line);
    QFETCH(int, column);
    QFETCH(QString, shown);
    QCOMPARE(printed(reportOf(line, column)),
             QStringLiteral("a.ys:1:%1: YS100 m\n%2").arg(QString::number(column), shown));
}

// Sixty units on either side.
void ScriptFindingsTest::longLines_data() {
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("source");
    QTest::addColumn<int>("caretAt");
    const auto a = [](int count) { return QString(count, 'a'); };
    QTest::newRow("its begin") << a(100) << 1 << "    " + a(60) + "..." << 4;
    QTest::newRow("all of it is shown just yet") << a(120) << 61 << "    " + a(120) << 64;
    QTest::newRow("one more behind") << a(121) << 61 << "    " + a(120) + "..." << 64;
    QTest::newRow("one more before") << a(121) << 62 << "    ..." + a(120) << 67;
    QTest::newRow("its end") << a(100) << 101 << "    ..." + a(60) << 67;
    const QString face = QString::fromUtf8("\xF0\x9F\x98\x80");
    QTest::newRow("a character of two units at its left edge is not halved")
        << face + a(60) << 62 << "    " + face + a(60) << 65;
    QTest::newRow("a character of two units at its right edge is not halved")
        << a(59) + face + a(9) << 1 << "    " + a(59) + face + "..." << 4;
}

void ScriptFindingsTest::longLines() {
    QFETCH(QString, line);
    QFETCH(int, column);
    QFETCH(QString, source);
    QFETCH(int, caretAt);
    const QStringList shown = printed(reportOf(line, column)).split('\n');
    QCOMPARE(shown.at(1), source);
    QCOMPARE(shown.at(2).indexOf('^'), caretAt);
}

void ScriptFindingsTest::linesThatAreNotThere_data() {
    QTest::addColumn<int>("line");
    QTest::newRow("behind the last") << 2;
    QTest::newRow("the zeroth") << 0;
    QTest::newRow("below zero") << -1;
}

void ScriptFindingsTest::linesThatAreNotThere() {
    QFETCH(int, line);
    ScriptReport report = reportOf("ab", 1);
    report.result.diagnostics.front().line = line;
    QCOMPARE(printed(report), QStringLiteral("a.ys:%1:1: YS100 m\n").arg(line));
}

void ScriptFindingsTest::foreignTextSteersNothing() {
    ScriptReport report = reportOf("a\x1b[2J\r\a", 3);
    report.shownPath = "a\x1b\n.ys";
    report.result.diagnostics.front().message = "m\x1b\n";
    const QString sign(QChar::ReplacementCharacter);
    QCOMPARE(printed(report), "a\\x1b\\n.ys:1:3: YS100 m\\x1b\\n\n    a" + sign + "[2J" + sign +
                                  sign + "\n      ^\n");
}

void ScriptFindingsTest::coloursOfCodes() {
    ScriptReport report = reportOf("ab", 1);
    QCOMPARE(printed(report, true),
             QString("a.ys:1:1: \x1b[31mYS100\x1b[0m m\n    ab\n    \x1b[36m^\x1b[0m\n"));
    report.result.diagnostics.front().severity = 1;
    QVERIFY(printed(report, true).startsWith("a.ys:1:1: \x1b[33mYS100\x1b[0m m\n"));
}

void ScriptFindingsTest::texts_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown"); // empty: nothing is wrong
    QTest::newRow("nothing") << ""
                             << "";
    QTest::newRow("a null text") << QString() << "";
    QTest::newRow("line ends alone") << "\r\n\r\n"
                                     << "";
    QTest::newRow("a comment without an end") << "/* a"
                                              << "";
    QTest::newRow("a block without an end") << "while (a) {"
                                            << "";
    QTest::newRow("a brace too many, of which the parser tells no place")
        << "int a;\n}\n"
        << "a.ys:1:1: YS200 The script has a syntax error.\n    int a;\n    ^\n";
    QTest::newRow("a character of no script")
        << "a = 1;\nb = `;\n"
        << QStringLiteral("a.ys:2:5: YS100 无法识别的字符\n    b = `;\n        ^\n");
}

void ScriptFindingsTest::texts() {
    QFETCH(QString, text);
    QFETCH(QString, shown);
    ScriptReport report;
    QString error;
    QVERIFY2(ctl::checkText("a.ys", text, &report, &error), qPrintable(error));
    QCOMPARE(printed(report), shown);
    QCOMPARE(report.path, QString("a.ys"));
    QCOMPARE(report.result.passed, shown.isEmpty());
    QCOMPARE(report.lines, text.split('\n'));
}

void ScriptFindingsTest::asJson() {
    ScriptReport report;
    QString error;
    QVERIFY(ctl::checkText(QStringLiteral("脚本/a.ys"), "int a;", &report, &error));
    QCOMPARE(ctl::reportJson(report), (QJsonObject{{"path", QStringLiteral("脚本/a.ys")},
                                                   {"passed", true},
                                                   {"diagnostics", QJsonArray()},
                                                   {"warnings", QJsonArray()}}));
    QVERIFY(ctl::checkText("b.ys", "}", &report, &error));
    const QJsonObject json = ctl::reportJson(report);
    QCOMPARE(json["path"].toString(), QString("b.ys"));
    QCOMPARE(json["passed"], QJsonValue(false));
    QCOMPARE(json["diagnostics"].toArray().size(), 1);
    QCOMPARE(json["diagnostics"].toArray().first().toObject()["code"].toString(), QString("YS200"));
}

QUORVANE_TEST_MAIN(QCoreApplication, ScriptFindingsTest)
#include "script_findings_test.moc"
