// Listings of folders and findings about projects, with what lies in folders by mistake.
#include "quorvanectl/support/project_facts.h"

#include "support/file_kinds.h"
#include "support/file_tree.h"
#include "support/library_file.h"
#include "support/platform.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QTemporaryDir>

using support::FileTree;

namespace {

const QByteArray project =
    R"({"schemaVersion": 1, "project": {"name": "a", "displayName": "a", "createdAt": "b"},
"scripts": [{"id": "m", "path": "m.ys", "role": "main"}], "tasks": {"main": {"entryScriptId": "m"}}})";

const QString ofAbc = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
const QString ofNothing = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";

// What stands before an entry's size, behind its name: "name: hash".
QStringList contents(const QString &listing) {
    static const QRegularExpression form(
        "^(.*?) +(\\d+) (\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ) [rwx-]{9} [\\d-]+:[\\d-]+  "
        "(.+)$");
    QStringList told;
    for (const QString &line : listing.trimmed().split('\n').mid(1)) {
        const auto match = form.match(line);
        told.append(match.hasMatch()
                        ? match.captured(4) + ": " + match.captured(1) + ' ' + match.captured(2)
                        : line);
    }
    return told;
}

} // namespace

class ProjectFactsTest : public QObject {
    Q_OBJECT

private:
    QScopedPointer<QTemporaryDir> folder;

    QString path(const QString &name) const { return folder->filePath(name); }
    QString listing() const { return ctl::listing("Title", folder->path()); }

private Q_SLOTS:
    void initTestCase() { QVERIFY(support::loadScriptVocabulary()); }
    void init() { folder.reset(new QTemporaryDir); }
    void entries_data();
    void entries();
    void aFolderThatIsMissing();
    void aFileForAFolder();
    void aPipeIsNotRead();
    void linksAreToldByTheirTargets();
    void whatMayNotBeRead();
    void projectFiles_data();
    void projectFiles();
    void findings_data();
    void findings();
};

void ProjectFactsTest::entries_data() {
    QTest::addColumn<FileTree>("tree");
    QTest::addColumn<QStringList>("told");
    const auto row = [](const char *name, const FileTree &tree, const QStringList &told) {
        QTest::newRow(name) << tree << told;
    };
    row("none", {}, {});
    row("a file", {{"a", "abc"}}, {"a: " + ofAbc + " 3"});
    row("an empty one", {{"a", ""}}, {"a: " + ofNothing + " 0"});
    row("an empty folder", {{"a/", ""}}, {"a/: (empty folder) 0"});
    row("a folder with a hidden file alone", {{"a/.b", ""}},
        {"a/: (folder) 0", "a/.b: " + ofNothing + " 0"});
    row("names that begin alike", {{"a/b", ""}, {"a-b", ""}, {"ab", ""}},
        {"a/: (folder) 0", "a-b: " + ofNothing + " 0", "a/b: " + ofNothing + " 0",
         "ab: " + ofNothing + " 0"});
    row("capitals first", {{"b", ""}, {"C", ""}},
        {"C: " + ofNothing + " 0", "b: " + ofNothing + " 0"});
    row("blanks in a name", {{"a  b 7", "abc"}}, {"a  b 7: " + ofAbc + " 3"});
    row("a per cent sign and a place", {{"100%1 %2", "abc"}}, {"100%1 %2: " + ofAbc + " 3"});
    row("Chinese", {{QStringLiteral("产线/主.ys"), "abc"}},
        {QStringLiteral("产线/: (folder) 0"), QStringLiteral("产线/主.ys: ") + ofAbc + " 3"});
}

void ProjectFactsTest::entries() {
    QFETCH(FileTree, tree);
    support::writeTree(folder->path(), tree);
    QVERIFY(listing().startsWith("Title: " + folder->path() + '\n'));
    QTEST(contents(listing()), "told");
}

void ProjectFactsTest::aFolderThatIsMissing() {
    QCOMPARE(ctl::listing("Data", path("none")), "Data: " + path("none") + '\n');
}

void ProjectFactsTest::aFileForAFolder() {
    support::writeTree(folder->path(), {{"a", "abc"}});
    QCOMPARE(ctl::listing("Data", path("a")), "Data: " + path("a") + '\n');
}

