// A package as a launcher would find it: what is in it, which project, and what is no package.
#include "quorvanectl/package/project_package.h"

#include "small_project.h"
#include "support/file_kinds.h"
#include "support/file_tree.h"
#include "support/library_file.h"
#include "support/platform.h"
#include "support/staged_main.h"
#include "support/zip_maker.h"
#include "update/http_fetch.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

using ctl::ProjectPackage;
using support::FileTree;

class ProjectPackageTest : public QObject {
    Q_OBJECT

private:
    QScopedPointer<QTemporaryDir> folder;

    QString path(const QString &name) const;
    ProjectPackage inspect(const QByteArray &zip) const;
    static FileTree changed(const FileTree &change);

private Q_SLOTS:
    void initTestCase();

    void init();
    void aWholePackage();
    void packagesThatALauncherMisreads_data();
    void packagesThatALauncherMisreads();
    void namesAndVersions_data();
    void namesAndVersions();
    void whatDoesNotUnpack_data();
    void whatDoesNotUnpack();
    void nothingIsLeftBeside();
    void aWorkFolderThatIsNotThere();
    void filesBelowAFolder();
    void linksAreListedAndNotFollowed();
    void projectFilesWhateverTheirLetters();
    void sizes_data();
    void sizes();
};

QString ProjectPackageTest::path(const QString &name) const {
    return folder->filePath(name);
}

ProjectPackage ProjectPackageTest::inspect(const QByteArray &zip) const {
    support::writeTree(folder->path(), {{"a.zip", zip}});
    return ctl::inspectPackage(path("a.zip"));
}

FileTree ProjectPackageTest::changed(const FileTree &change) {
    return support::laidOver(support::smallProject(), change);
}

void ProjectPackageTest::init() {
    folder.reset(new QTemporaryDir);
}

void ProjectPackageTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void ProjectPackageTest::aWholePackage() {
    FileTree tree = support::smallProject();
    tree.remove("logs/2026-01-02.log");
    const ProjectPackage package = inspect(support::zipOf(tree));
    QVERIFY2(package.unpacked, qPrintable(package.error));
    QCOMPARE(package.files,
             QStringList({"line3.yslib", "scripts/main.ys", QStringLiteral("相机/设置 1.json")}));
    QCOMPARE(package.projectFiles, QStringList("line3.yslib"));
    QCOMPARE(package.name, QStringLiteral("产线三"));
    QCOMPARE(package.version, QString("1.1.0"));
    QVERIFY(!package.hasLogs);
    QCOMPARE(package.issues.size(), 0);
}

void ProjectPackageTest::packagesThatALauncherMisreads_data() {
    QTest::addColumn<FileTree>("tree");
    QTest::addColumn<QStringList>("projectFiles");
    QTest::addColumn<bool>("hasLogs");
    QTest::addColumn<bool>("sound");
    const FileTree small = support::smallProject();
    QTest::newRow("logs at its top") << small << QStringList("line3.yslib") << true << true;
    FileTree deep = small;
    deep.insert("results/logs/a", deep.take("logs/2026-01-02.log"));
    QTest::newRow("logs deeper down are its own")
        << deep << QStringList("line3.yslib") << false << true;
    QTest::newRow("a file called logs")
        << FileTree{{"logs", "x"}} << QStringList() << false << false;
    QTest::newRow("two project files")
        << changed({{"old/line2.YSLIB", "{}"}}) << QStringList({"line3.yslib", "old/line2.YSLIB"})
        << true << false;
    QTest::newRow("no project file")
        << FileTree{{"readme.txt", "x"}} << QStringList() << false << false;
    QTest::newRow("a folder with a project file's name")
        << FileTree{{"line3.yslib/readme.txt", "x"}} << QStringList() << false << false;
    QTest::newRow("a project file that is no JSON")
        << FileTree{{"line3.yslib", "{"}} << QStringList("line3.yslib") << false << false;
    QTest::newRow("a project file that is empty")
        << FileTree{{"line3.yslib", ""}} << QStringList("line3.yslib") << false << false;
    QTest::newRow("a script that is missing")
        << FileTree{{"line3.yslib", small["line3.yslib"]}, {QStringLiteral("相机/设置 1.json"), ""}}
        << QStringList("line3.yslib") << false << false;
}

