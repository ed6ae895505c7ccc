// The commands of the family script in the hands of an engineer: files of another kind, encoding or
// place, and no half list of tokens and no half tree.
#include "desk.h"
#include "support/staged_main.h"

#include <QCoreApplication>

using support::Desk;
using support::outcome;
using support::refusal;

namespace {

// A row of each of these commands is named after it: "tree: a folder".
const QStringList allCommands{"check", "tokens", "tree"};

// A row, where `%1` stands for the name of the command.
void refusalOf(const QString &command, const QString &name, const QString &arrangement,
               const QString &words, const QString &text) {
    refusal(qPrintable(command + ": " + name), arrangement, words,
            QString(text).replace("%1", command));
}

// Of the command after which the present row is named.
Desk deskOfRow() {
    const QString command = QString(QTest::currentDataTag()).section(':', 0, 0);
    return Desk("quorvanectl script " + command, {{"a.ys", "int a;\n"}, {"line/", ""}});
}

} // namespace

class ScriptMistakesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aFileThatCannotBeUsed_data();
    void aFileThatCannotBeUsed();
    void wrongWords_data();
    void wrongWords();
    void aScriptWithoutTokensOrATree_data();
    void aScriptWithoutTokensOrATree();
    void whatCheckSaysOfAScript_data();
    void whatCheckSaysOfAScript();
    void theTokensOfAScript_data();
    void theTokensOfAScript();
    void theTreeOfAScript_data();
    void theTreeOfAScript();
};

void ScriptMistakesTest::aFileThatCannotBeUsed_data() {
    support::addRefusals();
    for (const QString &command : allCommands) {
        const auto row = [&command](const QString &name, const QString &arrangement,
                                    const QString &words, const QString &text) {
            refusalOf(command, name, arrangement, words, text);
        };
        row("a folder", "", "@ line", "line: is a folder");
        row("a file that is missing", "", "@ none.ys", "none.ys: no such file");
        row("a pipe is not waited for", "mkfifo p.ys", "@ p.ys", "p.ys: is no plain file");
        row("a link that leads to itself", "ln -s l.ys l.ys", "@ l.ys", "l.ys: no such file");
        row("the name of another folder's file", "", "cd line && @ a.ys", "a.ys: no such file");
        row("somebody else's", "chmod 755 .; chmod 000 a.ys", "$user @ a.ys",
            "a.ys: Permission denied");
        row("an empty name", "", "@ ''", ": no such file");
        row("a project file", "cp a.ys line.yslib", "@ line.yslib",
            "line.yslib: is a project file; quorvanectl project check reads those");
        row("a file that cannot be read to its end", "", "@ /proc/self/mem",
            "/proc/self/mem: Input/output error");
        row("a library that is missing", "", "@ a.ys --library none.ini", "none.ini: no such file");
        row("a library that is a folder", "", "@ a.ys --library line", "line: is a folder");
        row("a library that is a pipe", "mkfifo l.ini", "@ a.ys --library l.ini",
            "l.ini: is no plain file");
        row("an empty name for the library", "", "@ a.ys --library ''",
            "--library is given an empty value; see quorvanectl script %1 --help");
        row("a library of somebody else's", "chmod 755 .; echo >l.ini; chmod 000 l.ini",
            "$user @ a.ys --library l.ini", "l.ini: Permission denied");
        row("of two libraries the last, which is missing", "echo >l.ini",
            "@ a.ys --library l.ini --library none.ini", "none.ini: no such file");
        row("of two faults the library's is told", "", "@ none.ys --library none.ini",
            "none.ini: no such file");
    }
}

void ScriptMistakesTest::aFileThatCannotBeUsed() {
    support::expectRefusal(deskOfRow());
}

void ScriptMistakesTest::wrongWords_data() {
    support::addRefusals();
    const QString seeHelp = "; see quorvanectl script %1 --help";
    for (const QString &command : allCommands) {
        const auto row = [&command](const QString &name, const QString &arrangement,
                                    const QString &words, const QString &text) {
            refusalOf(command, name, arrangement, words, text);
        };
        row("no script", "", "@", "script %1 takes FILE.ys" + seeHelp);
        row("two scripts", "", "@ a.ys a.ys", "script %1 takes FILE.ys" + seeHelp);
        row("a name with a blank and no quotes", "cp a.ys 'my line.ys'", "@ my line.ys",
            "script %1 takes FILE.ys" + seeHelp);
        row("a name that begins with a dash", "cp a.ys ./-a.ys", "@ -a.ys",
            "Unknown options: a, ., y, s" + support::behindDashes + seeHelp);
        row("a format of another command", "", "@ a.ys --format sarif",
            "no format 'sarif'; there are: text, json");
        row("an empty format", "", "@ a.ys --format ''",
            "--format is given an empty value" + seeHelp);
        row("a name to write to", "", "@ a.ys --out x", "Unknown option 'out'" + seeHelp);
    }
}

void ScriptMistakesTest::wrongWords() {
    support::expectRefusal(deskOfRow());
}

