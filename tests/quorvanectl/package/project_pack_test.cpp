// A project folder becomes a package that the launcher's own code unpacks and accepts.
#include "project/project_file.h"
#include "quorvanectl/package/project_pack.h"
#include "quorvanectl/package/project_package.h"
#include "support/file_tree.h"
#include "support/library_file.h"
#include "support/staged_main.h"
#include "update/files/zip_extract.h"

#include "openssl_program.h"
#include "small_project.h"

#include <sys/stat.h>
#include <unistd.h>

using ctl::packProject;
using ctl::PackResult;
using support::FileTree;

class ProjectPackTest : public QObject {
    Q_OBJECT

private:
    QScopedPointer<QTemporaryDir> folder;

    QString path(const QString &name) const;
    QString writeProject(const FileTree &tree) const;
    PackResult pack(const FileTree &tree, const QString &version = "1.2.0") const;
    FileTree unpacked(const QString &zip) const;

private Q_SLOTS:
    void initTestCase();
    void init();
    void everythingButTheLogsGoesIn();
    void relativePathsWillDo();
    void theFolderStaysAsItWas();
    void thePackageSaysItsVersion();
    void aFileThatSaysTheVersionKeepsItsFormatting();
    void anotherVersionIsAllThatChangesInTheFile();
    void anOldSidecarIsReplaced();
    void aReadOnlyProjectFileIsPacked();
    void logsDeeperDownGoIn();
    void equalContentGivesEqualBytes();
    void chineseNamesAreMarkedAsUtf8();
    void unzipTestsThePackage();
    void aLargeFileSurvives();
    void refusedFolders_data();
    void refusedFolders();
    void aLinkIsRefused();
    void aPipeIsRefused();
    void aProjectFileBelowTheTopIsRefused();
    void aFolderWithoutAProjectIsRefused();
    void aFolderNamedLikeAProjectFile();
    void aBrokenProjectIsRefusedWithItsFindings();
    void aProjectThatNeedsItsLogsIsRefused();
    void warningsDoNotStandInTheWay();
    void aPackageIsReplacedOnlyWhenAsked();
    void noFolderNoPackage();
    void anOutputFolderThatCannotBeWritten();
    void namesForFiles_data();
    void namesForFiles();
    void fullVersions_data();
    void fullVersions();
};

QString ProjectPackTest::path(const QString &name) const {
    return folder->filePath(name);
}

QString ProjectPackTest::writeProject(const FileTree &tree) const {
    support::writeTree(path("line3"), tree);
    return path("line3");
}

PackResult ProjectPackTest::pack(const FileTree &tree, const QString &version) const {
    return packProject(writeProject(tree), version, path("out"), false);
}

FileTree ProjectPackTest::unpacked(const QString &zip) const {
    const QString target = path("unpacked");
    QString error;
    if (!extractZip(zip, target, &error))
        qWarning("%s", qPrintable(error));
    return support::readTree(target);
}

void ProjectPackTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void ProjectPackTest::init() {
    folder.reset(new QTemporaryDir);
}

void ProjectPackTest::everythingButTheLogsGoesIn() {
    const FileTree project = support::smallProject();
    const ctl::PackResult result = pack(project);
    QVERIFY2(result.ok, qPrintable(result.error + result.findings.join('\n')));
    QCOMPARE(result.zipPath, path("out/产线三-1.2.0.zip"));
    FileTree expected = project;
    expected.remove("logs/2026-01-02.log");
    FileTree actual = unpacked(result.zipPath);
    QCOMPARE(actual.take(".quorvane-installed-version"), QByteArray("1.2.0\n"));
    expected.remove("line3.yslib");
    QVERIFY(!actual.take("line3.yslib").isEmpty());
    QCOMPARE(actual, expected);
    QCOMPARE(result.files, 4);
    QByteArray sum;
    QVERIFY(support::openssl({"dgst", "-sha256", "-r", result.zipPath}, &sum));
    QCOMPARE(result.sha256, QString::fromLatin1(sum.left(64)));
}

void ProjectPackTest::relativePathsWillDo() {
    (void)writeProject(support::smallProject());
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(folder->path()));
    const PackResult result = packProject("line3", "1.2.0", "out", false);
    QVERIFY(QDir::setCurrent(before));
    QVERIFY2(result.ok, qPrintable(result.error + result.findings.join('|')));
    QCOMPARE(result.zipPath, QString("out/产线三-1.2.0.zip"));
    QCOMPARE(result.files, 4);
}

