// What an editor sees while one types: findings of texts that are not saved, in one script and across the
// scripts of a project, and that they go when their cause goes.
#include "quorvanectl/analysis/workspace.h"

#include "quorvanectl/analysis/project_lookup.h"
#include "support/file_tree.h"
#include "support/library_file.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

using support::FileTree;
using support::ProjectFolder;

namespace {

QByteArray scriptEntry(const QByteArray &name) {
    return R"({"id": ")" + name + R"(", "path": ")" + name + R"(.ys", "role": "module"})";
}

// A clean project of these scripts, the first its entry; one line, but for the first brace.
QByteArray document(const QByteArray &scripts) {
    return "{\n\"schemaVersion\": 1, \"scripts\": [" + scripts +
           "],\n\"project\": {\"name\": \"line\", \"displayName\": \"Line\", \"createdAt\": "
           "\"2026-01-01\"},\n\"tasks\": {\"main\": {\"entryScriptId\": \"a\"}}}\n";
}

QByteArray twoScripts() {
    return document(scriptEntry("a") + ", " + scriptEntry("b"));
}

QString placeText(const ctl::TextRange &at) {
    return QString("%1:%2-%3:%4")
        .arg(QString::number(at.from.line), QString::number(at.from.column),
             QString::number(at.to.line), QString::number(at.to.column));
}

// "a.ys 1:1-1:2 error YS100 text (b.ys 1:1-1:2 b.ys:1)" for each, files in the order of their names.
QStringList linesOf(const ProjectFolder &folder, const ctl::FindingsByFile &findings) {
    const QDir root(folder.path(""));
    QStringList lines;
    for (auto file = findings.begin(); file != findings.end(); ++file) {
        for (const ctl::Finding &finding : file.value()) {
            QStringList related;
            for (const ctl::RelatedPlace &place : finding.related)
                related.append(QString("%1 %2 %3")
                                   .arg(root.relativeFilePath(place.file), placeText(place.at),
                                        place.message));
            QStringList words{root.relativeFilePath(file.key()), placeText(finding.at),
                              finding.isError ? "error" : "warning"};
            if (!finding.code.isEmpty())
                words.append(finding.code);
            words.append(finding.message);
            if (!related.isEmpty())
                words.append("(" + related.join(", ") + ")");
            lines.append(words.join(' '));
        }
    }
    return lines;
}

struct Edit {
    QString name;
    QString text;
};

} // namespace

Q_DECLARE_METATYPE(QVector<Edit>)

class WorkspaceTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void findings_data();
    void findings();
    void aFindingGoesWithItsCause();
    void whatIsClosedCountsAsItLiesOnTheDisk();
    void onlyWhatChangedIsLookedIntoAgain();
    void aChangeOnTheDiskCountsOnceItIsTold();
    void aScriptThatIsTooLarge();
    void theProjectOfAScript_data();
    void theProjectOfAScript();
    void theWalkThroughAFolderHasAnEnd();
};

void WorkspaceTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void WorkspaceTest::findings_data() {
    QTest::addColumn<FileTree>("disk");
    QTest::addColumn<QVector<Edit>>("edits");
    QTest::addColumn<QStringList>("expected");
    const FileTree clean{{"line.yslib", twoScripts()}, {"a.ys", ""}, {"b.ys", ""}};
    const QString cycle = "检测到 import 循环依赖";
    const QString far = "跨脚本 global 'x_y' 重复定义：a.ys:1001, b.ys:2";
    const QString twice = "跨脚本 global 'x_y' 重复定义：a.ys:1, b.ys:2";

    QTest::newRow("a clean project")
        << clean << QVector<Edit>{{"a.ys", "int x;\n"}} << QStringList{};
    QTest::newRow("an unknown character")
        << clean << QVector<Edit>{{"a.ys", "int x;\nx = 1 $ 2;\n"}}
        << QStringList{"a.ys 2:7-2:8 error YS100 无法识别的字符"};
    QTest::newRow("a syntax error is marked to the end of its line")
        << clean << QVector<Edit>{{"a.ys", "import x.ys;\n"}}
        << QStringList{"a.ys 1:8-1:12 error YS200 import 语法错误，应为 import \"相对路径.ys\";"};
    QTest::newRow("a stray brace has the words of the command")
        << clean << QVector<Edit>{{"a.ys", "}\n"}}
        << QStringList{"a.ys 1:1-1:2 error YS200 The script has a syntax error."};
    QTest::newRow("what is left open is a warning")
        << clean << QVector<Edit>{{"a.ys", "x = (1\n"}}
        << QStringList{"a.ys 1:5-1:6 warning open-bracket this '(' is still open at the end of "
                       "the file"};
    QTest::newRow("the syntax of a script that is not open is nobody's matter")
        << support::laidOver(clean, {{"b.ys", "$\n"}}) << QVector<Edit>{{"a.ys", "int x;\n"}}
        << QStringList{};
    QTest::newRow("a global of two scripts shows in both")
        << support::laidOver(clean, {{"b.ys", "int n;\nglobal int x_y = 1;\n"}})
        << QVector<Edit>{{"a.ys", "global float x_y;\n"}}
        << QStringList{"a.ys 1:14-1:17 error YS408 " + twice + " (b.ys 2:12-2:15 b.ys:2)",
                       "b.ys 2:12-2:15 error YS408 " + twice + " (a.ys 1:14-1:17 a.ys:1)"};
    QTest::newRow("a global far down in a long script")
        << support::laidOver(clean, {{"b.ys", "int n;\nglobal int x_y;\n"}})
        << QVector<Edit>{{"a.ys", QString("n = 1;\n").repeated(1000) + "global int x_y;\n"}}
        << QStringList{"a.ys 1001:12-1001:15 error YS408 " + far + " (b.ys 2:12-2:15 b.ys:2)",
                       "b.ys 2:12-2:15 error YS408 " + far + " (a.ys 1001:12-1001:15 a.ys:1001)"};
    QTest::newRow("a circle of imports shows at each of them")
        << support::laidOver(clean, {{"b.ys", "\nimport \"./a.ys\";\n"}})
        << QVector<Edit>{{"a.ys", "import \"b.ys\";\n"}}
        << QStringList{"a.ys 1:8-1:14 error YS404 " + cycle + " (b.ys 2:8-2:16 b.ys:2)",
                       "b.ys 2:8-2:16 error YS404 " + cycle + " (a.ys 1:8-1:14 a.ys:1)"};
    QTest::newRow("a script that imports itself")
        << clean << QVector<Edit>{{"a.ys", "import \"a.ys\";\n"}}
        << QStringList{"a.ys 1:8-1:14 error YS404 " + cycle};
    QTest::newRow("a badly named global shows at its name, a comment's too")
        << clean
        << QVector<Edit>{{"a.ys", "int n;\nglobal int width; // global int 高; global int w\n"}}
        << QStringList{"a.ys 2:12-2:17 warning global 变量 'width' 不符合 {camId}_{metric} 命名",
                       "a.ys 2:47-2:48 warning global 变量 'w' 不符合 {camId}_{metric} 命名"};
    QTest::newRow("a badly named global of a script that is not open")
        << support::laidOver(clean, {{"b.ys", "global int width;\n"}})
        << QVector<Edit>{{"a.ys", ""}}
        << QStringList{"b.ys 1:12-1:17 warning global 变量 'width' 不符合 {camId}_{metric} 命名"};
    QTest::newRow("a script that no project lists")
        << support::laidOver(clean, {{"c.ys", ""}}) << QVector<Edit>{{"c.ys", ""}}
        << QStringList{"line.yslib 2:32-2:33 warning 磁盘上的脚本未登记到 scripts[]：c.ys"};
    QTest::newRow("the project's own text is what is open of it")
        << clean
        << QVector<Edit>{{"line.yslib", QString::fromUtf8(document(scriptEntry("a") + ", " +
                                                                   scriptEntry("gone")))}}
        << QStringList{"line.yslib 2:103-2:112 error 引用的文件不存在：gone.ys",
                       "line.yslib 2:32-2:33 warning 磁盘上的脚本未登记到 scripts[]：b.ys"};
    QTest::newRow("a project's text that is no JSON")
        << clean << QVector<Edit>{{"line.yslib", "{\n  \"scripts\": [,]\n}\n"}}
        << QStringList{"line.yslib 2:15-2:16 error JSON 无效：illegal value"};
    QTest::newRow("a project's text that is no object")
        << clean << QVector<Edit>{{"line.yslib", "[1]\n"}}
        << QStringList{"line.yslib 1:1-1:2 error JSON 无效：no error occurred"};
    QTest::newRow("no project at all")
        << FileTree{{"a.ys", ""}} << QVector<Edit>{{"a.ys", "global int width;\n"}}
        << QStringList{};
    QTest::newRow("a script listed twice shows its badly named global once")
        << FileTree{{"line.yslib", document(scriptEntry("a") + ", " + scriptEntry("a"))},
                    {"a.ys", ""}}
        << QVector<Edit>{{"a.ys", "global int width;\n"}}
        << QStringList{"a.ys 1:12-1:17 warning global 变量 'width' 不符合 {camId}_{metric} 命名"};
    QTest::newRow("two projects at once, each with its own scripts")
        << FileTree{{"one/line.yslib", document(scriptEntry("a"))},
                    {"one/a.ys", ""},
                    {"two/line.yslib", document(scriptEntry("a"))},
                    {"two/a.ys", ""}}
        << QVector<Edit>{{"one/a.ys", "global int x_y;\nglobal int bad;\n"},
                         {"two/a.ys", "global int x_y;\n"}}
        << QStringList{"one/a.ys 2:12-2:15 warning global 变量 'bad' 不符合 {camId}_{metric} 命名"};
}