void ScriptMistakesTest::aScriptWithoutTokensOrATree_data() {
    support::addRefusals();
    for (const QString &command : {QString("tokens"), QString("tree")}) {
        const auto row = [&command](const QString &name, const QString &arrangement,
                                    const QString &words, const QString &text) {
            refusalOf(command, name, arrangement, words, text);
        };
        row("in UTF-16", "iconv -t UTF-16LE a.ys >u.ys", "@ u.ys",
            "u.ys:1:2: YS100 无法识别的字符");
        row("in UTF-16, for programs", "iconv -t UTF-16LE a.ys >u.ys", "@ u.ys --format json",
            "u.ys:1:2: YS100 无法识别的字符");
        row("a package in its place", R"(printf 'PK\003\004' >a.zip)", "@ a.zip",
            "a.zip:1:3: YS100 无法识别的字符");
        row("a semicolon of a Chinese keyboard", "echo 'int a；' >a.ys", "@ a.ys",
            "a.ys:1:6: YS100 无法识别的字符");
        row("in the last line of many",
            R"(printf 'int a;\n%.0s' $(seq 999) >a.ys; echo '$' >>a.ys)", "@ a.ys",
            "a.ys:1000:1: YS100 无法识别的字符");
        row("in a folder with a blank and Chinese", "mkdir '产 线'; echo 'a $' >'产 线/主 程.ys'",
            "@ '产 线/主 程.ys'", "产 线/主 程.ys:1:3: YS100 无法识别的字符");
        row("under a name with a line feed, which is spelled out", "echo 'a $' >'b\n.ys'",
            "@ 'b\n.ys'", "b\\n.ys:1:3: YS100 无法识别的字符");
    }
    refusal("tree: an if without its brackets, which is a list of tokens all the same",
            "echo 'if a { }' >a.ys", "@ a.ys",
            "a.ys:1:4: YS200 if 语句不完整，应为 if(条件) { ... }");
}

void ScriptMistakesTest::aScriptWithoutTokensOrATree() {
    support::expectRefusal(deskOfRow());
}

void ScriptMistakesTest::whatCheckSaysOfAScript_data() {
    support::addOutcomes();
    outcome("check: behind a byte-order mark", R"(printf '\357\273\277int a;\n' >a.ys)", "@ a.ys",
            {0, "a.ys: clean\n"});
    outcome("check: in the encoding of an old editor",
            R"(printf '// \262\372\317\337\nint a;\n' >a.ys)", "@ a.ys", {0, "a.ys: clean\n"});
    outcome("check: with the line ends of Windows", R"(printf 'int a;\r\nint b;\r\n' >a.ys)",
            "@ a.ys", {0, "a.ys: clean\n"});
    outcome("check: in UTF-16, which nobody reads", "iconv -t UTF-16LE a.ys >u.ys", "@ u.ys",
            {1, QString("u.ys:1:2: YS100 无法识别的字符\n    i%1n%1t%1 %1a%1;%1\n     ^\n")
                    .arg(QChar(QChar::ReplacementCharacter))});
    outcome("check: a package in its place", R"(printf 'PK\003\004' >a.zip)", "@ a.zip",
            {1, QString("a.zip:1:3: YS100 无法识别的字符\n    PK%1%1\n      ^\n")
                    .arg(QChar(QChar::ReplacementCharacter))});
    outcome("check: a semicolon of a Chinese keyboard", "echo 'int a；' >a.ys", "@ a.ys",
            {1, "a.ys:1:6: YS100 无法识别的字符\n    int a；\n         ^\n"});
    outcome("check: quotes of a word processor", "echo 'a = “x”;' >a.ys", "@ a.ys",
            {1, "a.ys:1:5: YS100 无法识别的字符\n    a = “x”;\n        ^\n"});
    outcome("check: the first of two faults", R"(printf 'a $\nb $\n' >a.ys)", "@ a.ys",
            {1, "a.ys:1:3: YS100 无法识别的字符\n    a $\n      ^\n"});
    outcome("check: in a folder with a blank and Chinese",
            "mkdir '产 线'; echo 'a $' >'产 线/主 程.ys'", "@ '产 线/主 程.ys'",
            {1, "产 线/主 程.ys:1:3: YS100 无法识别的字符\n    a $\n      ^\n"});
    outcome("check: a line feed in its name is spelled out", "cp a.ys 'b\n.ys'", "@ 'b\n.ys'",
            {0, "b\\n.ys: clean\n"});
    outcome("check: a name that begins with a dash, behind two dashes", "cp a.ys ./-a.ys",
            "@ -- -a.ys", {0, "-a.ys: clean\n"});
    outcome("check: from another folder", "", "cd line && @ ../a.ys", {0, "../a.ys: clean\n"});
    outcome("check: of two formats the last counts", "", "@ a.ys --format json --format text",
            {0, "a.ys: clean\n"});
    outcome("check: an empty one, for programs", ": >a.ys", "@ a.ys --format json",
            {0, "{\n    \"diagnostics\": [\n    ],\n    \"passed\": true,\n    \"path\": "
                "\"a.ys\",\n    \"warnings\": "
                "[\n    ]\n}\n"});
    outcome("check: a fault, for programs", "echo 'a $' >a.ys", "@ ./a.ys --format json", {1, R"({
    "diagnostics": [
        {
            "code": "YS100",
            "column": 3,
            "endColumn": 3,
            "line": 1,
            "message": "无法识别的字符",
            "severity": 0
        }
    ],
    "passed": false,
    "path": "./a.ys",
    "warnings": [
    ]
}
)"});
    const QString leftOpen = "Left open in scripts. The launcher does not look for these, and only "
                             "--strict counts them:\n"
                             "./a.ys:1:5: open-string the text that begins here is still open at "
                             "the end of the file\n    a = \"b\n        ^\n";
    outcome("check: a text left open", "echo 'a = \"b' >a.ys", "@ ./a.ys", {0, leftOpen});
    outcome("check: a text left open, which counts", "echo 'a = \"b' >a.ys", "@ --strict ./a.ys",
            {1, leftOpen});
    outcome("check: nothing left open, where it counts", "", "@ --strict a.ys",
            {0, "a.ys: clean\n"});
    outcome("check: left open, below the error that it makes", "echo 'function f() {' >a.ys",
            "@ a.ys",
            {1, "a.ys:2:1: YS200 缺少匹配的 '}'\n    \n    ^\n\n" + leftOpen.section('\n', 0, 0) +
                    "\na.ys:1:14: open-bracket this '{' is still open at the end of the file\n"
                    "    function f() {\n                 ^\n"});
    outcome("check: the library and the script are one file", "", "@ a.ys --library a.ys",
            {0, "a.ys: clean\n"});
}

