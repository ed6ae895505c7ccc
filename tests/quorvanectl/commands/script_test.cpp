// script check, tokens and tree: what they print and refuse, that the demo's tokens put back
// together say the same, and deep trees on a small stack.
#include "run_tool.h"
#include "support/platform.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include "library/function_library.h"
#include "script/lexer.h"
#include "script/printed_form.h"

#include <QCoreApplication>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

using support::Answer;
using support::ProjectFolder;

namespace {

// The words of the shipped file.
constexpr char library[] = "[Highlight]\nother=function,include,import\n";

Answer run(const QString &arguments, const ProjectFolder &folder,
           const QString &before = QString()) {
    return support::runLine(before + "quorvanectl script " + arguments, folder.path(""));
}

QJsonArray tokensOf(const QString &path, const ProjectFolder &folder) {
    return QJsonDocument::fromJson(run("tokens '" + path + "' --format json", folder).out.toUtf8())
        .array();
}

} // namespace

class ScriptTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void check_data();
    void check();
    void checkAsJson();
    void tokens();
    void tree();
    void aScriptThatCannotBePrinted_data();
    void aScriptThatCannotBePrinted();
    void theTokensHoldTheWholeScript_data();
    void theTokensHoldTheWholeScript();
    void aDeepTreeIsPrinted_data();
    void aDeepTreeIsPrinted();
    void theLibraryDecides();
};

void ScriptTest::check_data() {
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("text");

    QTest::newRow("a clean script") << QByteArray("int a = 1;\n") << 0 << "a.ys: clean\n";
    QTest::newRow("an empty script") << QByteArray() << 0 << "a.ys: clean\n";
    QTest::newRow("a bad character")
        << QByteArray("int a;\nb = 1 $ 2;\n") << 1
        << "a.ys:2:7: YS100 无法识别的字符\n    b = 1 $ 2;\n          ^\n";
    QTest::newRow("behind wide characters and a tab")
        << QByteArray("\t名 = $\r\n") << 1
        << "a.ys:1:6: YS100 无法识别的字符\n    \t名 = $\n    \t     ^\n";
    QTest::newRow("a stray brace, of which the parser says nothing")
        << QByteArray("}\n") << 1
        << "a.ys:1:1: YS200 The script has a syntax error.\n    }\n    ^\n";
    QTest::newRow("a control character does not reach the terminal")
        << QByteArray("a\x1b[31m\n") << 1
        << QString("a.ys:1:2: YS100 无法识别的字符\n    a\uFFFD[31m\n     ^\n");
    QTest::newRow("the middle of a long line")
        << QByteArray(100, 'a') + '$' + QByteArray(100, 'b') << 1
        << "a.ys:1:101: YS100 无法识别的字符\n    ..." + QString(60, 'a') + '$' + QString(59, 'b') +
               "...\n       " + QString(60, ' ') + "^\n";
}

void ScriptTest::check() {
    QFETCH(QByteArray, script);
    QFETCH(int, status);
    QFETCH(QString, text);
    const ProjectFolder folder;
    folder.write("a.ys", script);
    folder.write("lib.ini", library);
    const Answer answer =
        support::runProgram({"script", "check", "a.ys", "--library", "lib.ini"}, folder.path(""));
    QCOMPARE(answer.out, text);
    QCOMPARE(answer.err, QString());
    QCOMPARE(answer.status, status);
}

void ScriptTest::checkAsJson() {
    const ProjectFolder folder;
    folder.write("a.ys", "if a { }\n");
    const Answer answer =
        support::runProgram({"script", "check", "a.ys", "--format", "json"}, folder.path(""));
    QCOMPARE(answer.status, 1);
    QCOMPARE(answer.out, QString(R"({
    "diagnostics": [
        {
            "code": "YS200",
            "column": 4,
            "endColumn": 8,
            "line": 1,
            "message": "if 语句不完整，应为 if(条件) { ... }",
            "severity": 0
        }
    ],
    "passed": false,
    "path": "a.ys",
    "warnings": [
    ]
}
)"));
}

void ScriptTest::tokens() {
    const ProjectFolder folder;
    folder.write("a.ys", "if \"a\x1b\"\n");
    QCOMPARE(run("tokens a.ys", folder).out,
             QString("1:1 KwIf \"if\"\n1:4 StringLiteral \"\\\"a\\u001b\\\"\"\n"
                     "1:8 Newline \"\\n\"\n2:1 Eof \"\"\n"));
    QCOMPARE(run("tokens a.ys --format json", folder).out,
             QString("[[7,\"if\",1,1],[5,\"\\\"a\\u001b\\\"\",1,4],[1,\"\\n\",1,8],[0,\"\",2,"
                     "1]]\n"));
}

void ScriptTest::tree() {
    const ProjectFolder folder;
    folder.write("a.ys", "a = b + 1\n");
    QCOMPARE(run("tree a.ys", folder).out, QString("a = (+ b 1)\n"));
    const Answer answer = run("tree a.ys --format json", folder);
    QCOMPARE(answer.status, 0);
    const QJsonObject program = QJsonDocument::fromJson(answer.out.toUtf8()).object();
    QCOMPARE(program["type"].toString(), QString("Program"));
    QCOMPARE(program["functions"].toArray().size(), 0);
    const QJsonObject statement = program["statements"].toArray().at(0).toObject();
    QCOMPARE(statement["type"].toString(), QString("AssignStmt"));
    QCOMPARE(statement["target"].toString(), QString("a"));
    const QJsonObject root = statement["value"].toObject()["root"].toObject();
    QCOMPARE(root["type"].toString(), QString("ExprNode"));
    QCOMPARE(root["op"].toString(), QString("+"));
    QCOMPARE(root["operand"], QJsonValue(QJsonValue::Null));
}

