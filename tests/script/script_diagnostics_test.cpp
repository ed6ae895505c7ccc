// The one finding of a broken script, with its marks and its text, the scripts that pass though
// broken, and which messages of the parser get a friendlier text.
#include "script/script_diagnostics.h"

#include "support/library_file.h"
#include "support/staged_main.h"

#include <QJsonDocument>

using namespace ast;

class ScriptDiagnosticsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void finding_data();
    void finding();
    void passes_data();
    void passes();
    void programGoesOutOnlyOnSuccess();
    void severalChecksAddUp();
    void defaults();
    void friendlyTexts_data();
    void friendlyTexts();
    void position_data();
    void position();
    void positionTakesNullPointers();
    void json();
};

void ScriptDiagnosticsTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

// The printed form of the one finding.
void ScriptDiagnosticsTest::finding_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    const QString bad = QStringLiteral("YS100 error: 无法识别的字符");
    QTest::newRow("a bad character is marked alone") << "ab;\n12@4567890\n"
                                                     << "2:3-4 " + bad;
    QTest::newRow("a bad character at the end of its line is marked to the line's end")
        << "ab;\n12 45 789@\nc;"
        << "2:10-10 " + bad;
    QTest::newRow("a bad character alone on its line") << "\n@\n"
                                                       << "2:1-1 " + bad;
    QTest::newRow("a bad character before a carriage return has one column more") << "a@\r\n"
                                                                                  << "1:2-3 " + bad;
    QTest::newRow("a lone & is a bad character") << "x = a&b;"
                                                 << "1:6-7 " + bad;
    QTest::newRow("a NUL is a bad character") << QString(QChar(0)) + "abc"
                                              << "1:1-2 " + bad;
    QTest::newRow("a NUL on a later line keeps its position")
        << QString("\n") + QChar(0) << "2:1-1 " + bad;
    QTest::newRow("a full-width comma is a bad character")
        << QStringLiteral("f(a，b);") << "1:4-5 " + bad;
    QTest::newRow("a character of two code units keeps its position")
        << QStringLiteral("a = 1;\n b 😀 c") << "2:4-5 " + bad;
    QTest::newRow("a lexical error wins over an earlier syntax error") << "}\n@"
                                                                       << "2:1-1 " + bad;
    QTest::newRow("a missing ) after an if condition is marked to the end of its line")
        << "function f() {\nif (a {\n}\n" // the clause runs to the end of the file
        << QStringLiteral("4:1-0 YS200 error: if 语句不完整，应为 if(条件) { ... }");
    QTest::newRow("a missing ( after if")
        << "a = 1;\nif a) b = 2;"
        << QStringLiteral("2:4-12 YS200 error: if 语句不完整，应为 if(条件) { ... }");
    QTest::newRow("a stray } has no message and stays at 1:1") << "abc = 1;\n}\n"
                                                               << "1:1-8 YS200 error: ";
    QTest::newRow("a stray } after an ignored failure speaks with the old message")
        << "if (a) { ; }\n}"
        << "1:10-12 YS200 error: empty statement (at 1:10)";
    QTest::newRow("an empty statement keeps its English text and its position")
        << "a = 1;\n ; b"
        << "2:2-4 YS200 error: empty statement (at 2:2)";
    QTest::newRow("a function whose last } is missing")
        << "function f() {\n a = 1;\n"
        << QStringLiteral("3:1-0 YS200 error: 缺少匹配的 '}'");
    QTest::newRow("an import without its semicolon speaks of the semicolon")
        << "import \"a.ys\"\n"
        << QStringLiteral("1:14-13 YS200 error: 此处缺少分号 ';'");
    QTest::newRow("an else without if")
        << "else a = 1;"
        << QStringLiteral("1:1-11 YS200 error: if 语句不完整，应为 if(条件) { ... }");
    QTest::newRow("the position of a for init counts in its own text")
        << "a = 1;\nfor (;;) { }"
        << "1:1-6 YS200 error: empty statement (at 1:1)";
    QTest::newRow("a position behind the text's end falls back to a length of 1")
        << "for (x =\n\n 1 @"
        << "3:4-4 " + bad;
}

void ScriptDiagnosticsTest::finding() {
    QFETCH(QString, text);
    QFETCH(QString, expected);
    ScriptCheckContext context = makeCheckContext(text);
    QVERIFY(!checkScript(context));
    QCOMPARE(context.result.diagnostics.size(), size_t(1));
    QCOMPARE(diagnosticText(context.result.diagnostics.front()), expected);
    QCOMPARE(context.result.errorCount, 1);
    QCOMPARE(context.result.warningCount, 0);
    QVERIFY(!context.result.passed);
}

