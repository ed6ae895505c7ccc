// project check in the hands of an engineer: another file than the project, a project that was copied
// by half, and scripts that cannot be read.
#include "desk.h"
#include "small_project.h"
#include "support/staged_main.h"

#include <QCoreApplication>

using support::Desk;
using support::outcome;
using support::refusal;

namespace {

const QString command = "quorvanectl project check";
const QString seeHelp = "; see quorvanectl project check --help";

support::FileTree engineersFiles() {
    support::FileTree files{{"out/", ""}};
    const support::FileTree project = support::smallProject();
    for (auto file = project.begin(); file != project.end(); ++file)
        files.insert("line3/" + file.key(), file.value());
    return files;
}

QString summary(const QString &file, const QString &counts) {
    return "\n" + file + ": " + counts + "\n";
}

} // namespace

class ProjectCheckTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aFileThatCannotBeUsed_data();
    void aFileThatCannotBeUsed();
    void wrongWords_data();
    void wrongWords();
    void whatIsSaidOfAProject_data();
    void whatIsSaidOfAProject();
};

void ProjectCheckTest::aFileThatCannotBeUsed_data() {
    support::addRefusals();
    refusal("the project's folder", "", "@ line3", "line3: is a folder");
    refusal("a file that is missing", "", "@ line3/line4.yslib", "line3/line4.yslib: no such file");
    refusal("a file that is missing, for a build server", "", "@ none.yslib --format sarif",
            "none.yslib: no such file");
    refusal("a pipe is not waited for", "mkfifo p.yslib", "@ p.yslib", "p.yslib: is no plain file");
    refusal("a script", "", "@ line3/scripts/main.ys",
            "line3/scripts/main.ys: JSON 无效：illegal value (line 1, column 1)");
    refusal("UTF-16", "iconv -t UTF-16 line3/line3.yslib >line3/u.yslib", "@ line3/u.yslib",
            "line3/u.yslib: JSON 无效：illegal value (line 1, column 1)");
    refusal("a fault, with its place", R"(printf '{\n  "project": {"name" "x"}\n}\n' >p.yslib)",
            "@ p.yslib", "p.yslib: JSON 无效：missing name separator (line 2, column 22)");
    refusal("a fault, for programs", R"(printf '{\n  "project": {"name" "x"}\n}\n' >p.yslib)",
            "@ p.yslib --format json",
            "p.yslib: JSON 无效：missing name separator (line 2, column 22)");
    refusal("a zero byte behind it", R"(printf '{}\0' >p.yslib)", "@ p.yslib",
            "p.yslib: JSON 无效：garbage at the end of the document (line 1, column 3)");
    refusal("a list of projects", "echo '[{}]' >p.yslib", "@ p.yslib --format json",
            "p.yslib: JSON 无效：no error occurred (it is no JSON object)");
    refusal("brackets without end",
            "printf '{\"a\":' >p.yslib; head -c 3000 /dev/zero | tr '\\0' '[' "
            ">>p.yslib",
            "@ p.yslib", "p.yslib: JSON 无效：too deeply nested document (line 1, column 1029)");
    refusal("larger than any project", "truncate -s 65M p.yslib", "@ p.yslib",
            "p.yslib: is larger than 64 MiB");
    refusal("a link to itself", "ln -s p.yslib p.yslib", "@ p.yslib", "p.yslib: no such file");
    refusal("a variable of a script that is not set", "", "@ \"$LINE\"", ": no such file");
    refusal("a device, which would never end", "ln -s /dev/zero p.yslib", "@ p.yslib",
            "p.yslib: is no plain file");
    refusal("a script that is a folder", "cd line3/scripts; rm main.ys; mkdir main.ys",
            "@ line3/line3.yslib", "@here/line3/scripts/main.ys: is a folder");
    refusal("a script that is a pipe", "cd line3/scripts; rm main.ys; mkfifo main.ys",
            "@ line3/line3.yslib", "@here/line3/scripts/main.ys: is no plain file");
    refusal("somebody else's", "chmod 755 .; chmod 000 line3/line3.yslib",
            "$user @ line3/line3.yslib", "line3/line3.yslib: Permission denied");
    refusal("a script of somebody else's", "chmod 755 .; chmod 000 line3/scripts/main.ys",
            "$user @ line3/line3.yslib", "@here/line3/scripts/main.ys: Permission denied");
    const QString noUtf8 = ": a name on the way there is no UTF-8";
    const QString moved = "mkdir $(printf 'd\\377'); mv line3 $(printf 'd\\377')";
    refusal("below a folder whose name is no UTF-8", moved,
            "@ $(printf 'd\\377')/line3/line3.yslib",
            QString("d") + QChar(QChar::ReplacementCharacter) + "/line3/line3.yslib" + noUtf8);
    refusal("from within such a folder", moved, "cd d*/line3 && @ line3.yslib",
            "line3.yslib" + noUtf8);
    refusal("a library that is missing", "", "@ line3/line3.yslib --library none.ini",
            "none.ini: no such file");
    refusal("a library that is a folder", "", "@ line3/line3.yslib --library line3",
            "line3: is a folder");
}

