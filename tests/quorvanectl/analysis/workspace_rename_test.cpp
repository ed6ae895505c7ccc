// Renames that would leave a project half renamed: each is refused as a whole, with what is to be mended first,
// and what is found where a rename may go on.
#include "quorvanectl/analysis/workspace.h"

#include "support/file_kinds.h"
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

constexpr char project[] = R"({"scripts": [{"path": "a.ys"}, {"path": "sub/b.ys"}]})";

const FileTree disk{
    {"line.yslib", project}, {"a.ys", "global int x_y;\n"}, {"sub/b.ys", "n = x_y;\n"}};

// The places as "sub/b.ys@4", "line.yslib@79+8" of one that is not three units long, or why there are none.
// The text is d.ys, which nobody lists; the place is its start.
QStringList renamed(const ProjectFolder &folder, ctl::Workspace *workspace, const QString &text,
                    const QString &newName) {
    workspace->open(folder.path("d.ys"), text);
    const ctl::GlobalRename rename = workspace->renameAt(folder.path("d.ys"), 0, newName);
    QStringList lines;
    for (const ctl::NamePlace &place : rename.places) {
        const int size = place.at.to - place.at.from;
        lines.append(QString("%1@%2%3").arg(QDir(folder.path("")).relativeFilePath(place.file),
                                            QString::number(place.at.from),
                                            size == 3 ? QString() : QString("+%1").arg(size)));
    }
    if (!rename.refusal.isEmpty())
        lines.append(rename.refusal);
    return lines;
}

} // namespace

class WorkspaceRenameTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void names_data();
    void names();
    void projects_data();
    void projects();
    void aScriptThatIsTooLarge();
    void aScriptThatCannotBeRead();
    void theTextOfTheEditorCounts_data();
    void theTextOfTheEditorCounts();
    void aProjectThatIsNoJsonIsNotHalfRenamed();
    void whereNoGlobalStands_data();
    void whereNoGlobalStands();
};

void WorkspaceRenameTest::initTestCase() {
    QVERIFY(support::loadLibraryText("[Highlight]\nother=function,include,import\n"
                                     "[FunctionNo]\n1,cam_shoot,1,text#C,help\n"));
}

void WorkspaceRenameTest::names_data() {
    QTest::addColumn<QString>("newName");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QString &newName, const char *expected) {
        QTest::newRow(name) << newName << QString(expected).arg(newName);
    };
    const char *const noName = "'%1' is no name of the script language";
    const char *const badName = "'%1' breaks the naming rule {camId}_{metric}";
    row("a blank before it", " x_z", noName);
    row("a blank behind it", "x_z ", noName);
    row("a comment behind it", "x_z//", noName);
    row("a sum", "x_z+1", noName);
    row("a member", "x.z", noName);
    row("a call", "x_z()", noName);
    row("a text", "\"x_z\"", noName);
    row("a number", "12", noName);
    row("a type", "float", noName);
    row("an unknown character", "x_$", noName);
    row("a full-width line", "x＿z", noName);
    row("a line alone", "_", badName);
    row("nothing before the line", "_z", badName);
    row("nothing behind the line", "x_", badName);
    row("a digit first behind the line", "x_1", "");
    row("two lines", "x_y_z", "");
    row("the old name in capitals", "X_Y", "");
    row("a function of the library", "cam_shoot", "'%1' is a function of the function library");
    row("its name in capitals", "CAM_SHOOT", "");
}

void WorkspaceRenameTest::names() {
    QFETCH(QString, newName);
    QFETCH(QString, expected);
    const ProjectFolder folder;
    support::writeTree(folder.path(""), disk);
    ctl::Workspace workspace;
    const QStringList everywhere{"a.ys@11", "sub/b.ys@4", "d.ys@0"};
    QCOMPARE(renamed(folder, &workspace, "x_y = 1", newName),
             expected.isEmpty() ? everywhere : QStringList(expected));
}

