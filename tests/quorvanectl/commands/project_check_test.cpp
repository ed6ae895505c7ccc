// project check: its text, JSON and status for clean, warned and broken projects, and that it finds
// what the launcher itself says at a start.
#include "launcher/launcher_service.h"
#include "project/project_validator.h"
#include "run_tool.h"
#include "support/file_tree.h"
#include "support/platform.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QRegularExpression>
#include <QSignalSpy>

using support::Answer;
using support::FileTree;
using support::ProjectFolder;

namespace {

// A clean project, with what a row changes in the document behind it.
QByteArray
document(const QByteArray &more = QByteArray(),
         const QByteArray &scripts = R"({"id": "main", "path": "main.ys", "role": "main"})") {
    return R"({"schemaVersion": 1, "project": {"name": "line", "displayName": "Line", )"
           R"("createdAt": "2026-01-01"}, "scripts": [)" +
           scripts + R"(], "tasks": {"main": {"entryScriptId": "main"}})" + more + "}";
}

constexpr char badCharacter[] = "int a;\nb = 1 $ 2;\n";
const QString heading = "Syntax errors in scripts. The launcher does not look for these and would "
                        "start such a project:\n";
const QString badLine = "main.ys:2:7: YS100 无法识别的字符\n    b = 1 $ 2;\n          ^\n";

void write(const ProjectFolder &folder, const FileTree &tree) {
    support::writeTree(folder.path(""), tree);
}

// What is printed, without the places before the issues of the project.
QString withoutPlaces(QString printed) {
    static const QRegularExpression place("^.*: (?=\\[(Error|Warning)\\] )",
                                          QRegularExpression::MultilineOption);
    return printed.remove(place);
}

} // namespace

class ProjectCheckTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void asText_data();
    void asText();
    void placesThatCanBeOpened_data();
    void placesThatCanBeOpened();
    void whatIsLeftOpen_data();
    void whatIsLeftOpen();
    void theLauncherSaysTheSame();
    void asJson();
    void whatCannotBeUsed_data();
    void whatCannotBeUsed();
    void aPathInChineseIsReadInAnyLocale();
    void theDemoProjectIsClean();
};