void WorkspaceTest::findings() {
    QFETCH(FileTree, disk);
    QFETCH(QVector<Edit>, edits);
    QFETCH(QStringList, expected);
    const ProjectFolder folder;
    support::writeTree(folder.path(""), disk);
    ctl::Workspace workspace;
    for (const Edit &edit : qAsConst(edits))
        workspace.open(folder.path(edit.name), edit.text);
    QCOMPARE(linesOf(folder, workspace.findings()), expected);
    // Asked once more, it says the same.
    QCOMPARE(linesOf(folder, workspace.findings()), expected);
}

void WorkspaceTest::aFindingGoesWithItsCause() {
    const ProjectFolder folder;
    support::writeTree(folder.path(""), {{"line.yslib", twoScripts()}, {"a.ys", ""}, {"b.ys", ""}});
    ctl::Workspace workspace;
    workspace.open(folder.path("a.ys"), "global int x_y;\n");
    workspace.open(folder.path("b.ys"), "global int x_y;\n");
    QCOMPARE(workspace.findings().keys(), QStringList({folder.path("a.ys"), folder.path("b.ys")}));
    workspace.change(folder.path("b.ys"), "global int x_z;\n");
    QCOMPARE(workspace.findings().keys(), QStringList());
    workspace.change(folder.path("b.ys"), "(");
    QCOMPARE(workspace.findings().keys(), QStringList(folder.path("b.ys")));
    QCOMPARE(workspace.ownFindings(folder.path("b.ys")).size(), 1);
    workspace.close(folder.path("b.ys"));
    QCOMPARE(workspace.findings().keys(), QStringList());
}

void WorkspaceTest::whatIsClosedCountsAsItLiesOnTheDisk() {
    const ProjectFolder folder;
    support::writeTree(folder.path(""),
                       {{"line.yslib", twoScripts()}, {"a.ys", ""}, {"b.ys", "global int x_y;\n"}});
    ctl::Workspace workspace;
    workspace.open(folder.path("a.ys"), "global int x_y;\n");
    workspace.open(folder.path("b.ys"), "");
    QVERIFY(workspace.findings().isEmpty());
    workspace.close(folder.path("b.ys"));
    QCOMPARE(workspace.findings().size(), 2);
    workspace.close(folder.path("a.ys"));
    QVERIFY(workspace.findings().isEmpty());
}

void WorkspaceTest::onlyWhatChangedIsLookedIntoAgain() {
    const ProjectFolder folder;
    support::writeTree(folder.path(""),
                       {{"line.yslib", twoScripts()}, {"a.ys", ""}, {"b.ys", "int b;\n"}});
    ctl::Workspace workspace;
    workspace.open(folder.path("a.ys"), "int a;\n");
    (void)workspace.findings();
    QCOMPARE(workspace.summaryCount(), 2);
    workspace.change(folder.path("a.ys"), "int ab;\n");
    (void)workspace.findings();
    QCOMPARE(workspace.summaryCount(), 3);
    workspace.diskChanged(folder.path("b.ys")); // though its content has not
    (void)workspace.findings();
    QCOMPARE(workspace.summaryCount(), 3);
}

