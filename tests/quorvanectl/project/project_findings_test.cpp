// What is found in a project, in which order, and what is no project at all.
#include "quorvanectl/project/project_findings.h"

#include "support/file_kinds.h"
#include "support/file_tree.h"
#include "support/library_file.h"
#include "support/platform.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include "quorvanectl/files/file_access.h"

#include <QCoreApplication>

using ctl::ProjectFindings;
using support::FileTree;
using support::ProjectFolder;

namespace {

// A project that lists these scripts, the first of them as its main one.
QByteArray projectOf(const QStringList &paths) {
    QByteArray scripts;
    for (int i = 0; i < paths.size(); ++i) {
        scripts += (i == 0 ? "" : ", ") + QByteArray(R"({"id": "s)") + QByteArray::number(i) +
                   R"(", "role": ")" + (i == 0 ? "main" : "sub") + R"(", "path": ")" +
                   paths.at(i).toUtf8() + R"("})";
    }
    return R"({"schemaVersion": 1, "project": {"name": "a", "displayName": "a",
"createdAt": "2026-01-01", "version": "1.0"}, "scripts": [)" +
           scripts + R"(], "tasks": {"main": {"entryScriptId": "s0"}}})";
}

} // namespace

class ProjectFindingsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void scripts_data();
    void scripts();
    void scriptsThatCannotBeRead_data();
    void scriptsThatCannotBeRead();
    void filesThatAreNoProject_data();
    void filesThatAreNoProject();
    void wrongTypesAreFindings_data();
    void wrongTypesAreFindings();
    void theCorePluginStandsLast();
    void counts();
};

void ProjectFindingsTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void ProjectFindingsTest::scripts_data() {
    QTest::addColumn<QStringList>("listed");
    QTest::addColumn<FileTree>("files");
    QTest::addColumn<QStringList>("checked"); // path and number of syntax errors
    QTest::newRow("one") << QStringList{"main.ys"} << FileTree{{"main.ys", "int a;\n"}}
                         << QStringList{"main.ys 0"};
    QTest::newRow("with a syntax error")
        << QStringList{"main.ys"} << FileTree{{"main.ys", "}"}} << QStringList{"main.ys 1"};
    QTest::newRow("in the order of the list")
        << QStringList{"b.ys", "a.ys"} << FileTree{{"a.ys", "}"}, {"b.ys", ""}}
        << QStringList{"b.ys 0", "a.ys 1"};
    QTest::newRow("listed twice, told once")
        << QStringList{"main.ys", "main.ys"} << FileTree{{"main.ys", "}"}}
        << QStringList{"main.ys 1"};
    QTest::newRow("missing, which is an issue of the project")
        << QStringList{"none.ys", "a.ys"} << FileTree{{"a.ys", ""}} << QStringList{"a.ys 0"};
    QTest::newRow("not listed") << QStringList{"main.ys"}
                                << FileTree{{"main.ys", ""}, {"more.ys", "}"}}
                                << QStringList{"main.ys 0"};
    QTest::newRow("without a path")
        << QStringList{""} << FileTree{{"main.ys", "}"}} << QStringList();
    QTest::newRow("in a Chinese folder with a blank")
        << QStringList{QStringLiteral("脚 本/主.ys")}
        << FileTree{{QStringLiteral("脚 本/主.ys"), "}"}}
        << QStringList{QStringLiteral("脚 本/主.ys 1")};
    QTest::newRow("empty") << QStringList{"main.ys"} << FileTree{{"main.ys", ""}}
                           << QStringList{"main.ys 0"};
    QTest::newRow("in GBK") << QStringList{"main.ys"} << FileTree{{"main.ys", "// \xC3\xFB\n}"}}
                            << QStringList{"main.ys 1"};
}

void ProjectFindingsTest::scripts() {
    QFETCH(QStringList, listed);
    QFETCH(FileTree, files);
    const ProjectFolder folder;
    support::writeTree(folder.path(""), files);
    const QString project = folder.write("line.yslib", projectOf(listed));
    ProjectFindings findings;
    QString error;
    QVERIFY2(ctl::findAll(project, QString(), &findings, &error), qPrintable(error));
    QStringList checked;
    for (const ctl::ScriptReport &report : findings.scripts)
        checked.append(report.path + ' ' + QString::number(report.result.errorCount));
    QTEST(checked, "checked");
    QCOMPARE(findings.projectPath, project);
}

void ProjectFindingsTest::scriptsThatCannotBeRead_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("reason");
    QTest::newRow("a folder") << "folder"
                              << "is a folder";
    QTest::newRow("larger than any script") << "huge.ys"
                                            << "is larger than 64 MiB";
    if (!support::onWindows)
        QTest::newRow("a pipe, which would wait for ever") << "pipe.ys"
                                                           << "is no plain file";
    if (support::permissionsKeepOut())
        QTest::newRow("not ours to read") << "closed.ys"
                                          << "Permission denied";
}

void ProjectFindingsTest::scriptsThatCannotBeRead() {
    QFETCH(QString, name);
    QFETCH(QString, reason);
    const ProjectFolder folder;
    support::writeTree(folder.path(""), {{"folder/a", ""}, {"main.ys", "}"}, {"closed.ys", ""}});
    folder.writeZeros("huge.ys", ctl::largestText + 1);
    QCOMPARE(support::makePipe(folder.path("pipe.ys")), !support::onWindows);
    QVERIFY(QFile::setPermissions(folder.path("closed.ys"), {}) || support::onWindows);
    ProjectFindings findings;
    QString error;
    QVERIFY(!ctl::findAll(folder.write("line.yslib", projectOf({"main.ys", name})), QString(),
                          &findings, &error));
    QCOMPARE(error, folder.path(name) + ": " + reason);
}