void ProjectCheckTest::asText_data() {
    QTest::addColumn<FileTree>("files");
    QTest::addColumn<QString>("options");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("text");

    const FileTree clean{{"line.yslib", document()}, {"main.ys", "int a;\n"}};
    const FileTree warned{
        {"line.yslib", document()}, {"main.ys", "global int a;\n"}, {"other.ys", ""}};
    const FileTree broken{{"line.yslib", document(R"(, "models": {"runner": "no.json"})")},
                          {"main.ys", badCharacter},
                          {"other.ys", ""}};

    QTest::newRow("a clean project") << clean << "" << 0 << "line.yslib: clean\n";
    QTest::newRow("warnings do not stop a line")
        << warned << "" << 0 << "@warnings\n\nline.yslib: 0 errors, 2 warnings, 0 syntax errors\n";
    QTest::newRow("errors first, then warnings, then scripts")
        << broken << "" << 1
        << "@errors\n@warnings\n\n" + heading + badLine +
               "\nline.yslib: 1 error, 1 warning, 1 syntax error\n";
    QTest::newRow("a syntax error alone")
        << FileTree{{"line.yslib", document()}, {"main.ys", badCharacter}} << "" << 1
        << heading + badLine + "\nline.yslib: 0 errors, 0 warnings, 1 syntax error\n";
    QTest::newRow("the core plug-in is missing, below the other errors")
        << broken << "--core-plugin plugins" << 1
        << "@errors\nCore plugin missing: plugins/CoreOperators.dll\n@warnings\n\n" + heading +
               badLine + "\nline.yslib: 2 errors, 1 warning, 1 syntax error\n";
    QTest::newRow("the core plug-in is there")
        << FileTree{{"line.yslib", document()}, {"main.ys", ""}, {"plugins/CoreOperators.dll", ""}}
        << "--core-plugin plugins" << 0 << "line.yslib: clean\n";
    QTest::newRow("a script registered twice is told once")
        << FileTree{{"line.yslib",
                     document("", R"({"id": "main", "path": "main.ys", "role": "main"},
                                         {"id": "again", "path": "main.ys", "role": "sub"})")},
                    {"main.ys", badCharacter}}
        << "" << 1 << heading + badLine + "\nline.yslib: 0 errors, 0 warnings, 1 syntax error\n";
    QTest::newRow("a script that is missing is an error of the project")
        << FileTree{{"line.yslib", document()}} << "" << 1
        << "@errors\n\nline.yslib: 1 error, 0 warnings, 0 syntax errors\n";
}

// "@errors" and "@warnings" stand for the lines that the validator formats.
void ProjectCheckTest::asText() {
    QFETCH(FileTree, files);
    QFETCH(QString, options);
    QFETCH(int, status);
    QFETCH(QString, text);
    const ProjectFolder folder;
    write(folder, files);
    QVector<ProjectIssue> errors;
    QVector<ProjectIssue> warnings;
    for (const ProjectIssue &issue : validateProjectFile(folder.path("line.yslib")))
        (issue.severity == 0 ? errors : warnings).append(issue);
    text.replace("@errors", formatProjectIssues(errors));
    text.replace("@warnings", formatProjectIssues(warnings));
    const Answer answer =
        support::runLine("quorvanectl project check line.yslib " + options, folder.path(""));
    QCOMPARE(withoutPlaces(answer.out), text);
    QCOMPARE(answer.err, QString());
    QCOMPARE(answer.status, status);
}

// Each line begins with a path from where one stands.
void ProjectCheckTest::placesThatCanBeOpened_data() {
    QTest::addColumn<QString>("folder"); // where one stands, seen from the project's parent
    QTest::addColumn<QString>("project");
    QTest::addColumn<QString>("shown"); // the project's folder in the text
    QTest::newRow("beside the project") << "line"
                                        << "line.yslib"
                                        << "";
    QTest::newRow("above it") << "."
                              << "line/line.yslib"
                              << "line/";
    QTest::newRow("above it, said twice") << "."
                                          << "./line/line.yslib"
                                          << "./line/";
    QTest::newRow("in a folder of it") << "line/scripts"
                                       << "../line.yslib"
                                       << "../";
}

void ProjectCheckTest::placesThatCanBeOpened() {
    QFETCH(QString, folder);
    QFETCH(QString, project);
    QFETCH(QString, shown);
    const ProjectFolder parent;
    write(parent, {{"line/line.yslib", R"({
  "schemaVersion": 1,
  "project": {"name": "line", "displayName": "Line", "createdAt": "2026-01-01"},
  "scripts": [
    {"id": "main", "path": ".\\scripts\\main.ys", "role": "x"},
    {"id": "sub", "path": "./scripts/sub.ys"}
  ],
  "tasks": {"main": {"entryScriptId": "main"}}
}
)"},
                   {"line/scripts/main.ys", "global int a;\nb = 1 $ 2;\n"},
                   {"line/scripts/sub.ys", "}\n"}});
    const Answer answer = support::runProgram({"project", "check", project}, parent.path(folder));
    QString text =
        R"(@line.yslib:5:59: [Error] scripts[0].role: script role 必须为 main、sub 或 module
@line.yslib:6:5: [Error] scripts[1].role: 缺少 script role
@scripts/main.ys: [Warning] .\scripts\main.ys: global 变量 'a' 不符合 {camId}_{metric} 命名

Syntax errors in scripts. The launcher does not look for these and would start such a project:
@scripts/main.ys:2:7: YS100 无法识别的字符
    b = 1 $ 2;
          ^
@scripts/sub.ys:1:1: YS200 The script has a syntax error.
    }
    ^

#: 2 errors, 1 warning, 2 syntax errors
)";
    QCOMPARE(answer.out, text.replace('@', shown).replace('#', project));
    QCOMPARE(answer.err, QString());
}

