// What is kept of a script: each place where an editor marks it, of texts in which the same stands more than
// once, over lines, or behind what is wrong.
#include "quorvanectl/analysis/script_summary.h"

#include "support/library_file.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QFileInfo>

namespace {

const QString folder = QFileInfo("/line").absoluteFilePath();

QString placeText(const ctl::TextRange &at) {
    return QString("%1:%2-%3")
        .arg(QString::number(at.from.line), QString::number(at.from.column),
             QString::number(at.to.column));
}

QString namesText(const QVector<ctl::NamedRange> &names) {
    QStringList texts;
    for (const ctl::NamedRange &name : names)
        texts.append(QString(name.name).remove(folder) + ' ' + placeText(name.at));
    return texts.join(", ");
}

// "int x_y 1:12-15" for each.
QString globalsText(const ctl::ScriptSummary &summary) {
    QStringList texts;
    for (int i = 0; i < summary.facts.globals.size(); ++i)
        texts.append(QString("%1 %2 %3")
                         .arg(summary.globalTypes.value(i), summary.facts.globals.at(i).name,
                              placeText(summary.globals.value(i))));
    return texts.join(", ");
}

// "f(int a) 1; imports /b.ys" of what others learn.
QString exportsText(const ctl::ScriptExports &exports) {
    QStringList texts;
    for (const ctl::DeclaredFunction &function : exports.functions)
        texts.append(QString("%1(%2) %3")
                         .arg(function.name, function.parameters.join(", "),
                              QString::number(function.line)));
    for (const QString &import : exports.imports)
        texts.append("import " + QString(import).remove(folder));
    return texts.join("; ");
}

// "YS100 1:1-2 error" for each.
QString findingsText(const ctl::ScriptSummary &summary) {
    QStringList texts;
    for (const ast::ScriptDiagnostic &finding : summary.findings)
        texts.append(QString("%1 %2 %3")
                         .arg(finding.code, placeText(ctl::rangeOf(finding)),
                              finding.severity == 0 ? "error" : "warning"));
    return texts.join(", ");
}

} // namespace

class ScriptSummaryTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void declarations_data();
    void declarations();
    void imports_data();
    void imports();
    void exports_data();
    void exports();
    void badNames_data();
    void badNames();
    void findings_data();
    void findings();
    void theLargestScript_data();
    void theLargestScript();
};

void ScriptSummaryTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void ScriptSummaryTest::declarations_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("none") << "int x_y;"
                          << "";
    QTest::newRow("two on a line") << "global int x_y; global float x_z = 1;"
                                   << "int x_y 1:12-15, float x_z 1:30-33";
    QTest::newRow("the same twice") << "global int x_y;\nglobal int x_y;"
                                    << "int x_y 1:12-15, int x_y 2:12-15";
    QTest::newRow("behind a text over two lines") << "s = \"a\nb\"; global int x_y;"
                                                  << "int x_y 2:16-19";
    QTest::newRow("behind Chinese and a comment") << "s = \"高度\"; // global int x_z;\n"
                                                     " global int x_y;"
                                                  << "int x_y 2:13-16";
    QTest::newRow("one in a function is none of the project's check")
        << "function f() { global int x_y; }"
        << "";
    QTest::newRow("of a text that does not parse none") << "global int x_y; }"
                                                        << "";
    QTest::newRow("of one that leaves something open those before it") << "global int x_y;\nn = (1"
                                                                       << "int x_y 1:12-15";
    QTest::newRow("behind a thousand tokens on one line")
        << QString("a = 1; ").repeated(600) + "global int x_y;"
        << "int x_y 1:4212-4215";
}

void ScriptSummaryTest::declarations() {
    QFETCH(QString, text);
    const ctl::ScriptSummary summary = ctl::summaryOf(folder + "/a.ys", text);
    QTEST(globalsText(summary), "expected");
    QCOMPARE(summary.globals.size(), summary.facts.globals.size());
}

void ScriptSummaryTest::imports_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("one") << "import \"b.ys\";"
                         << "/b.ys 1:8-14";
    QTest::newRow("a rooted one between two others")
        << "import \"b.ys\";\nimport \"/c.ys\";\nimport \"d.ys\";"
        << "/b.ys 1:8-14, /d.ys 3:8-14";
    QTest::newRow("one with a drive") << "import \"C:\\\\c.ys\"; import \"d.ys\";"
                                      << "/d.ys 1:27-33";
    QTest::newRow("the script itself") << "import \"./a.ys\";"
                                       << "/a.ys 1:8-16";
    QTest::newRow("an empty path") << "import \"\";"
                                   << " 1:8-10";
    QTest::newRow("a path over two lines") << "import \"b\n.ys\";"
                                           << "/b\n.ys 1:8-15";
    QTest::newRow("an import before a mistake") << "import \"b.ys\"; $"
                                                << "";
}

void ScriptSummaryTest::imports() {
    QFETCH(QString, text);
    const ctl::ScriptSummary summary = ctl::summaryOf(folder + "/a.ys", text);
    QCOMPARE(summary.imports.size(), summary.facts.imports.size());
    QTEST(namesText(summary.imports), "expected");
}