void ProjectCheckTest::aFileThatCannotBeUsed() {
    support::expectRefusal(Desk(command, engineersFiles()));
}

void ProjectCheckTest::wrongWords_data() {
    support::addRefusals();
    refusal("no project", "", "@", "project check takes FILE.yslib" + seeHelp);
    refusal("two projects", "", "@ line3/line3.yslib line3/line3.yslib",
            "project check takes FILE.yslib" + seeHelp);
    refusal("a name that begins with a dash", "cp line3/line3.yslib line3/-l.yslib",
            "cd line3 && @ -l.yslib",
            "Unknown options: l, ., y, s, l, i, b" + support::behindDashes + seeHelp);
    refusal("an empty name for the plug-in's folder", "", "@ line3/line3.yslib --core-plugin ''",
            "--core-plugin is given an empty value" + seeHelp);
    refusal("a format that is not there", "", "@ line3/line3.yslib --format yaml",
            "no format 'yaml'; there are: text, json, sarif");
    refusal("of two formats the last, which is not there", "",
            "@ line3/line3.yslib --format json --format JSON",
            "no format 'JSON'; there are: text, json, sarif");
    refusal("a value behind --strict", "", "@ line3/line3.yslib --strict=1",
            "Unexpected value after '--strict'" + seeHelp);
    refusal("a name to write to", "", "@ line3/line3.yslib --out x",
            "Unknown option 'out'" + seeHelp);
}

void ProjectCheckTest::wrongWords() {
    support::expectRefusal(Desk(command, engineersFiles()));
}