// Told, and counted with --strict alone.
void ProjectCheckTest::whatIsLeftOpen_data() {
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("strictStatus");
    const QString leftOpen = "Left open in scripts. The launcher does not look for these, and only "
                             "--strict counts them:\n";
    const QString bracket = "main.ys:2:8: open-bracket this '(' is still open at the end of the "
                            "file\n    b = foo(1;\n           ^\n";
    QTest::newRow("nothing") << QByteArray("int a;\n") << "line.yslib: clean\n" << 0 << 0;
    QTest::newRow("a parenthesis")
        << QByteArray("int a;\nb = foo(1;\n")
        << leftOpen + bracket + "\nline.yslib: 0 errors, 0 warnings, 0 syntax errors, 1 left open\n"
        << 0 << 1;
    QTest::newRow("below a warning")
        << QByteArray("global int a;\nb = foo(1;\n")
        << "main.ys: [Warning] main.ys: global 变量 'a' 不符合 {camId}_{metric} 命名\n\n" +
               leftOpen + bracket +
               "\nline.yslib: 0 errors, 1 warning, 0 syntax errors, 1 left open\n"
        << 0 << 1;
    QTest::newRow("below the syntax error that it makes")
        << QByteArray("function f() {\n")
        << heading + "main.ys:2:1: YS200 缺少匹配的 '}'\n    \n    ^\n\n" + leftOpen +
               "main.ys:1:14: open-bracket this '{' is still open at the end of the file\n"
               "    function f() {\n                 ^\n"
               "\nline.yslib: 0 errors, 0 warnings, 1 syntax error, 1 left open\n"
        << 1 << 1;
}

void ProjectCheckTest::whatIsLeftOpen() {
    QFETCH(QByteArray, script);
    QFETCH(QString, text);
    const ProjectFolder folder;
    write(folder, {{"line.yslib", document()}, {"main.ys", script}});
    const Answer answer = support::runProgram({"project", "check", "line.yslib"}, folder.path(""));
    QCOMPARE(answer.out, text);
    QTEST(answer.status, "status");
    const Answer strict =
        support::runProgram({"project", "check", "--strict", "line.yslib"}, folder.path(""));
    QCOMPARE(strict.out, text);
    QTEST(strict.status, "strictStatus");
}

