// From a name to its declarations and uses: in one script, in those that import it, and in all of a project.
#include "quorvanectl/analysis/workspace.h"

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

constexpr char project[] =
    R"({"scripts": [{"path": "a.ys"}, {"path": "sub\\b.ys"}, {"path": "c.ys"}],
"tasks": {"subs": [{}, {"writesGlobals": ["x_y", "高", "\u0078_y", 1]}]}})";

const FileTree disk{
    {"line.yslib", project},
    {"a.ys", "import \"sub/b.ys\";\nglobal int x_y;\nint n;\nx_y = f(n) + print(x_y);\n"},
    {"sub/b.ys", "import \"../c.ys\";\nfunction f(n) { x_y = n; return g() }\n"},
    {"c.ys", "function g() { print(1); int x_y; x_y++; }\nfunction f() { g() }\n"},
    {"d.ys", "import \"gone.ys\"; import \"/c.ys\"; x_y = f()\n"}};

// Opens what the place is in, with the cursor at the bar, and gives its index.
int openedAt(ctl::Workspace *workspace, const ProjectFolder &folder, const QString &name,
             const QString &marked) {
    QString text = marked;
    const int index = marked.indexOf('|');
    workspace->open(folder.path(name), text.remove(index, 1));
    return index;
}

// "a.ys@23 declares", "sub/b.ys@8"
QStringList linesOf(const ProjectFolder &folder, const QVector<ctl::NamePlace> &places) {
    QStringList lines;
    for (const ctl::NamePlace &place : places) {
        const QString does = place.declares ? " declares" : place.writes ? " writes" : "";
        lines.append(QString("%1@%2%3").arg(QDir(folder.path("")).relativeFilePath(place.file),
                                            QString::number(place.at.from), does));
    }
    return lines;
}

QString onDisk(const char *name) {
    return QString::fromUtf8(disk.value(name));
}

// The text of that file with a bar behind the `count`-th time that `word` stands in it.
QString barred(const char *name, const QString &word, int count = 1) {
    QString text = onDisk(name);
    int at = -1;
    for (int i = 0; i < count; ++i)
        at = text.indexOf(word, at + 1);
    return text.insert(at + word.size(), '|');
}

} // namespace

class WorkspaceNavigationTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void places_data();
    void places();
    void textsThatAreOpenCount();
    void ofAFunctionTheNearestOneCounts();
    void aScriptWithoutAProject();
    void globalsThatStandThere_data();
    void globalsThatStandThere();
    void rename_data();
    void rename();
    void refusals_data();
    void refusals();
};

void WorkspaceNavigationTest::initTestCase() {
    QVERIFY(support::loadLibraryText("[Highlight]\nother=function,include,import\n"
                                     "[FunctionNo]\n1,print_it,1,text#C,help\n"));
    QCOMPARE(FunctionLibrary::instance().functionNames, QStringList("print_it"));
}

void WorkspaceNavigationTest::places_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("definitions");
    QTest::addColumn<QStringList>("references");
    QTest::addColumn<QStringList>("highlights");
    const QStringList global{"a.ys@30 declares",   "a.ys@42 writes", "a.ys@61",
                             "sub/b.ys@34 writes", "line.yslib@116", "line.yslib@128"};
    QTest::newRow("a global where it is declared")
        << "a.ys" << barred("a.ys", "x_y") << QStringList{"a.ys@30 declares"} << global
        << QStringList(global.mid(0, 3));
    QTest::newRow("a global of another script")
        << "sub/b.ys" << barred("sub/b.ys", "x_y") << QStringList{"a.ys@30 declares"} << global
        << QStringList{"sub/b.ys@34 writes"};
    QTest::newRow("a local that hides it")
        << "c.ys" << barred("c.ys", "x_y", 2) << QStringList{"c.ys@29 declares"}
        << QStringList{"c.ys@29 declares", "c.ys@34 writes"}
        << QStringList{"c.ys@29 declares", "c.ys@34 writes"};
    QTest::newRow("a variable of one script, and a parameter of another of its name")
        << "a.ys" << barred("a.ys", "(n") << QStringList{"a.ys@39 declares"}
        << QStringList{"a.ys@39 declares", "a.ys@50"} << QStringList{"a.ys@39 declares", "a.ys@50"};
    QTest::newRow("a function of an imported script")
        << "a.ys" << barred("a.ys", "= f") << QStringList{"sub/b.ys@27 declares"}
        << QStringList{"a.ys@48", "sub/b.ys@27 declares"} << QStringList{"a.ys@48"};
    QTest::newRow("a function that an imported script imports")
        << "c.ys" << barred("c.ys", "{ g") << QStringList{"c.ys@9 declares"}
        << QStringList{"sub/b.ys@50", "c.ys@9 declares", "c.ys@58"}
        << QStringList{"c.ys@9 declares", "c.ys@58"};
    QTest::newRow("a function of the same name elsewhere")
        << "c.ys" << barred("c.ys", "function f") << QStringList{"c.ys@52 declares"}
        << QStringList{"c.ys@52 declares"} << QStringList{"c.ys@52 declares"};
    QTest::newRow("a function that no script declares")
        << "a.ys" << barred("a.ys", "print") << QStringList() << QStringList{"a.ys@55", "c.ys@15"}
        << QStringList{"a.ys@55"};
    QTest::newRow("an import") << "a.ys" << barred("a.ys", "b.y")
                               << QStringList{"sub/b.ys@0 declares"} << QStringList{"a.ys@7"}
                               << QStringList{"a.ys@7"};
    QTest::newRow("an import of what is not there")
        << "d.ys" << barred("d.ys", "gone") << QStringList() << QStringList{"d.ys@7"}
        << QStringList{"d.ys@7"};
    QTest::newRow("an import that is not followed")
        << "d.ys" << barred("d.ys", "/c") << QStringList() << QStringList() << QStringList();
    QTest::newRow("a script that the project does not list")
        << "d.ys" << barred("d.ys", "x_y") << QStringList{"a.ys@30 declares"}
        << QStringList(global.mid(0, 4) + QStringList("d.ys@34 writes") + global.mid(4))
        << QStringList{"d.ys@34 writes"};
    QTest::newRow("no name") << "a.ys"
                             << "\n|\n"
                             << QStringList() << QStringList() << QStringList();
    QTest::newRow("a project's file") << "line.yslib" << barred("line.yslib", "x_y")
                                      << QStringList() << QStringList() << QStringList();
}

