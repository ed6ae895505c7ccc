// script tree in the hands of whoever writes a tool beside it: no half tree.
#include "desk.h"
#include "support/staged_main.h"

#include <QCoreApplication>

using support::Desk;
using support::outcome;
using support::refusal;

namespace {

const QString command = "quorvanectl script tree";
const QString seeHelp = "; see quorvanectl script tree --help";

support::FileTree engineersFiles() {
    return {{"a.ys", "int a;\n"}, {"line/", ""}};
}

} // namespace

class ScriptTreeTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aFileThatCannotBeUsed_data();
    void aFileThatCannotBeUsed();
    void wrongWords_data();
    void wrongWords();
    void aScriptThatHasNone_data();
    void aScriptThatHasNone();
    void whatIsPrinted_data();
    void whatIsPrinted();
};

void ScriptTreeTest::aFileThatCannotBeUsed_data() {
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

void ScriptTreeTest::aFileThatCannotBeUsed() {
    const Desk desk(command, engineersFiles());
    support::expectRefusal(desk);
}

void ScriptTreeTest::wrongWords_data() {
    support::addRefusals();
    refusal("no script", "", "@", "script tree takes FILE.ys" + seeHelp);
    refusal("two scripts", "", "@ a.ys a.ys", "script tree takes FILE.ys" + seeHelp);
    refusal("a name with a blank and no quotes", "cp a.ys 'my line.ys'", "@ my line.ys",
            "script tree takes FILE.ys" + seeHelp);
    refusal("a name that begins with a dash", "cp a.ys ./-a.ys", "@ -a.ys",
            "Unknown options: a, ., y, s" + seeHelp);
    refusal("a format of another command", "", "@ a.ys --format sarif",
            "no format 'sarif'; there are: text, json");
    refusal("an empty format", "", "@ a.ys --format ''", "no format ''; there are: text, json");
    refusal("a name to write to", "", "@ a.ys --out x", "Unknown option 'out'" + seeHelp);
}

void ScriptTreeTest::wrongWords() {
    const Desk desk(command, engineersFiles());
    support::expectRefusal(desk);
}

void ScriptTreeTest::aScriptThatHasNone_data() {
    support::addRefusals();
    refusal("in UTF-16", "iconv -t UTF-16LE a.ys >u.ys", "@ u.ys",
            "u.ys:1:1: YS100 无法识别的字符");
    refusal("in UTF-16, for programs", "iconv -t UTF-16LE a.ys >u.ys", "@ u.ys --format json",
            "u.ys:1:1: YS100 无法识别的字符");
    refusal("a package in its place", R"(printf 'PK\003\004' >a.zip)", "@ a.zip",
            "a.zip:1:3: YS100 无法识别的字符");
    refusal("a semicolon of a Chinese keyboard", "echo 'int a；' >a.ys", "@ a.ys",
            "a.ys:1:6: YS100 无法识别的字符");
    refusal("in the last line of many",
            R"(printf 'int a;\n%.0s' $(seq 999) >a.ys; echo '$' >>a.ys)", "@ a.ys",
            "a.ys:1000:1: YS100 无法识别的字符");
    refusal("in a folder with a blank and Chinese", "mkdir '产 线'; echo 'a $' >'产 线/主 程.ys'",
            "@ '产 线/主 程.ys'", "产 线/主 程.ys:1:3: YS100 无法识别的字符");
    refusal("under a name with a line feed, which is spelled out", "echo 'a $' >'b\n.ys'",
            "@ 'b\n.ys'", "b\\n.ys:1:3: YS100 无法识别的字符");
    refusal("an if without its brackets, which is a list of tokens all the same",
            "echo 'if a { }' >a.ys", "@ a.ys",
            "a.ys:1:4: YS200 if 语句不完整，应为 if(条件) { ... }");
}

void ScriptTreeTest::aScriptThatHasNone() {
    const Desk desk(command, engineersFiles());
    support::expectRefusal(desk);
}

void ScriptTreeTest::whatIsPrinted_data() {
    support::addOutcomes();
    const QString text = "int a\n";
    outcome("behind a byte-order mark", R"(printf '\357\273\277int a;\n' >a.ys)", "@ a.ys",
            {0, text});
    outcome("with the line ends of Windows", R"(printf 'int a;\r\n' >a.ys)", "@ a.ys", {0, text});
    outcome("a name that begins with a dash, behind two dashes", "cp a.ys ./-a.ys", "@ -- -a.ys",
            {0, text});
    outcome("from another folder", "", "cd line && @ ../a.ys", {0, text});
    outcome("of two formats the last counts", "", "@ a.ys --format json --format text", {0, text});
    outcome("an empty one", ": >a.ys", "@ a.ys", {0, ""});
    outcome("an empty one, for programs", ": >a.ys", "@ a.ys --format json",
            {0, R"({"type":"Program","functions":[],"statements":[],"sourcePath":""})"
                "\n"});
    outcome("a text without its end takes the rest", R"(printf 'a = "x\nb = 1\n' >a.ys)", "@ a.ys",
            {0, "a = \"x\nb = 1\n"});
}

void ScriptTreeTest::whatIsPrinted() {
    const Desk desk(command, engineersFiles());
    support::expectOutcome(desk);
}

QUORVANE_TEST_MAIN(QCoreApplication, ScriptTreeTest)
#include "script_tree_mistakes_test.moc"
