// Which project a script is taken for, where people left folders as they do: copies of the project's file, one
// that is broken, paths of other systems, none at all.
#include "quorvanectl/analysis/project_lookup.h"

#include "support/file_tree.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDir>

using support::FileTree;
using support::ProjectFolder;

class ProjectLookupTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void listed_data();
    void listed();
    void aFileThatCannotBeRead();
    void theProjectAbove_data();
    void theProjectAbove();
    void aNameOfAResourceHasNoneAbove();
    void scriptsBelow_data();
    void scriptsBelow();
};

// Of the script s/a.ys.
void ProjectLookupTest::listed_data() {
    QTest::addColumn<QByteArray>("project");
    QTest::addColumn<bool>("expected");
    const auto row = [](const char *name, const QByteArray &scripts, bool expected) {
        QTest::newRow(name) << R"({"scripts": )" + scripts + "}" << expected;
    };
    row("as it stands", R"([{"path": "s/a.ys"}])", true);
    row("with the other divider", R"([{"path": "s\\a.ys"}])", true);
    row("by a way there and back", R"([{"path": "./s/../s/a.ys"}])", true);
    row("with a divider too many", R"([{"path": "s//a.ys"}])", true);
    row("with escapes", R"([{"path": "\u0073/a.ys"}])", true);
    row("behind entries that are none",
        R"([7, null, "s/a.ys", [], {"path": 3}, {"path": "s/a.ys"}])", true);
    row("behind one that is gone", R"([{"path": "gone.ys"}, {"path": "s/a.ys"}])", true);
    row("no entry", "[]", false);
    row("another script of its name", R"([{"path": "a.ys"}])", false);
    row("an empty path", R"([{"path": ""}])", false);
    row("its folder", R"([{"path": "s"}])", false);
    row("under another key", R"([{"file": "s/a.ys"}])", false);
    row("a text in the place of an entry", R"(["s/a.ys"])", false);
    row("an object in the place of the list", R"({"path": "s/a.ys"})", false);
    row("a path with blanks around it", R"([{"path": " s/a.ys"}])", false);
    QTest::newRow("no JSON") << QByteArray(R"({"scripts": [{"path": "s/a.ys"},]})") << false;
    QTest::newRow("no object") << QByteArray(R"([{"path": "s/a.ys"}])") << false;
    QTest::newRow("nothing") << QByteArray() << false;
    QTest::newRow("a list that comes twice: the last counts")
        << QByteArray(R"({"scripts": 7, "scripts": [{"path": "s/a.ys"}]})") << true;
    QTest::newRow("a mark of UTF-8 before it")
        << QByteArray("\xef\xbb\xbf{\"scripts\": [{\"path\": \"s/a.ys\"}]}") << true;
}

void ProjectLookupTest::listed() {
    QFETCH(QByteArray, project);
    const ProjectFolder folder;
    const QString path = folder.write("line.yslib", project);
    const QString script = folder.write("s/a.ys", "");
    QTEST(ctl::listsScript(path, script), "expected");
}

void ProjectLookupTest::aFileThatCannotBeRead() {
    const ProjectFolder folder;
    const QString script = folder.write("a.ys", "");
    QVERIFY(!ctl::listsScript(folder.path("gone.yslib"), script));
    QVERIFY(QDir().mkdir(folder.path("folder.yslib")));
    QVERIFY(!ctl::listsScript(folder.path("folder.yslib"), script));
    (void)folder.writeZeros("large.yslib", qint64(1) << 30);
    QVERIFY(!ctl::listsScript(folder.path("large.yslib"), script));
    QCOMPARE(ctl::projectAbove(script), folder.path("large.yslib"));
}

// Of s/deep/a.ys, which need not be there.
void ProjectLookupTest::theProjectAbove_data() {
    QTest::addColumn<FileTree>("disk");
    QTest::addColumn<QString>("expected");
    const QByteArray listing = R"({"scripts": [{"path": "s/deep/a.ys"}]})";
    QTest::newRow("two folders above, with nothing between")
        << FileTree{{"line.yslib", "{}"}} << "line.yslib";
    QTest::newRow("the nearest, though it is no JSON")
        << FileTree{{"line.yslib", listing}, {"s/broken.yslib", "{"}} << "s/broken.yslib";
    QTest::newRow("not one in a folder beside it")
        << FileTree{{"line.yslib", listing}, {"s/other/x.yslib", "{}"}} << "line.yslib";
    QTest::newRow("not a copy under another ending")
        << FileTree{{"line.yslib", listing}, {"s/line.yslib.bak", "{}"}, {"s/line.yslib~", "{}"}}
        << "line.yslib";
    QTest::newRow("not a copy under its ending that lists nothing")
        << FileTree{{"line - copy.yslib", "{}"}, {"line.yslib", listing}} << "line.yslib";
    QTest::newRow("of two that list it the first by name")
        << FileTree{{"b.yslib", listing}, {"a.yslib", listing}} << "a.yslib";
}

void ProjectLookupTest::theProjectAbove() {
    QFETCH(FileTree, disk);
    const ProjectFolder folder;
    support::writeTree(folder.path(""), disk);
    QVERIFY(QDir(folder.path("")).mkpath("s/deep"));
    const QString found = ctl::projectAbove(folder.path("s/deep/a.ys"));
    QTEST(QDir(folder.path("")).relativeFilePath(found), "expected");
}

// An editor may name a text as Qt names the resources of a program, of which none is above another.
void ProjectLookupTest::aNameOfAResourceHasNoneAbove() {
    QCOMPARE(ctl::projectAbove(":untitled.ys"), QString());
    QCOMPARE(ctl::projectAbove(":/untitled.ys"), QString());
}

void ProjectLookupTest::scriptsBelow_data() {
    QTest::addColumn<FileTree>("disk");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("none") << FileTree{{"a.txt", ""}} << QStringList();
    QTest::newRow("in every depth")
        << FileTree{{"a.ys", ""}, {"b/c/d/e.ys", ""}} << QStringList{"a.ys", "b/c/d/e.ys"};
    QTest::newRow("in capitals") << FileTree{{"A.YS", ""}, {"b.Ys", ""}}
                                 << QStringList{"A.YS", "b.Ys"};
    QTest::newRow("not what only looks like one")
        << FileTree{{"a.ys.bak", ""}, {"a.ysx", ""}, {"ys", ""}, {"a.yslib", "{}"}}
        << QStringList();
    QTest::newRow("a folder of that name is none, but what is in it")
        << FileTree{{"a.ys/b.ys", ""}, {"c.ys/", ""}} << QStringList{"a.ys/b.ys"};
    QTest::newRow("with blanks and Chinese in the name")
        << FileTree{{"my script.ys", ""}, {QString("高/度.ys"), ""}}
        << QStringList{"my script.ys", "高/度.ys"};
}

void ProjectLookupTest::scriptsBelow() {
    QFETCH(FileTree, disk);
    const ProjectFolder folder;
    support::writeTree(folder.path(""), disk);
    QStringList found;
    for (const QString &script : ctl::scriptsInFolder(folder.path("")))
        found.append(QDir(folder.path("")).relativeFilePath(script));
    found.sort();
    QTEST(found, "expected");
    QVERIFY(ctl::scriptsInFolder(folder.path("gone")).isEmpty());
}

QUORVANE_TEST_MAIN(QCoreApplication, ProjectLookupTest)

#include "project_lookup_test.moc"