// Others learn the same of a script whether it is open, by its names, or closed, by its tree.
void ScriptSummaryTest::exports_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("neither") << "global int x_y;\n// import function f()"
                             << "";
    QTest::newRow("functions and their lines")
        << "function f() {\n}\n\nfunction g(int a, b, char c) { } function f() { }"
        << "f() 1; g(int a, int b, char c) 4; f() 4";
    QTest::newRow("what a function declares stays in it")
        << "function f(a) { global int x_y; int n; }"
        << "f(int a) 1";
    QTest::newRow("imports in their order") << "import \"c.ys\";\nimport \"b.ys\"; import \"c.ys\";"
                                            << "import /c.ys; import /b.ys; import /c.ys";
    QTest::newRow("a rooted one is not followed") << "import \"/b.ys\"; import \"c.ys\";"
                                                  << "import /c.ys";
    QTest::newRow("one within braces is")
        << "import \"b.ys\";\nfunction f() {\n  if (a) { import \"c.ys\"; } else { import "
           "\"d.ys\"; }\n}\n"
           "import \"e.ys\";"
        << "f() 2; import /b.ys; import /c.ys; import /d.ys; import /e.ys";
    QTest::newRow("in each kind of braces")
        << "while (a) { import \"b.ys\"; }\nfor (int i = 0; i < 2; i++) { import \"c.ys\"; }\n"
           "if (a) { b = 1; } else if (c) { import \"d.ys\"; }\n"
           "switch (a) { case 1: import \"e.ys\"; }"
        << "import /b.ys; import /c.ys; import /d.ys; import /e.ys";
    QTest::newRow("the word alone is none") << "int imported; import \"b.ys\"; // import"
                                            << "import /b.ys";
    QTest::newRow("of a text that does not parse nothing") << "import \"b.ys\"; function f() { } }"
                                                           << "";
}

void ScriptSummaryTest::exports() {
    QFETCH(QString, text);
    const QString path = folder + "/a.ys";
    QTEST(exportsText(ctl::summaryOf(path, text).exports), "expected");
    QTEST(exportsText(ctl::exportsOf(ctl::symbolsIn(path, text), text)), "expected");
}

// By the words of the text alone, so that a text that does not parse shows them too.
void ScriptSummaryTest::badNames_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("a good one") << "global int x_y;"
                                << "";
    QTest::newRow("a bad one") << "global int width;"
                               << "width 1:12-17";
    QTest::newRow("three over lines") << "global int a;\n\nglobal int b; global int c;"
                                      << "a 1:12-13, b 3:12-13, c 3:26-27";
    QTest::newRow("in a text that does not parse") << "} global int w"
                                                   << "w 1:14-15";
    QTest::newRow("behind lines that end in both") << "int n;\r\nglobal int w;\r\n"
                                                   << "w 2:12-13";
}

void ScriptSummaryTest::badNames() {
    QFETCH(QString, text);
    const ctl::ScriptSummary summary = ctl::summaryOf(folder + "/a.ys", text);
    QTEST(namesText(summary.badNames), "expected");
    QCOMPARE(summary.scanned.size(), summary.badNames.size());
}

void ScriptSummaryTest::findings_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("none") << "int a;"
                          << "";
    QTest::newRow("an unknown character") << "a = 1;\n  $"
                                          << "YS100 2:3-4 error";
    QTest::newRow("the first of two") << "$ @"
                                      << "YS100 1:1-2 error";
    QTest::newRow("a stray brace") << "a = 1; }"
                                   << "YS200 1:1-8 error";
    QTest::newRow("two brackets that are open") << "f(a[1\n"
                                                << "open-bracket 1:2-3 warning, "
                                                   "open-bracket 1:4-5 warning";
    QTest::newRow("a text that is open") << "s = \"a\nb"
                                         << "open-string 1:5-6 warning";
}

void ScriptSummaryTest::findings() {
    QFETCH(QString, text);
    QTEST(findingsText(ctl::summaryOf(folder + "/a.ys", text)), "expected");
}

// In bytes of UTF-8, whatever the units are.
void ScriptSummaryTest::theLargestScript_data() {
    QTest::addColumn<QString>("sign");
    QTest::addColumn<int>("bytes");
    QTest::newRow("a blank") << " " << 1;
    QTest::newRow("a letter of two bytes") << "é" << 2;
    QTest::newRow("a sign of three bytes") << QString("高") << 3;
    QTest::newRow("a pair of four bytes") << QString("\U0001F600") << 4;
}

void ScriptSummaryTest::theLargestScript() {
    QFETCH(QString, sign);
    QFETCH(int, bytes);
    const QString head = "global int w; //";
    const int room = int(ctl::largestScript) - head.size();
    const QString text = head + sign.repeated(room / bytes);
    const QString full = text + QString(room % bytes, ' ');
    const auto isLookedInto = [](const QString &script) {
        return ctl::summaryOf(folder + "/a.ys", script).badNames.size() == 1;
    };
    QVERIFY(isLookedInto(full));
    QVERIFY(!isLookedInto(full + ' '));
    QCOMPARE(findingsText(ctl::summaryOf(folder + "/a.ys", full + ' ')),
             QString("script-unread 1:1-2 error"));
    QCOMPARE(ctl::summaryOf(folder + "/a.ys", full + ' ').findings.front().message,
             QString("the script is larger than 16 MiB and is not looked into"));
}

QUORVANE_TEST_MAIN(QCoreApplication, ScriptSummaryTest)

#include "script_summary_test.moc"