// What lies on the disk beside the text that is open.
void WorkspaceRenameTest::projects_data() {
    QTest::addColumn<FileTree>("over");
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *name, const FileTree &over, const QStringList &expected) {
        QTest::newRow(name) << over << expected;
    };
    const QStringList open{"d.ys@0"};
    const QStringList declared{"a.ys@11", "d.ys@0"};
    row("a project's file that is no JSON", {{"line.yslib", "{\n\"scripts\": [,]}"}},
        {"line.yslib has a mistake in line 2: mend it first"});
    row("one that is cut off", {{"line.yslib", QByteArray(project).chopped(1)}},
        {"line.yslib has a mistake in line 1: mend it first"});
    row("one that is no object", {{"line.yslib", "\n\n[1]"}},
        {"line.yslib has a mistake in line 1: mend it first"});
    row("an empty one", {{"line.yslib", ""}},
        {"line.yslib has a mistake in line 1: mend it first"});
    row("a list that is none", {{"line.yslib", R"({"scripts": {"path": "a.ys"}})"}},
        {"no script of the project declares 'x_y'"});
    row("entries that are none, among others",
        {{"line.yslib",
          R"({"scripts": [null, "a.ys", {"path": 3}, {"path": ""}, {"path": "a.ys"}]})"}},
        declared);
    row("a script that is listed twice",
        {{"line.yslib", R"({"scripts": [{"path": "a.ys"}, {"path": "./sub/../a.ys"}]})"}},
        declared);
    row("a script that is listed and not there",
        {{"line.yslib", R"({"scripts": [{"path": "gone.ys"}, {"path": "a.ys"}]})"}}, declared);
    row("a name in the project's file that is no text, or another",
        {{"line.yslib",
          R"({"scripts": [{"path": "a.ys"}], "tasks": {"subs": [)"
          R"({"writesGlobals": "x_y"}, {"writesGlobals": [["x_y"], "x_yy", " x_y"]}, 3]}})"}},
        declared);
    row("the name as another value of it",
        {{"line.yslib",
          R"({"scripts": [{"path": "a.ys", "id": "x_y"}], "project": {"name": "x_y"}})"}},
        declared);
    row("a name that is written with escapes, and one behind Chinese",
        {{"line.yslib", QString(R"({"scripts": [{"path": "a.ys"}], "高": 1, "tasks": {"subs": [)"
                                R"({"writesGlobals": ["x\u005fy", "x_y"]}]}})")
                            .toUtf8()}},
        {"a.ys@11", "d.ys@0", "line.yslib@79+8", "line.yslib@91"});
    row("a script that does not parse and has neither name",
        {{"sub/b.ys", "} x_yy ax_y 高x_y x_y高"}}, declared);
    row("one that has the old one in a text", {{"sub/b.ys", "\n\"x_y\" $"}},
        {"sub/b.ys has a mistake in line 2: mend it first"});
    row("one that has the new one in a comment", {{"sub/b.ys", "} // x_z"}},
        {"sub/b.ys has a mistake in line 1: mend it first"});
    row("one that leaves something open and has the name", {{"sub/b.ys", "x_y = (1\n"}},
        {"sub/b.ys has a mistake in line 1: mend it first"});
    row("the new name as a member of something", {{"sub/b.ys", "a.x_z = 1"}}, declared);
    row("the new name in a text", {{"sub/b.ys", "s = \"x_z\" // x_z"}}, declared);
    row("the new name as a function", {{"sub/b.ys", "\n\nfunction x_z() { }"}},
        {"sub/b.ys has another 'x_z' in line 3"});
    row("the new name as what is called", {{"sub/b.ys", "x_z(1)"}},
        {"sub/b.ys has another 'x_z' in line 1"});
    row("the new name in what is imported and not listed",
        {{"sub/b.ys", "import \"../lib.ys\";"}, {"lib.ys", "int x_z;"}},
        {"lib.ys has another 'x_z' in line 1"});
    row("the old name in what is imported and not listed",
        {{"sub/b.ys", "import \"../lib.ys\";"}, {"lib.ys", "x_y = 2"}},
        {"a.ys@11", "d.ys@0", "lib.ys@0"});
    row("a local of another script that hides it",
        {{"sub/b.ys", "function f(x_y) { x_y = 2 }\nx_y = 3"}},
        {"a.ys@11", "sub/b.ys@28", "d.ys@0"});
    row("two scripts that declare it", {{"sub/b.ys", "global float x_y;"}},
        {"a.ys@11", "sub/b.ys@13", "d.ys@0"});
    row("a function that declares it", {{"a.ys", "function f() { global int x_y; }"}},
        {"a.ys@26", "d.ys@0"});
}

void WorkspaceRenameTest::projects() {
    QFETCH(FileTree, over);
    const ProjectFolder folder;
    FileTree all = disk;
    all.insert("sub/b.ys", "");
    support::writeTree(folder.path(""), support::laidOver(all, over));
    const FileTree before = support::readTree(folder.path(""));
    ctl::Workspace workspace;
    QTEST(renamed(folder, &workspace, "x_y = 1", "x_z"), "expected");
    QCOMPARE(support::readTree(folder.path("")), before); // it is the editor that writes
}