void WorkspaceTest::aChangeOnTheDiskCountsOnceItIsTold() {
    const ProjectFolder folder;
    support::writeTree(folder.path(""), {{"line.yslib", twoScripts()}, {"a.ys", ""}, {"b.ys", ""}});
    ctl::Workspace workspace;
    workspace.open(folder.path("a.ys"), "");
    QVERIFY(workspace.findings().isEmpty());
    folder.write("b.ys", "global int width;\n");
    folder.write("c.ys", "");
    workspace.diskChanged(folder.path("b.ys"));
    workspace.diskChanged(folder.path("c.ys"));
    QCOMPARE(workspace.findings().keys(),
             QStringList({folder.path("b.ys"), folder.path("line.yslib")}));
    QVERIFY(QFile::remove(folder.path("line.yslib")));
    workspace.diskChanged(folder.path("line.yslib"));
    QVERIFY(workspace.findings().isEmpty());
}

// An open one by its text, one of the disk without a look into it.
void WorkspaceTest::aScriptThatIsTooLarge() {
    const ProjectFolder folder;
    support::writeTree(folder.path(""), {{"line.yslib", twoScripts()}, {"a.ys", ""}});
    folder.writeZeros("b.ys", qint64(1) << 30);
    ctl::Workspace workspace;
    workspace.open(folder.path("a.ys"), QString(ctl::largestScript, ' ') + "$");
    QCOMPARE(linesOf(folder, workspace.findings()),
             QStringList("a.ys 1:1-1:2 error script-unread the script is larger than 16 MiB and is "
                         "not looked into"));
    workspace.change(folder.path("a.ys"), QString(ctl::largestScript, ' '));
    QVERIFY(workspace.findings().isEmpty());
    folder.write("b.ys", "global int width;\n" + QByteArray(ctl::largestScript, ' '));
    workspace.diskChanged(folder.path("b.ys"));
    QVERIFY(workspace.findings().isEmpty());
}

void WorkspaceTest::theProjectOfAScript_data() {
    QTest::addColumn<FileTree>("disk");
    QTest::addColumn<QString>("expected");
    const QByteArray listing = document(R"({"path": "sub\\a.ys"})");
    QTest::newRow("the folder's own") << FileTree{{"sub/x.yslib", "{}"}} << "sub/x.yslib";
    QTest::newRow("one above") << FileTree{{"x.yslib", listing}} << "x.yslib";
    QTest::newRow("the nearest, though one above lists it")
        << FileTree{{"sub/x.yslib", "{}"}, {"x.yslib", listing}} << "sub/x.yslib";
    QTest::newRow("of several the one that lists it")
        << FileTree{{"a.yslib", "{}"}, {"x.yslib", listing}, {"z.yslib", "no JSON"}} << "x.yslib";
    QTest::newRow("else the first by name")
        << FileTree{{"c.yslib", "{}"}, {"b.YSLIB", "no JSON"}} << "b.YSLIB";
    QTest::newRow("a folder of that name is none")
        << FileTree{{"sub/a.yslib/", ""}, {"x.yslib", listing}} << "x.yslib";
}

void WorkspaceTest::theProjectOfAScript() {
    QFETCH(FileTree, disk);
    QFETCH(QString, expected);
    const ProjectFolder folder;
    support::writeTree(folder.path(""), disk);
    const QString script = folder.write("sub/a.ys", "");
    QCOMPARE(ctl::projectAbove(script), folder.path(expected));
    QCOMPARE(ctl::Workspace().projectOf(folder.path(expected)), folder.path(expected));
}

void WorkspaceTest::theWalkThroughAFolderHasAnEnd() {
    const ProjectFolder folder;
    support::writeTree(
        folder.path(""),
        {{"a.ys", ""}, {"b.YS", ""}, {"c.txt", ""}, {"sub/d.ys", ""}, {"e.ys/", ""}});
    QStringList all = ctl::scriptsInFolder(folder.path(""));
    all.sort();
    QCOMPARE(all, QStringList({folder.path("a.ys"), folder.path("b.YS"), folder.path("sub/d.ys")}));
    QVERIFY(ctl::scriptsInFolder(folder.path(""), 0).isEmpty());
    QVERIFY(ctl::scriptsInFolder(folder.path(""), 2).size() <= 2);
}

QUORVANE_TEST_MAIN(QCoreApplication, WorkspaceTest)

#include "workspace_test.moc"