void WorkspaceNavigationTest::places() {
    QFETCH(QString, name);
    QFETCH(QString, text);
    const ProjectFolder folder;
    support::writeTree(folder.path(""), disk);
    ctl::Workspace workspace;
    const int index = openedAt(&workspace, folder, name, text);
    const QString path = folder.path(name);
    QTEST(linesOf(folder, workspace.definitionsAt(path, index)), "definitions");
    QTEST(linesOf(folder, workspace.referencesAt(path, index)), "references");
    QTEST(linesOf(folder, workspace.highlightsAt(path, index)), "highlights");
}

void WorkspaceNavigationTest::textsThatAreOpenCount() {
    const ProjectFolder folder;
    support::writeTree(folder.path(""), disk);
    ctl::Workspace workspace;
    const int index = openedAt(&workspace, folder, "a.ys", "x_y|");
    workspace.open(folder.path("c.ys"), "\nglobal int x_y;");
    workspace.open(folder.path("line.yslib"), R"({"scripts": [{"path": "c.ys"}]})");
    QCOMPARE(linesOf(folder, workspace.referencesAt(folder.path("a.ys"), index)),
             QStringList({"c.ys@12 declares", "a.ys@0"}));
    // What is closed counts as it lies on the disk.
    workspace.close(folder.path("c.ys"));
    QCOMPARE(linesOf(folder, workspace.referencesAt(folder.path("a.ys"), index)),
             QStringList("a.ys@0"));
}

void WorkspaceNavigationTest::ofAFunctionTheNearestOneCounts() {
    const ProjectFolder folder;
    support::writeTree(folder.path(""), {{"b.ys", "import \"c.ys\"; import \"a.ys\";"},
                                         {"c.ys", "import \"d.ys\";"},
                                         {"d.ys", "function f() {} function h() {}"},
                                         {"e.ys", "function f() {}"}});
    ctl::Workspace workspace;
    const int index =
        openedAt(&workspace, folder, "a.ys", "import \"b.ys\"; import \"e.ys\"; f|(); h()");
    const QString path = folder.path("a.ys");
    QCOMPARE(linesOf(folder, workspace.definitionsAt(path, index)), QStringList("e.ys@9 declares"));
    // Imports may run in a circle.
    QCOMPARE(linesOf(folder, workspace.definitionsAt(path, index + 5)),
             QStringList("d.ys@25 declares"));
}

void WorkspaceNavigationTest::aScriptWithoutAProject() {
    ctl::Workspace workspace;
    workspace.open("untitled:1", "global int x_y; x_y = f()");
    workspace.open("untitled:2", "x_y");
    const ProjectFolder folder;
    QCOMPARE(workspace.referencesAt("untitled:1", 12).size(), 2);
    QCOMPARE(workspace.referencesAt("untitled:2", 0).size(), 1);
    QCOMPARE(workspace.renameAt("untitled:1", 12, "x_z").places.size(), 2);
}

void WorkspaceNavigationTest::globalsThatStandThere_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("a global") << "a.ys" << barred("a.ys", "x_y") << "x_y@30";
    QTest::newRow("one of another script") << "sub/b.ys" << barred("sub/b.ys", "x_y") << "x_y@34";
    QTest::newRow("a local") << "c.ys" << barred("c.ys", "x_y") << "";
    QTest::newRow("a function") << "a.ys" << barred("a.ys", "print") << "";
    QTest::newRow("an import") << "a.ys" << barred("a.ys", "b.ys") << "";
    QTest::newRow("nothing") << "a.ys"
                             << "|\n"
                             << "";
    QTest::newRow("in a project's file") << "line.yslib" << barred("line.yslib", "x_y") << "";
}