void WorkspaceRenameTest::aScriptThatIsTooLarge() {
    const ProjectFolder folder;
    support::writeTree(folder.path(""), disk);
    ctl::Workspace workspace;
    const QStringList refused(
        "sub/b.ys cannot be searched: the script is larger than 16 MiB and is "
        "not looked into");
    (void)folder.write("sub/b.ys", "x_y = 1;" + QByteArray(int(ctl::largestScript), ' '));
    QCOMPARE(renamed(folder, &workspace, "x_y = 1", "x_z"), refused);
    // Whether or not it has the name, of which nothing is known then.
    (void)folder.writeZeros("sub/b.ys", qint64(1) << 27);
    workspace.diskChanged(folder.path("sub/b.ys"));
    QCOMPARE(renamed(folder, &workspace, "x_y = 1", "x_z"), refused);
    (void)folder.write("sub/b.ys", "x_y = 1;");
    workspace.diskChanged(folder.path("sub/b.ys"));
    QCOMPARE(renamed(folder, &workspace, "x_y = 1", "x_z"),
             QStringList({"a.ys@11", "sub/b.ys@0", "d.ys@0"}));
}

void WorkspaceRenameTest::aScriptThatCannotBeRead() {
    if (!support::permissionsKeepOut())
        QSKIP("no permission keeps this user out");
    const ProjectFolder folder;
    support::writeTree(folder.path(""), disk);
    QVERIFY(QFile::setPermissions(folder.path("sub/b.ys"), QFile::Permissions()));
    ctl::Workspace workspace;
    QCOMPARE(renamed(folder, &workspace, "x_y = 1", "x_z"),
             QStringList("sub/b.ys cannot be searched: Permission denied"));
    // Once an editor has it open, its text is known.
    workspace.open(folder.path("sub/b.ys"), "x_y");
    QCOMPARE(renamed(folder, &workspace, "x_y = 1", "x_z"),
             QStringList({"a.ys@11", "sub/b.ys@0", "d.ys@0"}));
    QVERIFY(QFile::setPermissions(folder.path("line.yslib"), QFile::Permissions()));
    QCOMPARE(renamed(folder, &workspace, "x_y = 1", "x_z"),
             QStringList("line.yslib cannot be searched: Permission denied"));
}

// Of b.ys and of the project's file, both open and not saved.
void WorkspaceRenameTest::theTextOfTheEditorCounts_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("a script that is whole on the disk alone")
        << "sub/b.ys"
        << "x_y }" << QStringList("sub/b.ys has a mistake in line 1: mend it first");
    QTest::newRow("a script whose name has moved")
        << "sub/b.ys"
        << "\n  x_y" << QStringList{"a.ys@11", "sub/b.ys@3", "d.ys@0"};
    QTest::newRow("a project's file that lists it no more")
        << "line.yslib"
        << R"({"scripts": [{"path": "a.ys"}]})" << QStringList{"a.ys@11", "d.ys@0"};
    QTest::newRow("a project's file that is being typed")
        << "line.yslib"
        << "{\"scripts\": [{\"path\": \"a.ys\"},\n {\"path"
        << QStringList("line.yslib has a mistake in line 2: mend it first");
    QTest::newRow("an empty project's file")
        << "line.yslib"
        << "" << QStringList("line.yslib has a mistake in line 1: mend it first");
}

void WorkspaceRenameTest::theTextOfTheEditorCounts() {
    QFETCH(QString, name);
    QFETCH(QString, text);
    const ProjectFolder folder;
    support::writeTree(folder.path(""), disk);
    ctl::Workspace workspace;
    workspace.open(folder.path(name), text);
    QTEST(renamed(folder, &workspace, "x_y = 1", "x_z"), "expected");
}

// b.ys, which is not open, would keep the old name.
void WorkspaceRenameTest::aProjectThatIsNoJsonIsNotHalfRenamed() {
    const ProjectFolder folder;
    support::writeTree(folder.path(""), disk);
    ctl::Workspace workspace;
    workspace.open(folder.path("a.ys"), "global int x_y;\n");
    workspace.open(folder.path("line.yslib"), "{,");
    QCOMPARE(renamed(folder, &workspace, "x_y = 1", "x_z"),
             QStringList("line.yslib has a mistake in line 1: mend it first"));
    workspace.change(folder.path("line.yslib"), project);
    QCOMPARE(renamed(folder, &workspace, "x_y = 1", "x_z"),
             QStringList({"a.ys@11", "sub/b.ys@4", "d.ys@0"}));
}

void WorkspaceRenameTest::whereNoGlobalStands_data() {
    QTest::addColumn<QString>("text");
    for (const char *text : {"", " x_y", "// x_y", "\"x_y\"", "import \"x_y\";", "12", "int x_y;",
                             "x_y(1)", "if (x_y) { }", "(x_y)", "x_y = $"})
        QTest::newRow(text) << QString(text);
}

void WorkspaceRenameTest::whereNoGlobalStands() {
    QFETCH(QString, text);
    const ProjectFolder folder;
    support::writeTree(folder.path(""), disk);
    ctl::Workspace workspace;
    QCOMPARE(renamed(folder, &workspace, text, "x_z"), QStringList("only a global can be renamed"));
}

QUORVANE_TEST_MAIN(QCoreApplication, WorkspaceRenameTest)

#include "workspace_rename_test.moc"
