// What scripts leave open: each place, and what is no matter of it.
#include "quorvanectl/project/script_warnings.h"

#include "quorvanectl/project/script_report.h"
#include "support/library_file.h"
#include "support/staged_main.h"

#include <QCoreApplication>

namespace {

// "line:column code message", of a script as the commands check it.
QStringList warningsOf(const QString &text, bool *passed = nullptr) {
    ctl::ScriptReport report;
    QString error;
    if (!ctl::checkText("a.ys", text, &report, &error))
        qFatal("%s", qPrintable(error));
    if (passed != nullptr)
        *passed = report.result.passed;
    QStringList lines;
    for (const ast::ScriptDiagnostic &warning : report.warnings) {
        if (warning.severity != 1 || warning.endColumn != 0)
            qFatal("no warning");
        lines.append(QString("%1:%2 %3 %4")
                         .arg(QString::number(warning.line), QString::number(warning.column),
                              warning.code, warning.message));
    }
    return lines;
}

QString open(const QString &place, const QString &bracket) {
    return place + " open-bracket this '" + bracket + "' is still open at the end of the file";
}

QString openText(const QString &place) {
    return place + " open-string the text that begins here is still open at the end of the file";
}

} // namespace

class ScriptWarningsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void warnings_data();
    void warnings();
    void aMillionOpenBrackets();
};

void ScriptWarningsTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void ScriptWarningsTest::warnings_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("passes");
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *name, const QString &text, bool passes,
                        const QStringList &expected) {
        QTest::newRow(name) << text << passes << expected;
    };
    row("nothing", "", true, {});
    row("all is closed", "function f() { int a[3]; a[0] = (1 + 2) * 3; }\ns = \"(\\\"{\";\n", true,
        {});
    row("a brace in a text or a comment", "s = \"{\"; // (\nc = '[';\n", true, {});
    row("a text", "int a;\ns = \"abc;\nb = 1;\n", true, {openText("2:5")});
    row("a quote alone", "s = \"", true, {openText("1:5")});
    row("an empty text is closed", "s = \"\"", true, {});
    row("a text whose end is escaped", "s = \"a\\\"", true, {openText("1:5")});
    row("a text that ends in a backslash", "s = \"a\\\\\"", true, {});
    row("a character", "c = 'ab", true, {openText("1:5")});
    row("a quote of a character alone", "c = '", true, {openText("1:5")});
    row("an empty character is closed", "c = ''", true, {});
    row("a character that is a backslash", "c = '\\'", true, {});
    row("a parenthesis", "a = (1 + 2;\n", true, {open("1:5", "(")});
    row("a bracket", "a[1 = 2;\n", true, {open("1:2", "[")});
    row("a brace, and the statement that it is lost with", "while (a) {\n  b = 1;\n", true,
        {open("1:11", "{"), "3:1 incomplete-statement 缺少匹配的 '}'"});
    row("one within the other", "a = ((1;\n", true, {open("1:5", "("), open("1:6", "(")});
    row("one that another kind closes over", "if (a) { b = (1; }\n", true,
        {open("1:14", "("), "2:1 incomplete-statement 缺少匹配的 '}'"});
    row("a closing one too many is none", "a = 1);\n", true, {});
    row("what the parser leaves behind", "while (a) {\n  #\n}\n", false, {});
    row("a statement that fails at the very end", "int a;\nglobal", true,
        {"2:7 incomplete-statement expected type after global (at 2:7)"});
    row("of a script with a syntax error", "function f() {\n", false, {open("1:14", "{")});
    row("none of a script with an unknown character", "a = (1 $ 2;\n", false, {});
}

void ScriptWarningsTest::warnings() {
    QFETCH(QString, text);
    bool passed = false;
    QTEST(warningsOf(text, &passed), "expected");
    QTEST(passed, "passes");
}

// The mistake is one, and a list of them would help nobody.
void ScriptWarningsTest::aMillionOpenBrackets() {
    constexpr int many = 1000000;
    const QStringList found = warningsOf("a = " + QString("(").repeated(many));
    QCOMPARE(found.size(), 20);
    QCOMPARE(found.first(), open("1:5", "("));
    QCOMPARE(found.last(), open("1:24", "("));
    QCOMPARE(warningsOf(QString("(").repeated(many) + QString("}").repeated(many)).size(), 20);
}

QUORVANE_TEST_MAIN(QCoreApplication, ScriptWarningsTest)
#include "script_warnings_test.moc"