void ScriptDiagnosticsTest::passes_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("leftBehind");
    QTest::newRow("an empty script") << ""
                                     << "";
    QTest::newRow("blank lines and comments") << "\n// a\n\n"
                                              << "";
    QTest::newRow("a statement") << "a = 1;"
                                 << "";
    QTest::newRow("an if whose last } is missing") << "if (a) {\n b = 1;\n"
                                                   << "expected '}' (at 3:1)";
    QTest::newRow("a for whose last } is missing") << "for (i = 0; i < 3; i++) {\n b = 1;\n"
                                                   << "expected '}' (at 3:1)";
    QTest::newRow("a while whose last } is missing") << "while (a) {\n b = 1;\n"
                                                     << "expected '}' (at 3:1)";
    QTest::newRow("a switch whose last } is missing") << "switch (a) {\ncase 1: b = 1;\n"
                                                      << "expected '}' after switch (at 3:1)";
    QTest::newRow("a top-level if whose ) is missing")
        << "if (a\n b = 1;\n"
        << "expected ')' after if condition (at 3:1)";
    QTest::newRow("an open quote that swallows the file") << "a = \"b;\n } @ else\n"
                                                          << "";
    QTest::newRow("a block that failed inside an if") << "if (a) { static"
                                                      << "expected type after static (at 1:16)";
}

void ScriptDiagnosticsTest::passes() {
    QFETCH(QString, text);
    ScriptCheckContext context = makeCheckContext(text);
    std::shared_ptr<Program> program;
    QString leftBehind = "of before";
    QVERIFY(checkScript(context, &program, &leftBehind));
    QTEST(leftBehind, "leftBehind");
    QVERIFY(program != nullptr);
    QVERIFY(program->sourcePath.isEmpty());
    QVERIFY(context.result.passed);
    QCOMPARE(context.result.errorCount, 0);
    QVERIFY(context.result.diagnostics.empty());
}

void ScriptDiagnosticsTest::programGoesOutOnlyOnSuccess() {
    const auto before = std::make_shared<Program>();
    std::shared_ptr<Program> program = before;
    ScriptCheckContext broken = makeCheckContext("}");
    QVERIFY(!checkScript(broken, &program));
    QCOMPARE(program, before);
    ScriptCheckContext good = makeCheckContext("a = 1;");
    QVERIFY(checkScript(good, &program));
    QVERIFY(program != before);
}

void ScriptDiagnosticsTest::severalChecksAddUp() {
    ScriptCheckContext context = makeCheckContext("}");
    QVERIFY(!checkScript(context));
    QVERIFY(!checkScript(context));
    QCOMPARE(context.result.errorCount, 2);
    QCOMPARE(context.result.diagnostics.size(), size_t(2));
}

void ScriptDiagnosticsTest::defaults() {
    QCOMPARE(diagnosticText(ScriptDiagnostic()), QStringLiteral("1:1-0  error: "));
    const ScriptCheckResult result;
    QVERIFY(result.passed);
    QCOMPARE(result.errorCount, 0);
    QCOMPARE(result.warningCount, 0);
    QCOMPARE(makeCheckContext("a\r\n\nb\n").lines, QStringList({"a\r", "", "b", ""}));
}