void ScriptMistakesTest::whatCheckSaysOfAScript() {
    support::expectOutcome(deskOfRow());
}

void ScriptMistakesTest::theTokensOfAScript_data() {
    support::addOutcomes();
    const QString text = "1:1 KwInt \"int\"\n1:5 Identifier \"a\"\n1:6 Semicolon \";\"\n1:7 "
                         "Newline \"\\n\"\n2:1 Eof \"\"\n";
    outcome("tokens: behind a byte-order mark", R"(printf '\357\273\277int a;\n' >a.ys)", "@ a.ys",
            {0, text});
    outcome("tokens: with the line ends of Windows, of which the first half has a column",
            R"(printf 'int a;\r\n' >a.ys)", "@ a.ys", {0, QString(text).replace("1:7", "1:8")});
    outcome("tokens: a name that begins with a dash, behind two dashes", "cp a.ys ./-a.ys",
            "@ -- -a.ys", {0, text});
    outcome("tokens: from another folder", "", "cd line && @ ../a.ys", {0, text});
    outcome("tokens: of two formats the last counts", "", "@ a.ys --format json --format text",
            {0, text});
    outcome("tokens: an empty one", ": >a.ys", "@ a.ys", {0, "1:1 Eof \"\"\n"});
    outcome("tokens: an empty one, for programs", ": >a.ys", "@ a.ys --format json",
            {0, "[[0,\"\",1,1]]\n"});
    outcome("tokens: in the encoding of an old editor, counted in characters",
            R"(printf '"\262\372\317\337";' >a.ys)", "@ a.ys",
            {0, "1:1 StringLiteral \"\\\"产线\\\"\"\n1:5 Semicolon \";\"\n1:6 Eof \"\"\n"});
    outcome("tokens: a text without its end takes the rest", R"(printf 'a = "x\nb = 1\n' >a.ys)",
            "@ a.ys --format json",
            {0, R"([[2,"a",1,1],[42,"=",1,3],[5,"\"x\nb = 1\n",1,5],[0,"",3,1]])"
                "\n"});
}

void ScriptMistakesTest::theTokensOfAScript() {
    support::expectOutcome(deskOfRow());
}

void ScriptMistakesTest::theTreeOfAScript_data() {
    support::addOutcomes();
    const QString text = "int a\n";
    outcome("tree: behind a byte-order mark", R"(printf '\357\273\277int a;\n' >a.ys)", "@ a.ys",
            {0, text});
    outcome("tree: with the line ends of Windows", R"(printf 'int a;\r\n' >a.ys)", "@ a.ys",
            {0, text});
    outcome("tree: a name that begins with a dash, behind two dashes", "cp a.ys ./-a.ys",
            "@ -- -a.ys", {0, text});
    outcome("tree: from another folder", "", "cd line && @ ../a.ys", {0, text});
    outcome("tree: of two formats the last counts", "", "@ a.ys --format json --format text",
            {0, text});
    outcome("tree: an empty one", ": >a.ys", "@ a.ys", {0, ""});
    outcome("tree: an empty one, for programs", ": >a.ys", "@ a.ys --format json",
            {0, R"({"type":"Program","functions":[],"statements":[],"sourcePath":""})"
                "\n"});
    outcome("tree: a text without its end takes the rest", R"(printf 'a = "x\nb = 1\n' >a.ys)",
            "@ a.ys", {0, "a = \"x\nb = 1\n"});
}

void ScriptMistakesTest::theTreeOfAScript() {
    support::expectOutcome(deskOfRow());
}

QUORVANE_TEST_MAIN(QCoreApplication, ScriptMistakesTest)
#include "script_mistakes_test.moc"