void ProjectPackageTest::packagesThatALauncherMisreads() {
    QFETCH(FileTree, tree);
    const ProjectPackage package = inspect(support::zipOf(tree));
    QVERIFY2(package.unpacked, qPrintable(package.error));
    QTEST(package.projectFiles, "projectFiles");
    QTEST(package.hasLogs, "hasLogs");
    QTEST(package.projectFiles.size() == 1 && !hasErrors(package.issues), "sound");
}

void ProjectPackageTest::namesAndVersions_data() {
    QTest::addColumn<QByteArray>("project"); // the object in the project file
    QTest::addColumn<QByteArray>("sidecar");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("version");
    QTest::newRow("both") << QByteArray(R"({"name": "a", "version": "1.2.0"})") << QByteArray()
                          << "a"
                          << "1.2.0";
    QTest::newRow("a name without a version")
        << QByteArray(R"({"name": "a"})") << QByteArray() << "a"
        << "";
    QTest::newRow("a version with a v")
        << QByteArray(R"({"name": "a", "version": " v1.2.0"})") << QByteArray() << "a"
        << "1.2.0";
    QTest::newRow("a version that is a number, in the launcher's form")
        << QByteArray(R"({"name": "a", "version": 1.2})") << QByteArray() << "a"
        << "1.20000000";
    QTest::newRow("a name that is a list")
        << QByteArray(R"({"name": ["a"], "version": "1.2.0"})") << QByteArray() << ""
        << "1.2.0";
    QTest::newRow("the sidecar's version where the file has none")
        << QByteArray(R"({"name": "a"})") << QByteArray("2.0.0\n") << "a"
        << "2.0.0";
    QTest::newRow("nothing is an object") << QByteArray("7") << QByteArray() << ""
                                          << "";
}

void ProjectPackageTest::namesAndVersions() {
    QFETCH(QByteArray, project);
    QFETCH(QByteArray, sidecar);
    FileTree tree{{"line.yslib", "{\"project\": " + project + "}"}};
    if (!sidecar.isNull())
        tree.insert(".quorvane-installed-version", sidecar);
    const ProjectPackage package = inspect(support::zipOf(tree));
    QTEST(package.name, "name");
    QTEST(package.version, "version");
}

void ProjectPackageTest::whatDoesNotUnpack_data() {
    QTest::addColumn<QByteArray>("zip");
    QTest::addColumn<QString>("error"); // its beginning
    const QByteArray whole = support::zipOf(support::smallProject());
    QTest::newRow("an empty file") << QByteArray() << "";
    QTest::newRow("a text") << QByteArray("no archive\n") << "";
    QTest::newRow("the first half of a download") << whole.left(whole.size() / 2) << "";
    QTest::newRow("the last half of a download") << whole.mid(whole.size() / 2) << "";
    QTest::newRow("a page that says that nothing was found")
        << QByteArray("<html><body>404 Not Found</body></html>") << "";
    QTest::newRow("an entry that leads out")
        << support::makeZip({{"../x", "x"}}) << "unsafe zip entry: ../x";
    QTest::newRow("an entry from the root")
        << support::makeZip({{"/x", "x"}}) << "unsafe zip entry: /x";
    QTest::newRow("an entry with a drive")
        << support::makeZip({{"C:/x", "x"}}) << "unsafe zip entry: C:/x";
    support::ZipEntry spoilt{"a", "x"};
    spoilt.crcChange = 1;
    QTest::newRow("an entry with a wrong checksum") << support::makeZip({spoilt}) << "";
    support::ZipEntry locked{"a", "x"};
    locked.flags = 1;
    QTest::newRow("an entry with a password") << support::makeZip({locked}) << "";
}