void ProjectFactsTest::aPipeIsNotRead() {
    if (!support::makePipe(path("pipe")))
        QSKIP("no pipes in folders there");
    QCOMPARE(contents(listing()), QStringList("pipe: (not a regular file) 0"));
}

void ProjectFactsTest::linksAreToldByTheirTargets() {
    support::writeTree(folder->path(), {{"x/a", "abc"}});
    if (!support::makeLink(path("x/a"), path("file")))
        QSKIP("Wine makes no links");
    QVERIFY(support::makeLink(path("x"), path("folder")));
    const QStringList told = contents(listing());
    QCOMPARE(told.size(), 4);
    QVERIFY2(told[0].startsWith("file: link to " + path("x/a")), qPrintable(told[0]));
    QVERIFY2(told[1].startsWith("folder: link to " + path("x ")), qPrintable(told[1]));
    QCOMPARE(told.mid(2), (QStringList{"x/: (folder) 0", "x/a: " + ofAbc + " 3"}));
}

void ProjectFactsTest::whatMayNotBeRead() {
    if (!support::permissionsKeepOut())
        QSKIP("no permission keeps this user out");
    support::writeTree(folder->path(), {{"a", "abc"}, {"b/c", "abc"}});
    QVERIFY(QFile::setPermissions(path("a"), {}));
    QVERIFY(QFile::setPermissions(path("b"), {}));
    const QStringList told = contents(listing());
    QVERIFY(
        QFile::setPermissions(path("b"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QCOMPARE(told,
             (QStringList{"a: (Permission denied) 3", "b/: (folder that may not be listed) 0"}));
}

void ProjectFactsTest::projectFiles_data() {
    QTest::addColumn<FileTree>("tree");
    QTest::addColumn<QStringList>("found");
    const auto row = [](const char *name, const FileTree &tree, const QStringList &found) {
        QTest::newRow(name) << tree << found;
    };
    row("none", {}, {});
    row("one beside the folders is none", {{"line.yslib", ""}}, {});
    row("a folder without one", {{"a/notes.txt", ""}, {"b/b.yslib", ""}}, {"b/b.yslib"});
    row("a copy of another end", {{"a/a.yslib.bak", ""}}, {});
    row("in the order of the folders", {{"b/x.yslib", ""}, {"a/y.yslib", ""}},
        {"a/y.yslib", "b/x.yslib"});
}

void ProjectFactsTest::projectFiles() {
    QFETCH(FileTree, tree);
    support::writeTree(folder->path(), tree);
    QStringList found = ctl::projectFilesBelow(folder->path());
    found.replaceInStrings(folder->path() + '/', "");
    QTEST(found, "found");
}

void ProjectFactsTest::findings_data() {
    QTest::addColumn<FileTree>("tree");
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("told");
    const auto row = [](const char *name, const FileTree &tree, const QStringList &files,
                        const QString &told) { QTest::newRow(name) << tree << files << told; };
    row("of no project", {}, {}, "");
    row("of a sound one", {{"a.yslib", project}, {"m.ys", ""}}, {"a.yslib"},
        "@/a.yslib\n(nothing)\n");
    row("of one without its script", {{"a.yslib", project}}, {"a.yslib"},
        "@/a.yslib\n[Error] scripts[0].path: 引用的文件不存在：m.ys\n");
    row("of one with a script too many", {{"a.yslib", project}, {"m.ys", ""}, {"n.ys", ""}},
        {"a.yslib"}, "@/a.yslib\n[Warning] scripts: 磁盘上的脚本未登记到 scripts[]：n.ys\n");
    row("of one that is gone, and of the next", {{"a.yslib", project}, {"m.ys", ""}},
        {"none.yslib", "a.yslib"},
        "@/none.yslib\n[Error] yslib: 无法读取 yslib：" +
            support::systemText("No such file or directory", "File not found.") +
            "\n@/a.yslib\n(nothing)\n");
}

void ProjectFactsTest::findings() {
    QFETCH(FileTree, tree);
    QFETCH(QStringList, files);
    QFETCH(QString, told);
    support::writeTree(folder->path(), tree);
    for (QString &file : files)
        file = path(file);
    QCOMPARE(ctl::findingsAbout(files), told.replace('@', folder->path()));
}

QUORVANE_TEST_MAIN(QCoreApplication, ProjectFactsTest)
#include "project_facts_test.moc"