void ScriptTest::aScriptThatCannotBePrinted_data() {
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("line");

    QTest::newRow("tokens of a bad character") << QByteArray("a\nb $") << "tokens"
                                               << "a.ys:2:3: YS100 无法识别的字符";
    QTest::newRow("a tree of a bad character") << QByteArray("a\nb $") << "tree"
                                               << "a.ys:2:3: YS100 无法识别的字符";
    QTest::newRow("a tree of a syntax error")
        << QByteArray("if a { }") << "tree"
        << "a.ys:1:4: YS200 if 语句不完整，应为 if(条件) { ... }";
}

void ScriptTest::aScriptThatCannotBePrinted() {
    QFETCH(QByteArray, script);
    QFETCH(QString, command);
    QFETCH(QString, line);
    const ProjectFolder folder;
    folder.write("a.ys", script);
    for (const char *const format : {"text", "json"}) {
        const Answer answer = run(command + " a.ys --format " + format, folder);
        QCOMPARE(answer.err, "quorvanectl: " + line + "\n");
        QCOMPARE(answer.out, QString());
        QCOMPARE(answer.status, 2);
    }
}

// The printed tokens, put back at their places, are the script without its comments.
void ScriptTest::theTokensHoldTheWholeScript_data() {
    QTest::addColumn<QString>("path");
    const QDir scripts(support::rooted(QUORVANE_SOURCE_TREE "/examples/projects/demo/scripts"));
    for (const QString &name : scripts.entryList({"*.ys"}))
        QTest::newRow(qPrintable(name)) << scripts.filePath(name);
}

void ScriptTest::theTokensHoldTheWholeScript() {
    QFETCH(QString, path);
    const ProjectFolder folder;
    QVERIFY(
        FunctionLibrary::instance().load(QUORVANE_SOURCE_TREE "/resources/config/FunctionLib.ini"));
    const QJsonArray printed = tokensOf(path, folder);
    QString rebuilt;
    int line = 1;
    int column = 1;
    for (const QJsonValue &token : printed) {
        rebuilt += QString(token[3].toInt() - column, ' ') + token[1].toString();
        QCOMPARE(token[2].toInt(), line);
        column = token[3].toInt() + token[1].toString().size();
        if (token[0].toInt() == ast::Newline) {
            ++line;
            column = 1;
        }
    }
    folder.write("again.ys", rebuilt.toUtf8());
    QCOMPARE(tokensOf(folder.path("again.ys"), folder), printed);
    QCOMPARE(ast::tokensToJson(ast::Lexer(rebuilt).tokenize()),
             run("tokens '" + path + "' --format json", folder).out.trimmed());
    // Neither changes what the script says.
    QCOMPARE(run("tree again.ys", folder).out, run("tree '" + path + "'", folder).out);
}

// The tree of a deep script is neither held on the stack nor as one text.
void ScriptTest::aDeepTreeIsPrinted_data() {
    QTest::addColumn<QByteArray>("open");
    QTest::addColumn<QByteArray>("close");
    QTest::addColumn<int>("depth");
    QTest::addColumn<QByteArray>("each");

    QTest::newRow("a million brackets without a node")
        << QByteArray("(") << QByteArray(")") << 1000000 << QByteArray();
    QTest::newRow("subscripts") << QByteArray("a[") << QByteArray("]") << 5000
                                << QByteArray("\"kind\":\"Index\"");
    QTest::newRow("blocks") << QByteArray("while (a) {") << QByteArray("}") << 5000
                            << QByteArray("\"type\":\"WhileStmt\"");
}

void ScriptTest::aDeepTreeIsPrinted() {
    QFETCH(QByteArray, open);
    QFETCH(QByteArray, close);
    QFETCH(int, depth);
    QFETCH(QByteArray, each);
    const ProjectFolder folder;
    folder.write("a.ys", open.repeated(depth) + "1" + close.repeated(depth));
    // Where a shell can limit the stack; elsewhere it is a Megabyte.
    const QString limit = support::onWindows ? "" : "ulimit -s 256; ";
    const Answer answer = run("tree a.ys --format json", folder, limit);
    QCOMPARE(answer.status, 0);
    static const QRegularExpression progress("^(reading a\\.ys: \\d+ s\n)*$");
    QVERIFY2(progress.match(answer.err).hasMatch(), qPrintable(answer.err));
    if (!each.isEmpty())
        QCOMPARE(answer.out.count(each), depth);
    QCOMPARE(answer.out.count('{'), answer.out.count('}'));
}

void ScriptTest::theLibraryDecides() {
    const ProjectFolder folder;
    // Without its word in the library, import is a name like any other.
    folder.write("a.ys", "import \"b.ys\"\n");
    folder.write("lib.ini", "[Highlight]\nother=\n");
    QCOMPARE(support::runProgram({"script", "check", "a.ys"}, folder.path("")).status, 1);
    QCOMPARE(
        support::runProgram({"script", "check", "a.ys", "--library", "lib.ini"}, folder.path(""))
            .status,
        0);
}

QUORVANE_TEST_MAIN(QCoreApplication, ScriptTest)
#include "script_test.moc"
