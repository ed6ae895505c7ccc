// script check in the hands of an engineer: files of another kind, encoding or place.
#include "desk.h"
#include "support/staged_main.h"

#include <QCoreApplication>

using support::Desk;
using support::outcome;
using support::refusal;

namespace {

const QString command = "quorvanectl script check";
const QString seeHelp = "; see quorvanectl script check --help";

support::FileTree engineersFiles() {
    return {{"a.ys", "int a;\n"}, {"line/", ""}};
}

} // namespace

class ScriptCheckTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aFileThatCannotBeUsed_data();
    void aFileThatCannotBeUsed();
    void wrongWords_data();
    void wrongWords();
    void whatIsSaidOfAScript_data();
    void whatIsSaidOfAScript();
};

void ScriptCheckTest::aFileThatCannotBeUsed_data() {
    support::addRefusals();
    refusal("a folder", "", "@ line", "line: is a folder");
    refusal("a file that is missing", "", "@ none.ys", "none.ys: no such file");
    refusal("a pipe is not waited for", "mkfifo p.ys", "@ p.ys", "p.ys: is no plain file");
    refusal("a link that leads to itself", "ln -s l.ys l.ys", "@ l.ys", "l.ys: no such file");
    refusal("the name of another folder's file", "", "cd line && @ a.ys", "a.ys: no such file");
    refusal("somebody else's", "chmod 755 .; chmod 000 a.ys", "$user @ a.ys",
            "a.ys: Permission denied");
    refusal("an empty name", "", "@ ''", ": no such file");
    refusal("a library that is missing", "", "@ a.ys --library none.ini", "none.ini: no such file");
    refusal("a library that is a folder", "", "@ a.ys --library line", "line: is a folder");
    refusal("a library that is a pipe", "mkfifo l.ini", "@ a.ys --library l.ini",
            "l.ini: is no plain file");
    refusal("an empty name for the library", "", "@ a.ys --library ''", ": no such file");
    refusal("a library of somebody else's", "chmod 755 .; echo >l.ini; chmod 000 l.ini",
            "$user @ a.ys --library l.ini", "l.ini: Permission denied");
    refusal("of two libraries the last, which is missing", "echo >l.ini",
            "@ a.ys --library l.ini --library none.ini", "none.ini: no such file");
    refusal("of two faults the library's is told", "", "@ none.ys --library none.ini",
            "none.ini: no such file");
}

void ScriptCheckTest::aFileThatCannotBeUsed() {
    const Desk desk(command, engineersFiles());
    support::expectRefusal(desk);
}

void ScriptCheckTest::wrongWords_data() {
    support::addRefusals();
    refusal("no script", "", "@", "script check takes FILE.ys" + seeHelp);
    refusal("two scripts", "", "@ a.ys a.ys", "script check takes FILE.ys" + seeHelp);
    refusal("a name with a blank and no quotes", "cp a.ys 'my line.ys'", "@ my line.ys",
            "script check takes FILE.ys" + seeHelp);
    refusal("a name that begins with a dash", "cp a.ys ./-a.ys", "@ -a.ys",
            "Unknown options: a, ., y, s" + seeHelp);
    refusal("a format of another command", "", "@ a.ys --format sarif",
            "no format 'sarif'; there are: text, json");
    refusal("an empty format", "", "@ a.ys --format ''", "no format ''; there are: text, json");
    refusal("a name to write to", "", "@ a.ys --out x", "Unknown option 'out'" + seeHelp);
}

void ScriptCheckTest::wrongWords() {
    const Desk desk(command, engineersFiles());
    support::expectRefusal(desk);
}

void ScriptCheckTest::whatIsSaidOfAScript_data() {
    support::addOutcomes();
    outcome("behind a byte-order mark", R"(printf '\357\273\277int a;\n' >a.ys)", "@ a.ys",
            {0, "a.ys: clean\n"});
    outcome("in the encoding of an old editor", R"(printf '// \262\372\317\337\nint a;\n' >a.ys)",
            "@ a.ys", {0, "a.ys: clean\n"});
    outcome("with the line ends of Windows", R"(printf 'int a;\r\nint b;\r\n' >a.ys)", "@ a.ys",
            {0, "a.ys: clean\n"});
    outcome("in UTF-16, which nobody reads", "iconv -t UTF-16LE a.ys >u.ys", "@ u.ys",
            {1, QString("u.ys:1:1: YS100 无法识别的字符\n    i%1n%1t%1 %1a%1;%1\n    ^\n")
                    .arg(QChar(QChar::ReplacementCharacter))});
    outcome("a package in its place", R"(printf 'PK\003\004' >a.zip)", "@ a.zip",
            {1, QString("a.zip:1:3: YS100 无法识别的字符\n    PK%1%1\n      ^\n")
                    .arg(QChar(QChar::ReplacementCharacter))});
    outcome("a semicolon of a Chinese keyboard", "echo 'int a；' >a.ys", "@ a.ys",
            {1, "a.ys:1:6: YS100 无法识别的字符\n    int a；\n         ^\n"});
    outcome("quotes of a word processor", "echo 'a = “x”;' >a.ys", "@ a.ys",
            {1, "a.ys:1:5: YS100 无法识别的字符\n    a = “x”;\n        ^\n"});
    outcome("the first of two faults", R"(printf 'a $\nb $\n' >a.ys)", "@ a.ys",
            {1, "a.ys:1:3: YS100 无法识别的字符\n    a $\n      ^\n"});
    outcome("in a folder with a blank and Chinese", "mkdir '产 线'; echo 'a $' >'产 线/主 程.ys'",
            "@ '产 线/主 程.ys'",
            {1, "产 线/主 程.ys:1:3: YS100 无法识别的字符\n    a $\n      ^\n"});
    outcome("a line feed in its name is spelled out", "cp a.ys 'b\n.ys'", "@ 'b\n.ys'",
            {0, "b\\n.ys: clean\n"});
    outcome("a name that begins with a dash, behind two dashes", "cp a.ys ./-a.ys", "@ -- -a.ys",
            {0, "-a.ys: clean\n"});
    outcome("from another folder", "", "cd line && @ ../a.ys", {0, "../a.ys: clean\n"});
    outcome("of two formats the last counts", "", "@ a.ys --format json --format text",
            {0, "a.ys: clean\n"});
    outcome(
        "an empty one, for programs", ": >a.ys", "@ a.ys --format json",
        {0,
         "{\n    \"diagnostics\": [\n    ],\n    \"passed\": true,\n    \"path\": \"a.ys\"\n}\n"});
    outcome("a fault, for programs", "echo 'a $' >a.ys", "@ ./a.ys --format json", {1, R"({
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
    "path": "./a.ys"
}
)"});
    outcome("the library and the script are one file", "", "@ a.ys --library a.ys",
            {0, "a.ys: clean\n"});
}

void ScriptCheckTest::whatIsSaidOfAScript() {
    const Desk desk(command, engineersFiles());
    support::expectOutcome(desk);
}

QUORVANE_TEST_MAIN(QCoreApplication, ScriptCheckTest)
#include "script_check_mistakes_test.moc"