void ProjectCheckTest::whatIsSaidOfAProject_data() {
    support::addOutcomes();
    const QString line3 = "line3/line3.yslib";
    const QString clean = ": clean\n";
    const QString threeSpellings =
        R"(echo 'a = (1;' >m.ys; rm -r line3; printf '{"schemaVersion": 1, "project": {"name": "a", )"
        R"("displayName": "b", "createdAt": "c"}, "scripts": [{"id": "m", "path": "./m.ys", "role": )"
        R"("main"}, {"id": "n", "path": "m.ys", "role": "sub"}, {"id": "o", "path": "out/../m.ys", )"
        R"("role": "sub"}], "tasks": {"main": {"entryScriptId": "m"}}}' >t.yslib)";
    const QString missing = ":5:40: [Error] scripts[0].path: 引用的文件不存在：";
    const QString unlisted =
        line3 + ":5:16: [Warning] scripts: 磁盘上的脚本未登记到 scripts[]：scripts/main.ys\n";
    outcome("behind a byte-order mark",
            R"(cd line3; (printf '\357\273\277'; cat line3.yslib) >b.yslib)", "@ line3/b.yslib",
            {0, "line3/b.yslib" + clean});
    outcome("with the line ends of Windows", R"(sed -i 's/$/\r/' line3/line3.yslib)",
            "@ line3/line3.yslib", {0, line3 + clean});
    outcome("from one of its folders", "", "cd line3/scripts && @ ../line3.yslib",
            {0, "../line3.yslib" + clean});
    outcome("in a folder with a blank and Chinese", "mv line3 '产 线'", "@ '产 线/line3.yslib'",
            {0, "产 线/line3.yslib" + clean});
    outcome("a name that begins with a dash, behind two dashes",
            "cp line3/line3.yslib line3/-l.yslib", "cd line3 && @ -- -l.yslib",
            {0, "-l.yslib" + clean});
    outcome("of two formats the last counts", "", "@ line3/line3.yslib --format json --format text",
            {0, line3 + clean});
    outcome("a file in place of the plug-in's folder", "",
            "@ line3/line3.yslib --core-plugin line3/line3.yslib",
            {1, "Core plugin missing: line3/line3.yslib/CoreOperators.dll\n" +
                    summary(line3, "1 error, 0 warnings, 0 syntax errors")});
    outcome(
        "copied without its folder", "cp line3/line3.yslib out", "@ out/line3.yslib",
        {1, "out/line3.yslib" + missing +
                "scripts/main.ys\nout/line3.yslib:8:45: [Error] hardware.cameras[0].configPath: "
                "引用的文件不存在：相机/设置 1.json\n" +
                summary("out/line3.yslib", "2 errors, 0 warnings, 0 syntax errors")});
    outcome("a script in three spellings, which is one", threeSpellings, "@ t.yslib",
            {0, "Left open in scripts. The launcher does not look for these, and only --strict "
                "counts them:\nm.ys:1:5: open-bracket this '(' is still open at the end of the "
                "file\n    a = (1;\n        ^\n" +
                    summary("t.yslib", "0 errors, 0 warnings, 0 syntax errors, 1 left open")});
    outcome("the same, strictly", threeSpellings, "@ t.yslib --strict --format json", {1, R"({
    "issues": [
    ],
    "project": "t.yslib",
    "scripts": [
        {
            "diagnostics": [
            ],
            "passed": true,
            "path": "./m.ys",
            "warnings": [
                {
                    "code": "open-bracket",
                    "column": 5,
                    "endColumn": 0,
                    "line": 1,
                    "message": "this '(' is still open at the end of the file",
                    "severity": 1
                }
            ]
        }
    ]
}
)"});
    outcome("entries that are no scripts",
            R"(printf '{"schemaVersion": 1, "scripts": [5, {"id": 5, "path": true}]}' >e.yslib)",
            "@ e.yslib",
            {1, "e.yslib:1:1: [Error] project: 缺少 project 对象\n"
                "e.yslib:1:34: [Error] scripts[0].id: 缺少 script id\n"
                "e.yslib:1:34: [Error] scripts[0].path: 缺少 script path\n"
                "e.yslib:1:34: [Error] scripts[0].role: 缺少 script role\n"
                "e.yslib:1:44: [Error] scripts[1].id: 缺少 script id\n"
                "e.yslib:1:55: [Error] scripts[1].path: 缺少 script path\n"
                "e.yslib:1:37: [Error] scripts[1].role: 缺少 script role\n"
                "e.yslib:1:1: [Error] tasks: 缺少 tasks 对象\n" +
                    summary("e.yslib", "8 errors, 0 warnings, 0 syntax errors")});
    outcome("a key twice, of which the last counts",
            R"(sed -i 's/"schemaVersion": 1,/"schemaVersion": 1, "schemaVersion": 2,/' )" + line3,
            "@ " + line3,
            {1, line3 + ":2:42: [Error] schemaVersion: 不支持的 schemaVersion；期望值为 1\n" +
                    summary(line3, "1 error, 0 warnings, 0 syntax errors")});
    outcome("scripts that import each other and define the same",
            R"(cd line3/scripts; printf 'import "two.ys";\nglobal int cam1_x = 3;\n' >main.ys; )"
            R"(printf 'import "main.ys";\nglobal int cam1_x = 4;\n' >two.ys; )"
            R"(sed -i 's#"role": "main"}#&, {"id": "t", "path": "scripts/two.ys", )"
            R"("role": "module"}#' ../line3.yslib)",
            "@ " + line3,
            {1, line3 + ":5:16: [Error] scripts: 检测到 import 循环依赖\n" + line3 +
                    ":5:16: [Error] scripts: 跨脚本 global 'cam1_x' 重复定义：scripts/main.ys:2, "
                    "scripts/two.ys:2\n" +
                    summary(line3, "2 errors, 0 warnings, 0 syntax errors")});
    outcome("a script's name that steers a terminal",
            R"(sed -i 's#scripts/main.ys#\\u001b[2J.ys#' )" + line3, "@ " + line3,
            {1, line3 + missing + "\\x1b[2J.ys\n" + unlisted +
                    summary(line3, "1 error, 1 warning, 0 syntax errors")});
    outcome("the plug-in alone is missing, for programs", "",
            "@ line3/line3.yslib --core-plugin out --format json", {1, R"({
    "issues": [
        {
            "message": "Core plugin missing: out/CoreOperators.dll",
            "path": "",
            "severity": 0
        }
    ],
    "project": "line3/line3.yslib",
    "scripts": [
        {
            "diagnostics": [
            ],
            "passed": true,
            "path": "scripts/main.ys",
            "warnings": [
            ]
        }
    ]
}
)"});
    outcome("a script's name in other letters",
            "sed -i 's#scripts/main.ys#Scripts/Main.ys#' line3/line3.yslib", "@ line3/line3.yslib",
            {1, line3 + missing + "Scripts/Main.ys\n" + unlisted +
                    summary(line3, "1 error, 1 warning, 0 syntax errors")});
    outcome(
        "a script by its whole path",
        "cp line3/scripts/main.ys out; "
        "sed -i \"s#scripts/main.ys#$PWD/out/main.ys#\" line3/line3.yslib",
        "@ line3/line3.yslib",
        {0,
         line3 +
             ":5:40: [Warning] scripts[0].path: path 疑似绝对路径；请使用相对 yslib 目录的路径\n" +
             unlisted + summary(line3, "0 errors, 2 warnings, 0 syntax errors")});
    outcome("a script's path with the backslash of Windows",
            R"(sed -i 's#scripts/main.ys#scripts\\\\main.ys#' line3/line3.yslib)",
            "@ line3/line3.yslib", {0, line3 + clean});
    outcome("a script in UTF-16", "cd line3/scripts; iconv -t UTF-16LE main.ys >u; mv u main.ys",
            "@ line3/line3.yslib --format json", {1, R"({
    "issues": [
    ],
    "project": "line3/line3.yslib",
    "scripts": [
        {
            "diagnostics": [
                {
                    "code": "YS100",
                    "column": 2,
                    "endColumn": 3,
                    "line": 1,
                    "message": "无法识别的字符",
                    "severity": 0
                }
            ],
            "passed": false,
            "path": "scripts/main.ys",
            "warnings": [
            ]
        }
    ]
}
)"});
    outcome("any other JSON", "echo '{}' >m.yslib", "@ m.yslib",
            {1, "m.yslib:1:1: [Error] schemaVersion: 缺少 schemaVersion\n"
                "m.yslib:1:1: [Error] project: 缺少 project 对象\n"
                "m.yslib:1:1: [Error] scripts: scripts[] 至少包含一项\n"
                "m.yslib:1:1: [Error] tasks: 缺少 tasks 对象\n" +
                    summary("m.yslib", "4 errors, 0 warnings, 0 syntax errors")});
}

void ProjectCheckTest::whatIsSaidOfAProject() {
    support::expectOutcome(Desk(command, engineersFiles()));
}

QUORVANE_TEST_MAIN(QCoreApplication, ProjectCheckTest)
#include "project_check_mistakes_test.moc"