// What the launcher itself would say of the same project.
void ProjectCheckTest::theLauncherSaysTheSame() {
    const ProjectFolder folder;
    write(folder, {{"line.yslib", document(R"(, "models": {"runner": "a", "configs": [{}]},
                                                  "processGroups": [{"aggregate": 1}])")},
                   {"main.ys", ""}});
    LauncherService service;
    service.projectPath = folder.path("line.yslib");
    const QString plugins = QCoreApplication::applicationDirPath() + "/plugins";
    QDir().mkpath(plugins);
    QSignalSpy refused(&service, &LauncherService::precheckFailed);
    service.runStartFlow();
    QCOMPARE(refused.size(), 1);
    const QString said = refused.at(0).at(0).toString();
    const Answer answer = support::runProgram(
        {"project", "check", "--core-plugin", plugins, folder.path("line.yslib")}, folder.path(""));
    const QStringList findings = said.split('\n');
    // Between the launcher's first line and its last, which names its log.
    QCOMPARE(withoutPlaces(answer.out).split('\n').mid(0, findings.size() - 2),
             findings.mid(1, findings.size() - 2));
    QVERIFY(findings.contains("Core plugin missing: " + plugins + "/CoreOperators.dll"));
}

void ProjectCheckTest::asJson() {
    const ProjectFolder folder;
    write(folder, {{"line.yslib", document(R"(, "processGroups": [{"aggregate": 1}])",
                                           R"({"id": "main", "path": "main.ys", "role": "x"},
                                                  {"id": "sub", "path": "./sub.ys", "role": "sub"})")},
                   {"main.ys", badCharacter},
                   {"sub.ys", "int a;\na = (1;\n"}});
    const Answer answer = support::runLine(
        "quorvanectl project check line.yslib --core-plugin . --format json", folder.path(""));
    QCOMPARE(answer.status, 1);
    QCOMPARE(answer.err, QString());
    QCOMPARE(answer.out, QString(R"({
    "issues": [
        {
            "column": 155,
            "line": 1,
            "message": "script role 必须为 main、sub 或 module",
            "path": "scripts[0].role",
            "severity": 0
        },
        {
            "column": 166,
            "line": 2,
            "message": "%1",
            "path": "processGroups[0]",
            "severity": 1
        },
        {
            "message": "Core plugin missing: ./CoreOperators.dll",
            "path": "",
            "severity": 0
        }
    ],
    "project": "line.yslib",
    "scripts": [
        {
            "diagnostics": [
                {
                    "code": "YS100",
                    "column": 7,
                    "endColumn": 8,
                    "line": 2,
                    "message": "无法识别的字符",
                    "severity": 0
                }
            ],
            "passed": false,
            "path": "main.ys",
            "warnings": [
            ]
        },
        {
            "diagnostics": [
            ],
            "passed": true,
            "path": "./sub.ys",
            "warnings": [
                {
                    "code": "open-bracket",
                    "column": 5,
                    "endColumn": 0,
                    "line": 2,
                    "message": "this '(' is still open at the end of the file",
                    "severity": 1
                }
            ]
        }
    ]
}
)")
                             .arg(validateProjectFile(folder.path("line.yslib")).at(1).message));
}

void ProjectCheckTest::whatCannotBeUsed_data() {
    QTest::addColumn<FileTree>("files");
    QTest::addColumn<QString>("line");

    QTest::newRow("no JSON") << FileTree{{"line.yslib", "{ no"}}
                             << "line.yslib: JSON 无效：unterminated object (line 1, column 3)";
    QTest::newRow("an empty file") << FileTree{{"line.yslib", ""}}
                                   << "line.yslib: JSON 无效：illegal value (line 1, column 1)";
    QTest::newRow("no object") << FileTree{{"line.yslib", "[]"}}
                               << "line.yslib: JSON 无效：no error occurred (it is no JSON object)";
    QTest::newRow("nested too deeply")
        << FileTree{{"line.yslib", QByteArray(100000, '[')}}
        << "line.yslib: JSON 无效：too deeply nested document (line 1, column 1025)";
    QTest::newRow("a folder registered as a script")
        << FileTree{{"line.yslib", document()}, {"main.ys/", ""}} << "main.ys: is a folder";
}

void ProjectCheckTest::whatCannotBeUsed() {
    QFETCH(FileTree, files);
    QFETCH(QString, line);
    const ProjectFolder folder;
    write(folder, files);
    const Answer answer = support::runProgram({"project", "check", "line.yslib"}, folder.path(""));
    const QString told =
        answer.err.mid(0, answer.err.size() - 1).replace(folder.path("") + '/', "");
    QCOMPARE(told.startsWith("quorvanectl: "), true);
    QVERIFY2(told.endsWith(line), qPrintable(told));
    QCOMPARE(answer.err.count('\n'), 1);
    QCOMPARE(answer.out, QString());
    QCOMPARE(answer.status, 2);
}

// A build server often runs in the locale "C".
void ProjectCheckTest::aPathInChineseIsReadInAnyLocale() {
    const ProjectFolder folder;
    write(folder, {{"产线 一/检测.yslib", document()}, {"产线 一/main.ys", ""}});
    const Answer answer =
        support::runLine((support::onWindows ? "" : "LC_ALL=C ") +
                             QStringLiteral("quorvanectl project check '产线 一/检测.yslib'"),
                         folder.path(""));
    QCOMPARE(answer.out, QString("产线 一/检测.yslib: clean\n"));
    QCOMPARE(answer.status, 0);
}

void ProjectCheckTest::theDemoProjectIsClean() {
    const Answer answer = support::runProgram(
        {"project", "check", "examples/projects/demo/demo.yslib"}, QUORVANE_SOURCE_TREE);
    QCOMPARE(answer.out, QString("examples/projects/demo/demo.yslib: clean\n"));
    QCOMPARE(answer.status, 0);
}

QUORVANE_TEST_MAIN(QCoreApplication, ProjectCheckTest)
#include "project_check_test.moc"