void WorkspaceNavigationTest::globalsThatStandThere() {
    QFETCH(QString, name);
    QFETCH(QString, text);
    const ProjectFolder folder;
    support::writeTree(folder.path(""), disk);
    ctl::Workspace workspace;
    const int index = openedAt(&workspace, folder, name, text);
    const auto global = workspace.globalAt(folder.path(name), index);
    const QString found =
        global ? QString("%1@%2").arg(global->name).arg(global->at.from) : QString();
    QTEST(found, "expected");
}

void WorkspaceNavigationTest::rename_data() {
    QTest::addColumn<QString>("newName");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("everywhere") << "x_z" << QStringList{"a.ys@30 declares", "a.ys@42 writes",
                                                        "a.ys@61",          "sub/b.ys@34 writes",
                                                        "line.yslib@116",   "line.yslib@128"};
    QTest::newRow("to the name that it has") << "x_y" << QStringList();
}

void WorkspaceNavigationTest::rename() {
    QFETCH(QString, newName);
    const ProjectFolder folder;
    support::writeTree(folder.path(""), disk);
    ctl::Workspace workspace;
    const int index = openedAt(&workspace, folder, "sub/b.ys", barred("sub/b.ys", "x_y"));
    const ctl::GlobalRename renamed = workspace.renameAt(folder.path("sub/b.ys"), index, newName);
    QCOMPARE(renamed.refusal, QString());
    QTEST(linesOf(folder, renamed.places), "expected");
}

void WorkspaceNavigationTest::refusals_data() {
    QTest::addColumn<FileTree>("changed");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("newName");
    QTest::addColumn<QString>("expected");
    const auto name = [](const char *row, const QString &newName, const QString &expected) {
        QTest::newRow(row) << FileTree() << "x|_y = 1" << newName << expected;
    };
    name("no name at all", "", "'' is no name of the script language");
    name("two words", "a_b c", "'a_b c' is no name of the script language");
    name("a keyword", "global", "'global' is no name of the script language");
    name("a name with a line's end", "a_b\n", "'a_b\n' is no name of the script language");
    name("one that begins with a digit", "1_b", "'1_b' is no name of the script language");
    name("one that breaks the naming rule", "width",
         "'width' breaks the naming rule {camId}_{metric}");
    name("one of other letters", "高_度", "'高_度' breaks the naming rule {camId}_{metric}");
    name("a function of the library", "print_it",
         "'print_it' is a function of the function library");
    QTest::newRow("no global") << FileTree() << "int n|;"
                               << "x_z"
                               << "only a global can be renamed";
    QTest::newRow("the name of another global") << FileTree{{"c.ys", "\nglobal int x_z;"}} << "x|_y"
                                                << "x_z"
                                                << "c.ys has another 'x_z' in line 2";
    QTest::newRow("the name of a local that would hide it")
        << FileTree{{"sub/b.ys", "function f(x_z) {}"}} << "x|_y"
        << "x_z"
        << "sub/b.ys has another 'x_z' in line 1";
    QTest::newRow("a name that stands in the same script") << FileTree() << "x|_y\nx_z"
                                                           << "x_z"
                                                           << "d.ys has another 'x_z' in line 2";
    QTest::newRow("a script that does not parse and has the name")
        << FileTree{{"c.ys", "\n$ x_y"}} << "x|_y"
        << "x_z"
        << "c.ys has a mistake in line 2: mend it first";
    QTest::newRow("a script that does not parse and has the new name")
        << FileTree{{"c.ys", "x_z\n\n("}} << "x|_y"
        << "x_z"
        << "c.ys has a mistake in line 3: mend it first";
    QTest::newRow("the script itself does not parse") << FileTree() << "x|_y = 1; }"
                                                      << "x_z"
                                                      << "only a global can be renamed";
    QTest::newRow("one that no script declares") << FileTree{{"a.ys", ""}} << "x|_y"
                                                 << "x_z"
                                                 << "no script of the project declares 'x_y'";
}

void WorkspaceNavigationTest::refusals() {
    QFETCH(FileTree, changed);
    QFETCH(QString, text);
    QFETCH(QString, newName);
    const ProjectFolder folder;
    support::writeTree(folder.path(""), support::laidOver(disk, changed));
    ctl::Workspace workspace;
    const int index = openedAt(&workspace, folder, "d.ys", text);
    const ctl::GlobalRename renamed = workspace.renameAt(folder.path("d.ys"), index, newName);
    QTEST(renamed.refusal, "expected");
    QVERIFY(renamed.places.isEmpty());
    // A script that has a mistake elsewhere keeps nothing from it.
    folder.write("c.ys", "} x_yz ax_y\n");
    workspace.open(folder.path("a.ys"), "global int x_y;");
    const int again = openedAt(&workspace, folder, "d.ys", "x_y|");
    QCOMPARE(workspace.renameAt(folder.path("d.ys"), again, "w_y").refusal, QString());
}

QUORVANE_TEST_MAIN(QCoreApplication, WorkspaceNavigationTest)

#include "workspace_navigation_test.moc"