void ProjectFindingsTest::filesThatAreNoProject_data() {
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("reason");
    QTest::addColumn<QString>("place");
    const QString invalid = QStringLiteral("JSON 无效：");
    QTest::newRow("nothing") << QByteArray() << invalid + "illegal value (line 1, column 1)"
                             << "1:1";
    QTest::newRow("a list") << QByteArray("\n [1]")
                            << invalid + "no error occurred (it is no JSON object)"
                            << "2:2";
    QTest::newRow("a comma too many")
        << QByteArray("{\"a\": 1,\n }")
        << invalid + "object is missing after a comma (line 2, column 2)"
        << "2:2";
    QTest::newRow("a key without quotes")
        << QByteArray("{\n  a: 1\n}") << invalid + "unterminated object (line 2, column 3)"
        << "2:3";
    QTest::newRow("a comment") << QByteArray("// mine\n{}")
                               << invalid + "illegal value (line 1, column 1)"
                               << "1:1";
    QTest::newRow("a script instead")
        << QByteArray("int a;\n") << invalid + "illegal value (line 1, column 1)"
        << "1:1";
}

void ProjectFindingsTest::filesThatAreNoProject() {
    QFETCH(QByteArray, content);
    QFETCH(QString, reason);
    const ProjectFolder folder;
    ProjectFindings findings;
    QString error;
    QVERIFY(!ctl::findAll(folder.write("line.yslib", content), QString(), &findings, &error));
    QCOMPARE(error, folder.path("line.yslib") + ": " + reason);
    QCOMPARE(findings.issues.size(), 1);
    QCOMPARE(findings.issues.first().path, QString("yslib"));
    QTEST(QString("%1:%2")
              .arg(findings.places.first().at.line)
              .arg(findings.places.first().at.column),
          "place");
}

// A project of wrong types can be looked at: what is wrong are issues, and nothing ends the program.
void ProjectFindingsTest::wrongTypesAreFindings_data() {
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("an empty object") << QByteArray("{}");
    QTest::newRow("scripts that are an object") << QByteArray(R"({"scripts": {"path": "a.ys"}})");
    QTest::newRow("scripts that are a text") << QByteArray(R"({"scripts": "a.ys"})");
    QTest::newRow("scripts that are texts") << QByteArray(R"({"scripts": ["a.ys", 7, null]})");
    QTest::newRow("a path that is a number") << QByteArray(R"({"scripts": [{"path": 7}]})");
    QTest::newRow("a project that is a list") << QByteArray(R"({"project": []})");
    QTest::newRow("tasks that are a text") << QByteArray(R"({"tasks": "main"})");
    QTest::newRow("keys in other letters") << QByteArray(R"({"Scripts": [], "PROJECT": {}})");
}

void ProjectFindingsTest::wrongTypesAreFindings() {
    QFETCH(QByteArray, content);
    const ProjectFolder folder;
    folder.write("a.ys", "}");
    ProjectFindings findings;
    QString error;
    QVERIFY2(ctl::findAll(folder.write("line.yslib", content), QString(), &findings, &error),
             qPrintable(error));
    QVERIFY(findings.hasErrors());
    QVERIFY(findings.issueCount(0) > 0);
    QCOMPARE(findings.scripts.size(), size_t(0));
}

void ProjectFindingsTest::theCorePluginStandsLast() {
    const ProjectFolder folder;
    const QString project = folder.write("line.yslib", projectOf({"none.ys"}));
    ProjectFindings findings;
    QString error;
    QVERIFY(ctl::findAll(project, folder.path("plugins"), &findings, &error));
    const QString line = "Core plugin missing: " + folder.path("plugins/CoreOperators.dll");
    QCOMPARE(ctl::issueLines(findings, 0).last(), line);
    QCOMPARE(findings.allIssues().last().path, QString());
    QCOMPARE(findings.corePluginFault, line);
    const int count = findings.issueCount(0);
    folder.write("plugins/CoreOperators.dll", "");
    ProjectFindings again;
    QVERIFY(ctl::findAll(project, folder.path("plugins"), &again, &error));
    QCOMPARE(again.issueCount(0), count - 1);
}

void ProjectFindingsTest::counts() {
    ProjectFindings findings;
    QVERIFY(!findings.hasErrors());
    findings.issues = {{1, "scripts", "w"}, {0, "yslib", "e"}, {7, "tasks", "x"}};
    QCOMPARE(findings.issueCount(0), 1);
    QCOMPARE(findings.issueCount(1), 2); // whatever is no error is a warning
    QCOMPARE(ctl::issueLines(findings, 0), QStringList("[Error] yslib: e"));
    QCOMPARE(ctl::issueLines(findings, 1),
             QStringList({"[Warning] scripts: w", "[Warning] tasks: x"}));
    findings.issues.remove(1);
    QVERIFY(!findings.hasErrors());
    ctl::ScriptReport report;
    report.result.errorCount = 2;
    report.warnings.resize(3);
    findings.scripts = {report, report};
    QCOMPARE(findings.scriptErrorCount(), 4);
    QCOMPARE(findings.scriptWarningCount(), 6);
    QVERIFY(findings.hasErrors());
}

QUORVANE_TEST_MAIN(QCoreApplication, ProjectFindingsTest)
#include "project_findings_test.moc"