void ScriptDiagnosticsTest::friendlyTexts_data() {
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("expected"); // null where the message passes through
    const QString whileText = QStringLiteral("while 语句不完整，应为 while(条件) { ... }");
    const QString switchText = QStringLiteral("switch 语句不完整，应为 switch(表达式) { ... }");
    const QString caseText = QStringLiteral("case/default 分支不完整，应为 case 值: 或 default:");
    const QString ifText = QStringLiteral("if 语句不完整，应为 if(条件) { ... }");
    const QString forText = QStringLiteral("for 语句不完整，应为 for(初始化; 条件; 更新) { ... }");
    const QString semicolonText = QStringLiteral("此处缺少分号 ';'");
    const QString includeText = QStringLiteral("#include 语法错误");
    const QString importText = QStringLiteral("import 语法错误，应为 import \"相对路径.ys\";");
    const QList<QPair<QString, QString>> rows = {
        {"expected '(' after while (at 1:7)", whileText},
        {"expected ')' after while condition (at 1:7)", whileText},
        {"a while condition", whileText},
        {"expected '(' after switch (at 1:8)", switchText},
        {"expected ')' after switch expression (at 1:8)", switchText},
        {"expected '{' after switch (at 1:8)", switchText},
        {"expected '}' after switch (at 1:8)", switchText},
        {"expected case or default in switch (at 2:1)", switchText},
        {"expected ':' after case (at 1:1)", caseText},
        {"expected ':' after default (at 1:1)", caseText},
        {"expected '(' after if (at 1:4)", ifText},
        {"expected ')' after if condition (at 1:4)", ifText},
        {"dangling else (at 1:1)", ifText},
        {"expected '(' after for (at 1:5)", forText},
        {"expected ';' after for init (at 1:5)", forText},
        {"expected ';' after for condition (at 1:5)", forText},
        {"expected ')' after for update (at 1:5)", forText},
        {"for init parse failed (at 1:5)", forText},
        {"for init: expected variable name (at 1:5)", forText},
        {"expected ';' (at 1:2)", semicolonText},
        {"expected ';' after import (at 1:14)", semicolonText},
        {"expected '}' (at 9:1)", QStringLiteral("缺少匹配的 '}'")},
        {"expected '{' (at 9:1)", QStringLiteral("缺少 '{' 或函数体/代码块")},
        {"expected include (at 1:3)", includeText},
        {"invalid include syntax (at 1:10)", includeText},
        {"expected '>' after include path (at 1:10)", includeText},
        {"import requires string path (at 1:8)", importText},
        {"Unknown character '@' at 2:3", QStringLiteral("无法识别的字符")},
        {"Unterminated string at 2:3", QStringLiteral("字符串字面量未闭合")},
        {"expected '(' after else if (at 1:9)", QString()},
        {"expected ')' after else if condition (at 1:9)", QString()},
        {"for update parse failed (at 1:9)", QString()},
        {"empty statement (at 1:9)", QString()},
        {"expected ']' (at 1:9)", QString()},
        {"expected variable name (at 1:9)", QString()},
        {"expected type after static (at 1:9)", QString()},
        {"expected type after global (at 1:9)", QString()},
        {"expected function name (at 1:9)", QString()},
        {"expected '(' after function name (at 1:9)", QString()},
        {"expected parameter name (at 1:9)", QString()},
        {"expected ')' after function params (at 1:9)", QString()},
        {"After If", QString()}, // the search is case-sensitive
        {"", QString()},
    };
    for (const auto &row : rows)
        QTest::newRow(qPrintable("'" + row.first + "'")) << row.first << row.second;
}

void ScriptDiagnosticsTest::friendlyTexts() {
    QFETCH(QString, message);
    QFETCH(QString, expected);
    QCOMPARE(friendlyMessage(message), expected.isNull() ? message : expected);
}

void ScriptDiagnosticsTest::position_data() {
    QTest::addColumn<QString>("message");
    QTest::addColumn<bool>("found");
    QTest::addColumn<int>("line");
    QTest::addColumn<int>("column");
    QTest::newRow("the parser's form") << "dangling else (at 3:14)" << true << 3 << 14;
    QTest::newRow("the lexer's form") << "Unknown character '@' at 3:14" << true << 3 << 14;
    QTest::newRow("the first of two") << "(at 1:2) (at 3:4)" << true << 1 << 2;
    QTest::newRow("several blanks") << "at \t 3:14" << true << 3 << 14;
    QTest::newRow("inside a word") << "flat 3:14" << true << 3 << 14;
    QTest::newRow("an unknown character that is no text by itself")
        << QString("Unknown character '%1' at 3:14").arg(QChar(0xD83D)) << true << 3 << 14;
    QTest::newRow("no blank") << "at3:14" << false << -7 << -8;
    QTest::newRow("no column") << "(at 3)" << false << -7 << -8;
    QTest::newRow("no word") << "3:14" << false << -7 << -8;
    QTest::newRow("a capital letter") << "At 3:14" << false << -7 << -8;
    QTest::newRow("an empty message") << "" << false << -7 << -8;
}

void ScriptDiagnosticsTest::position() {
    QFETCH(QString, message);
    QFETCH(bool, found);
    qint32 line = -7;
    qint32 column = -8;
    QCOMPARE(extractPosition(message, &line, &column), found);
    QTEST(line, "line");
    QTEST(column, "column");
}

void ScriptDiagnosticsTest::positionTakesNullPointers() {
    qint32 number = 0;
    QVERIFY(extractPosition("at 3:14", nullptr, nullptr));
    QVERIFY(extractPosition("at 3:14", &number, nullptr));
    QCOMPARE(number, 3);
    QVERIFY(extractPosition("at 3:14", nullptr, &number));
    QCOMPARE(number, 14);
}

void ScriptDiagnosticsTest::json() {
    ScriptDiagnostic finding;
    finding.line = 2;
    finding.code = "YS408";
    finding.message = QStringLiteral("重复");
    QCOMPARE(
        QString::fromUtf8(QJsonDocument(diagnosticJson(finding)).toJson(QJsonDocument::Compact)),
        QStringLiteral("{\"code\":\"YS408\",\"column\":1,\"endColumn\":0,\"line\":2,"
                       "\"message\":\"重复\",\"severity\":0}"));
}

QUORVANE_TEST_MAIN(QCoreApplication, ScriptDiagnosticsTest)
#include "script_diagnostics_test.moc"