void ProjectPackageTest::whatDoesNotUnpack() {
    QFETCH(QByteArray, zip);
    QFETCH(QString, error);
    const ProjectPackage package = inspect(zip);
    QVERIFY(!package.unpacked);
    QVERIFY(!package.error.isEmpty());
    QCOMPARE(package.error.left(error.size()), error);
    QVERIFY2(!package.error.contains('\n'), qPrintable(package.error));
    QCOMPARE(package.files, QStringList());
    QCOMPARE(package.name, QString());
}

void ProjectPackageTest::nothingIsLeftBeside() {
    support::writeTree(folder->path(), {{"good.zip", support::zipOf(support::smallProject())},
                                        {"bad.zip", "no archive"},
                                        {"work/", ""}});
    const FileTree before = support::readTree(folder->path());
    for (const char *const zip : {"good.zip", "bad.zip", "none.zip"})
        QCOMPARE(ctl::inspectPackage(path(zip), path("work")).unpacked,
                 QByteArray(zip) == "good.zip");
    QCOMPARE(support::readTree(folder->path()), before);
}

void ProjectPackageTest::aWorkFolderThatIsNotThere() {
    support::writeTree(folder->path(), {{"a.zip", support::zipOf(support::smallProject())}});
    const ProjectPackage package = ctl::inspectPackage(path("a.zip"), path("none"));
    QVERIFY(!package.unpacked);
    QVERIFY(!package.error.isEmpty());
    QVERIFY(!QFileInfo::exists(path("none")));
}

void ProjectPackageTest::filesBelowAFolder() {
    support::writeTree(path("f"), {{"b", "1"}, {"a/c", "1"}, {".hidden", "1"}, {"empty/", ""}});
    QCOMPARE(ctl::filesBelow(path("f")), QStringList({".hidden", "a/c", "b"}));
    QCOMPARE(ctl::filesBelow(path("f") + "/a/.."), QStringList({".hidden", "a/c", "b"}));
    QCOMPARE(ctl::filesBelow(path("f/empty")), QStringList());
    QCOMPARE(ctl::filesBelow(path("none")), QStringList());
    QCOMPARE(ctl::filesBelow(path("f/b")), QStringList());
}

void ProjectPackageTest::linksAreListedAndNotFollowed() {
    support::writeTree(folder->path(), {{"f/a", "1"}, {"outside/b", "1"}});
    if (!support::makeLink(path("outside"), path("f/folder")))
        QSKIP("Wine makes no links");
    QVERIFY(support::makeLink(path("outside/b"), path("f/file")));
    QVERIFY(support::makeLink(path("f"), path("f/itself")));
    QCOMPARE(ctl::filesBelow(path("f")), QStringList({"a", "file"}));
}

void ProjectPackageTest::projectFilesWhateverTheirLetters() {
    QCOMPARE(ctl::projectFilesAmong({"a.yslib", "b.YsLib", "c.yslib.bak", "d.yslib2", "eyslib",
                                     "x/y.yslib", ".yslib", "f.ys"}),
             QStringList({"a.yslib", "b.YsLib", "x/y.yslib", ".yslib"}));
    QCOMPARE(ctl::projectFilesAmong({}), QStringList());
}

void ProjectPackageTest::sizes_data() {
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<QString>("fault");
    const QString large = "is larger than 2 GiB: a launcher holds a download whole in memory, and "
                          "none larger";
    QTest::newRow("nothing") << qint64(0) << "is empty, and a launcher takes no empty download";
    QTest::newRow("one byte") << qint64(1) << "";
    QTest::newRow("the largest that is taken") << qint64(largestDownload) << "";
    QTest::newRow("one byte more") << qint64(largestDownload) + 1 << large;
    QTest::newRow("far more") << qint64(largestDownload) * 1000 << large;
}

void ProjectPackageTest::sizes() {
    QFETCH(qint64, bytes);
    QTEST(ctl::sizeFault(bytes), "fault");
}

QUORVANE_TEST_MAIN(QCoreApplication, ProjectPackageTest)
#include "project_package_test.moc"