void ProjectPackTest::theFolderStaysAsItWas() {
    const QString project = writeProject(support::smallProject());
    const FileTree before = support::readTree(project);
    QVERIFY(packProject(project, "1.2.0", path("out"), false).ok);
    QCOMPARE(support::readTree(project), before);
    QCOMPARE(QDir(path("out")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList("产线三-1.2.0.zip"));
}

void ProjectPackTest::thePackageSaysItsVersion() {
    const PackResult result = pack(support::smallProject(), "2.0.1");
    (void)unpacked(result.zipPath);
    QCOMPARE(readProjectVersion(path("unpacked/line3.yslib")), QString("2.0.1"));
    QCOMPARE(readProjectName(path("unpacked/line3.yslib")), QString("产线三"));
}

void ProjectPackTest::aFileThatSaysTheVersionKeepsItsFormatting() {
    const FileTree project = support::smallProject();
    const PackResult result = pack(project, "1.1.0");
    QCOMPARE(unpacked(result.zipPath).value("line3.yslib"), project.value("line3.yslib"));
}

void ProjectPackTest::anotherVersionIsAllThatChangesInTheFile() {
    const FileTree project = support::smallProject();
    QByteArray expected = project.value("line3.yslib");
    expected.replace("1.1.0", "1.2.0");
    QCOMPARE(unpacked(pack(project).zipPath).value("line3.yslib"), expected);
}

void ProjectPackTest::anOldSidecarIsReplaced() {
    FileTree project = support::smallProject();
    project.insert(".quorvane-installed-version", "0.9.0\n");
    const ctl::PackResult result = pack(project);
    QCOMPARE(unpacked(result.zipPath).value(".quorvane-installed-version"), QByteArray("1.2.0\n"));
}

void ProjectPackTest::aReadOnlyProjectFileIsPacked() {
    const QString project = writeProject(support::smallProject());
    QVERIFY(QFile::setPermissions(project + "/line3.yslib", QFile::ReadOwner));
    const PackResult result = packProject(project, "1.2.0", path("out"), false);
    QVERIFY2(result.ok, qPrintable(result.error));
}

void ProjectPackTest::logsDeeperDownGoIn() {
    FileTree project = support::smallProject();
    project.insert("results/logs/kept.txt", "kept");
    QCOMPARE(unpacked(pack(project).zipPath).value("results/logs/kept.txt"), QByteArray("kept"));
}

// Written in another order, at another time, under another time zone, with other permissions.
void ProjectPackTest::equalContentGivesEqualBytes() {
    const FileTree tree = support::smallProject();
    const QByteArray first = support::bytesOf(pack(tree).zipPath);
    const QString other = path("other/place");
    for (auto file = tree.end(); file != tree.begin();) {
        --file;
        support::writeTree(other, {{file.key(), file.value()}});
    }
    ::chmod(QFile::encodeName(other + "/scripts/main.ys").constData(), 0755);
    QFile touched(other + "/line3.yslib");
    QVERIFY(touched.open(QIODevice::ReadWrite));
    QVERIFY(touched.setFileTime(QDateTime::fromSecsSinceEpoch(1000000000),
                                QFileDevice::FileModificationTime));
    touched.close();
    const QByteArray zone = qgetenv("TZ");
    qputenv("TZ", "Asia/Shanghai");
    ::tzset();
    const PackResult second = packProject(other, "1.2.0", path("out2"), false);
    qputenv("TZ", zone);
    ::tzset();
    QVERIFY(second.ok);
    QVERIFY(!first.isEmpty());
    QVERIFY(support::bytesOf(second.zipPath) == first);
}

// Bit 11 of the general purpose flags, at offset 8 of a central header: PKWARE's APPNOTE, 4.4.4.
void ProjectPackTest::chineseNamesAreMarkedAsUtf8() {
    const QByteArray zip = support::bytesOf(pack(support::smallProject()).zipPath);
    const QByteArray name = QStringLiteral("相机/设置 1.json").toUtf8();
    const int at = zip.lastIndexOf(name) - 46;
    QCOMPARE(zip.mid(at, 4), QByteArray("PK\x01\x02"));
    QCOMPARE(zip.at(at + 9) & 0x08, 0x08);
}

// What ordinary tools make of it.
void ProjectPackTest::unzipTestsThePackage() {
    QProcess unzip;
    unzip.start("unzip", {"-t", pack(support::smallProject()).zipPath});
    QVERIFY(unzip.waitForFinished(30000));
    QCOMPARE(unzip.exitCode(), 0);
}

void ProjectPackTest::aLargeFileSurvives() {
    FileTree project = support::smallProject();
    project.insert("model.bin", QByteArray("0123456789abcdef").repeated(400000));
    const ctl::PackResult result = pack(project);
    QVERIFY2(result.ok, qPrintable(result.error));
    QCOMPARE(unpacked(result.zipPath).value("model.bin"), project.value("model.bin"));
}

void ProjectPackTest::refusedFolders_data() {
    QTest::addColumn<FileTree>("change"); // laid over the small project
    QTest::addColumn<QString>("finding");
    QTest::newRow("two project files")
        << FileTree{{"old/line2.yslib", "{}"}}
        << "several project files, of which the launcher takes any: line3.yslib, "
           "old/line2.yslib";
    QTest::newRow("a name for a device") << FileTree{{"scripts/aux.ys", ""}}
                                         << "scripts/aux.ys: Windows keeps this name for a device";
    QTest::newRow("a colon in a name")
        << FileTree{{"cam:b", ""}} << "cam:b: Windows allows none of < > : \" | ? * \\ in a name";
    QTest::newRow("a backslash in a name")
        << FileTree{{"a\\b", ""}} << "a\\b: Windows allows none of < > : \" | ? * \\ in a name";
    QTest::newRow("a blank at a name's end")
        << FileTree{{"a /b", ""}} << "a /b: Windows drops a point or blank at a name's end";
    QTest::newRow("a line feed in a name")
        << FileTree{{"a\nb", ""}} << "a\nb: it holds a control character";
    QTest::newRow("two names that Windows takes for one")
        << FileTree{{"scripts/MAIN.ys", ""}}
        << "scripts/main.ys: Windows takes it for scripts/MAIN.ys";
}

void ProjectPackTest::refusedFolders() {
    QFETCH(FileTree, change);
    QFETCH(QString, finding);
    const PackResult result = pack(support::laidOver(support::smallProject(), change));
    QVERIFY(!result.ok);
    QCOMPARE(result.findings.join('|').left(finding.size()), finding);
    QVERIFY(!QFileInfo::exists(path("out")));
}

void ProjectPackTest::aLinkIsRefused() {
    const QString project = writeProject(support::smallProject());
    QVERIFY(QFile::link("/etc/hostname", project + "/host"));
    QVERIFY(QFile::link("/nowhere", project + "/broken"));
    QVERIFY(QFile::link("/etc", project + "/folder"));
    QCOMPARE(packProject(project, "1.2.0", path("out"), false).findings,
             QStringList({"broken: it is a link", "folder: it is a link", "host: it is a link"}));
}

void ProjectPackTest::aPipeIsRefused() {
    const QString project = writeProject(support::smallProject());
    QCOMPARE(::mkfifo(QFile::encodeName(project + "/pipe").constData(), 0600), 0);
    QCOMPARE(packProject(project, "1.2.0", path("out"), false).findings,
             QStringList("pipe: it is neither a file nor a folder"));
}

void ProjectPackTest::aProjectFileBelowTheTopIsRefused() {
    FileTree project = support::smallProject();
    project.insert("inner/line3.yslib", project.take("line3.yslib"));
    QCOMPARE(pack(project).findings,
             QStringList("inner/line3.yslib: the project file must lie at the top"));
}

void ProjectPackTest::aFolderWithoutAProjectIsRefused() {
    QCOMPARE(pack({{"readme.txt", "x"}}).findings,
             QStringList("no project file (.yslib) lies here"));
}

// The launcher takes none for a project file.
void ProjectPackTest::aFolderNamedLikeAProjectFile() {
    QCOMPARE(pack({{"line3.yslib/", ""}, {"readme.txt", "x"}}).findings,
             QStringList("no project file (.yslib) lies here"));
    init();
    FileTree project = support::smallProject();
    project.insert("old.yslib/", "");
    const ctl::PackResult result = pack(project);
    QVERIFY2(result.ok, qPrintable(result.error + result.findings.join('|')));
}

void ProjectPackTest::aBrokenProjectIsRefusedWithItsFindings() {
    FileTree project = support::smallProject();
    project.remove("scripts/main.ys");
    const ctl::PackResult result = pack(project);
    QVERIFY(!result.ok);
    QCOMPARE(formatProjectIssues(result.issues),
             QString("[Error] scripts[0].path: 引用的文件不存在：scripts/main.ys"));
    QVERIFY(!QFileInfo::exists(path("out")));
}

// Clean in its folder, broken where it arrives: the logs stay at home.
void ProjectPackTest::aProjectThatNeedsItsLogsIsRefused() {
    FileTree project = support::smallProject();
    project["line3.yslib"].replace("相机/设置 1.json", "logs/2026-01-02.log");
    const ctl::PackResult result = pack(project);
    QVERIFY(!result.ok);
    QCOMPARE(result.findings, QStringList("in the package, [Error] hardware.cameras[0].configPath: "
                                          "引用的文件不存在：logs/2026-01-02.log"));
    QVERIFY(support::readTree(path("out")).isEmpty());
}

void ProjectPackTest::warningsDoNotStandInTheWay() {
    FileTree project = support::smallProject();
    project.insert("scripts/main.ys", "global int width = 3;\n");
    const ctl::PackResult result = pack(project);
    QVERIFY(result.ok);
    QCOMPARE(result.issues.size(), 1);
}

void ProjectPackTest::aPackageIsReplacedOnlyWhenAsked() {
    const QString project = writeProject(support::smallProject());
    const QString zip = packProject(project, "1.2.0", path("out"), false).zipPath;
    const QByteArray first = support::bytesOf(zip);
    support::writeTree(project, {{"more.txt", "more"}});
    QCOMPARE(packProject(project, "1.2.0", path("out"), false).error,
             zip + ": exists; --force overwrites it");
    QVERIFY(support::bytesOf(zip) == first);
    QVERIFY(packProject(project, "1.2.0", path("out"), true).ok);
    QVERIFY(support::bytesOf(zip) != first);
}

void ProjectPackTest::noFolderNoPackage() {
    QCOMPARE(packProject(path("none"), "1.2.0", path("out"), false).error,
             path("none") + ": is no folder");
    support::writeTree(path("file"), {{"x", ""}});
    QCOMPARE(packProject(path("file/x"), "1.2.0", path("out"), false).error,
             path("file/x") + ": is no folder");
}

void ProjectPackTest::anOutputFolderThatCannotBeWritten() {
    support::writeBytes(path("wall"), "a file");
    const PackResult result =
        packProject(writeProject(support::smallProject()), "1.2.0", path("wall/out"), false);
    QVERIFY(!result.ok);
    QVERIFY2(result.error.startsWith(path("wall/out") + ": "), qPrintable(result.error));
}

void ProjectPackTest::namesForFiles_data() {
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("file");
    QTest::newRow("Chinese stays") << QByteArray("产线三") << "产线三-1.2.0.zip";
    QTest::newRow("blanks do not") << QByteArray("line 3 b") << "line_3_b-1.2.0.zip";
    QTest::newRow("nor what a URL reads") << QByteArray("a/b?c#d%20") << "a_b_c_d_20-1.2.0.zip";
    QTest::newRow("nor quotes") << QByteArray("it's") << "it_s-1.2.0.zip";
}

void ProjectPackTest::namesForFiles() {
    QFETCH(QByteArray, name);
    QFETCH(QString, file);
    FileTree project = support::smallProject();
    project["line3.yslib"].replace("产线三", name);
    QCOMPARE(QFileInfo(pack(project).zipPath).fileName(), file);
}

void ProjectPackTest::fullVersions_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("full");
    QTest::newRow("three numbers") << "1.2.0" << true;
    QTest::newRow("four numbers") << "1.2.0.44" << true;
    QTest::newRow("two numbers") << "1.2" << false;
    QTest::newRow("five numbers") << "1.2.3.4.5" << false;
    QTest::newRow("a word behind") << "1.2.0-beta" << false;
    QTest::newRow("a v before") << "v1.2.0" << false;
    QTest::newRow("all zeros") << "0.0.0" << false;
    QTest::newRow("a number that no launcher holds") << "1.2.20261121000" << false;
    QTest::newRow("nothing") << "" << false;
}

void ProjectPackTest::fullVersions() {
    QFETCH(QString, text);
    QFETCH(bool, full);
    QCOMPARE(ctl::isFullVersion(text), full);
}

QUORVANE_TEST_MAIN(QCoreApplication, ProjectPackTest)
#include "project_pack_test.moc"
