// update pack on folders that are no project, or not quite: what it says, and that nothing is left.
#include "quorvanectl/package/project_pack.h"

#include "run_tool.h"
#include "small_project.h"
#include "support/file_kinds.h"
#include "support/file_tree.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

#include <cstdio>
#include <sys/stat.h>

using support::Answer;
using support::FileTree;

class PackMistakesTest : public QObject {
    Q_OBJECT

private:
    QScopedPointer<QTemporaryDir> folder;

    QString path(const QString &name) const;
    Answer pack(const QString &project, const QStringList &more = {}) const;
    static FileTree changed(const FileTree &change);

private Q_SLOTS:
    void init();
    void namesThatWindowsHasNot_data();
    void namesThatWindowsHasNot();
    void namesThatAreNoText_data();
    void namesThatAreNoText();
    void findingsAreSorted();
    void projectsThatAreNone_data();
    void projectsThatAreNone();
    void foldersThatAreNone_data();
    void foldersThatAreNone();
    void aFileThatIsNotOursToRead();
    void anEmptyFolderGoesInAsOne();
    void versions_data();
    void versions();
    void aSecondPackIsRefusedAndTheFirstStays();
    void aFolderInThePackagesPlace();
    void intoTheProjectItself();
};

QString PackMistakesTest::path(const QString &name) const {
    return folder->filePath(name);
}

Answer PackMistakesTest::pack(const QString &project, const QStringList &more) const {
    const QString library = QUORVANE_SOURCE_TREE "/resources/config/FunctionLib.ini";
    return support::runTool(QStringList{"update", "pack", project, "--version", "1.2.0", "--out",
                                        path("out"), "--library", library} +
                            more);
}

FileTree PackMistakesTest::changed(const FileTree &change) {
    return support::laidOver(support::smallProject(), change);
}

void PackMistakesTest::init() {
    folder.reset(new QTemporaryDir);
}

void PackMistakesTest::namesThatWindowsHasNot_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("fault");
    const QString letters = "Windows allows none of < > : \" | ? * \\ in a name";
    const QString end = "Windows drops a point or blank at a name's end";
    const QString device = "Windows keeps this name for a device";
    const QString control = "it holds a control character";
    for (const QString letter : {"<", ">", "\"", "|", "?", "*", "\\"})
        QTest::newRow(qPrintable("a name with " + letter)) << "a" + letter + "b"
                                                           << "a" + letter + "b" << letters;
    QTest::newRow("a stream behind a name of one letter, which could be a drive")
        << "a:b"
        << "a:b"
        << "it leads out of the package";
    QTest::newRow("a stream behind a longer name") << "cam:b"
                                                   << "cam:b" << letters;
    QTest::newRow("a point at the end") << "notes."
                                        << "notes." << end;
    QTest::newRow("a blank at the end") << "notes "
                                        << "notes " << end;
    QTest::newRow("a folder that ends in a point") << "v1./a"
                                                   << "v1." << end;
    QTest::newRow("a device") << "con"
                              << "con" << device;
    QTest::newRow("a device in large letters") << "LPT9"
                                               << "LPT9" << device;
    QTest::newRow("a device with two suffixes") << "nul.tar.gz"
                                                << "nul.tar.gz" << device;
    QTest::newRow("a folder that is a device") << "aux/a.ys"
                                               << "aux" << device;
    QTest::newRow("a tab") << "a\tb"
                           << "a\\x09b" << control;
    QTest::newRow("a line feed") << "a\nb"
                                 << "a\\nb" << control;
    QTest::newRow("a terminal's order") << "a\x1b[2J"
                                        << "a\\x1b[2J" << control;
}

void PackMistakesTest::namesThatWindowsHasNot() {
    QFETCH(QString, name);
    QFETCH(QString, shown);
    QFETCH(QString, fault);
    support::writeTree(path("line3"), changed({{name, "x"}}));
    const Answer answer = pack(path("line3"));
    QCOMPARE(answer.out.section('\n', -2), shown + ": " + fault + "\n");
    QCOMPARE(answer.err, QString());
    QCOMPARE(answer.status, 1);
    QVERIFY(!QFileInfo::exists(path("out")));
}

void PackMistakesTest::namesThatAreNoText_data() {
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("out");
    QTest::newRow("a file in GBK")
        << QByteArray("\xCE\xC4.ys")
        << QStringLiteral("\uFFFD\uFFFD.ys: it is not readable as text\n");
    QTest::newRow("a file in a folder")
        << QByteArray("scripts/a\xFF.ys")
        << QStringLiteral("scripts/a\uFFFD.ys: it is not readable as text\n");
    QTest::newRow("a folder") << QByteArray("a\xFF/")
                              << QStringLiteral("a\uFFFD: it is not readable as text\n");
    QTest::newRow("the only thing in a folder")
        << QByteArray("empty/\xFF") << QStringLiteral("empty/\uFFFD: it is not readable as text\n");
}

void PackMistakesTest::namesThatAreNoText() {
    QFETCH(QByteArray, name);
    QFETCH(QString, out);
    support::writeTree(path("line3"), changed({{"empty/", ""}}));
    const QByteArray place = QFile::encodeName(path("line3/")) + name;
    if (name.endsWith('/')) {
        QCOMPARE(::mkdir(place.constData(), 0755), 0);
    } else {
        std::FILE *const file = std::fopen(place.constData(), "w");
        QVERIFY(file != nullptr);
        QCOMPARE(std::fclose(file), 0);
    }
    const Answer answer = pack(path("line3"));
    QCOMPARE(std::remove(place.constData()), 0); // Qt would not find it
    QCOMPARE(answer.out, out);
    QCOMPARE(answer.err, QString());
    QCOMPARE(answer.status, 1);
    QVERIFY(!QFileInfo::exists(path("out")));
}

void PackMistakesTest::findingsAreSorted() {
    support::writeTree(
        path("line3"),
        changed({{"z?", ""}, {"b|", ""}, {"scripts/con", ""}, {"scripts/MAIN.ys", ""}}));
    QVERIFY(QFile::link("/etc/hostname", path("line3/host")));
    const QString letters = "Windows allows none of < > : \" | ? * \\ in a name";
    QCOMPARE(
        pack(path("line3")).out,
        QStringLiteral("[Warning] scripts: 磁盘上的脚本未登记到 scripts[]：scripts/MAIN.ys\n") +
            "b|: " + letters + "\nhost: it is a link\n" +
            "scripts/con: Windows keeps this name for a device\nz?: " + letters + "\n" +
            "scripts/main.ys: Windows takes it for scripts/MAIN.ys\n");
}

void PackMistakesTest::projectsThatAreNone_data() {
    QTest::addColumn<FileTree>("tree");
    QTest::addColumn<QString>("out");
    const QString none = "no project file (.yslib) lies here\n";
    QTest::newRow("an empty folder") << FileTree{{"line3/", ""}} << none;
    QTest::newRow("only logs") << FileTree{{"line3/logs/line3.yslib", "{}"}} << none;
    QTest::newRow("a folder with a project file's name")
        << FileTree{{"line3/line3.yslib/a", ""}} << none;
    QTest::newRow("a copy with a suffix") << FileTree{{"line3/line3.yslib.bak", "{}"}} << none;
    QTest::newRow("a project file one folder down")
        << FileTree{{"line3/a/line3.yslib", "{}"}}
        << "a/line3.yslib: the project file must lie at the top\n";
    QTest::newRow("two project files side by side")
        << FileTree{{"line3/a.yslib", "{}"}, {"line3/B.YSLIB", "{}"}}
        << "several project files, of which the launcher takes any: B.YSLIB, a.yslib\n";
    QTest::newRow("a project file of no bytes")
        << FileTree{{"line3/line3.yslib", ""}}
        << QStringLiteral("[Error] yslib: JSON 无效：illegal value\n");
    QTest::newRow("a project file that is cut off")
        << FileTree{{"line3/line3.yslib", "{\"project\": {"}}
        << QStringLiteral("[Error] yslib: JSON 无效：unterminated object\n");
}

void PackMistakesTest::projectsThatAreNone() {
    QFETCH(FileTree, tree);
    support::writeTree(folder->path(), tree);
    const Answer answer = pack(path("line3"));
    QTEST(answer.out, "out");
    QCOMPARE(answer.err, QString());
    QCOMPARE(answer.status, 1);
    QCOMPARE(support::readTree(folder->path()), tree);
}

void PackMistakesTest::foldersThatAreNone_data() {
    QTest::addColumn<QString>("named");
    QTest::newRow("nothing") << "none";
    QTest::newRow("a file") << "file";
    QTest::newRow("the project file instead of its folder") << "line3/line3.yslib";
}

void PackMistakesTest::foldersThatAreNone() {
    QFETCH(QString, named);
    support::writeTree(folder->path(), {{"file", "x"}});
    support::writeTree(path("line3"), support::smallProject());
    const Answer answer = pack(path(named));
    QCOMPARE(answer.err, "quorvanectl: " + path(named) + ": is no folder\n");
    QCOMPARE(answer.out, QString());
    QCOMPARE(answer.status, 2);
    QVERIFY(!QFileInfo::exists(path("out")));
}

void PackMistakesTest::aFileThatIsNotOursToRead() {
    if (!support::permissionsKeepOut())
        QSKIP("root reads every file");
    support::writeTree(path("line3"), changed({{"closed.txt", "x"}}));
    QVERIFY(QFile::setPermissions(path("line3/closed.txt"), {}));
    const Answer answer = pack(path("line3"));
    QCOMPARE(answer.out, QString("closed.txt: it cannot be read\n"));
    QCOMPARE(answer.status, 1);
}

void PackMistakesTest::anEmptyFolderGoesInAsOne() {
    support::writeTree(path("line3"), changed({{"only/hidden/.keep", ""}}));
    const Answer answer = pack(path("line3"));
    QCOMPARE(answer.status, 0);
    QVERIFY2(
        answer.out.startsWith(path("out") + QStringLiteral("/产线三-1.2.0.zip: 5 files, SHA-256 ")),
        qPrintable(answer.out)); // the sidecar among them
}

void PackMistakesTest::versions_data() {
    QTest::addColumn<QString>("version");
    for (const char *const version :
         {"1.2", "1.2.3.4.5", "v1.2.0", "1.2.0-rc1", " 1.2.0", "1.2.0 ", "0.0.0", "0.0.0.0",
          "1.2.2147483648", "latest", "1.2.0\n", "../1.2.0"})
        QTest::newRow(qPrintable("no version: " + QString(version).simplified())) << version;
}

void PackMistakesTest::versions() {
    QFETCH(QString, version);
    support::writeTree(path("line3"), support::smallProject());
    const Answer answer = pack(path("line3"), {"--version", version});
    QCOMPARE(answer.err, "quorvanectl: --version " + version.replace("\n", "\\n") +
                             ": must be three or four numbers such as 1.2.0\n");
    QCOMPARE(answer.out, QString());
    QCOMPARE(answer.status, 2);
    QVERIFY(!QFileInfo::exists(path("out")));
}

void PackMistakesTest::aSecondPackIsRefusedAndTheFirstStays() {
    support::writeTree(path("line3"), support::smallProject());
    QCOMPARE(pack(path("line3")).status, 0);
    const FileTree first = support::readTree(path("out"));
    support::writeTree(path("line3"), {{"more.txt", "more"}});
    const Answer again = pack(path("line3"));
    QCOMPARE(again.err, "quorvanectl: " + path("out") +
                            QStringLiteral("/产线三-1.2.0.zip: exists; --force overwrites it\n"));
    QCOMPARE(again.status, 2);
    QCOMPARE(support::readTree(path("out")), first);
    QCOMPARE(pack(path("line3"), {"--force"}).status, 0);
    QCOMPARE(support::readTree(path("out")).keys(), first.keys());
    QVERIFY(support::readTree(path("out")) != first);
}

void PackMistakesTest::aFolderInThePackagesPlace() {
    support::writeTree(path("line3"), support::smallProject());
    const FileTree place{{QStringLiteral("产线三-1.2.0.zip/mine"), "x"}};
    support::writeTree(path("out"), place);
    const Answer answer = pack(path("line3"), {"--force"});
    QCOMPARE(answer.err,
             "quorvanectl: " + path("out") + QStringLiteral("/产线三-1.2.0.zip: is a folder\n"));
    QCOMPARE(answer.status, 2);
    QCOMPARE(support::readTree(path("out")), place);
}

// Its first package is no part of itself.
void PackMistakesTest::intoTheProjectItself() {
    support::writeTree(path("line3"), support::smallProject());
    const Answer answer = pack(path("line3"), {"--out", path("line3/packages")});
    QCOMPARE(answer.err,
             "quorvanectl: " + path("line3/packages") + ": lies in the project's folder\n");
    QCOMPARE(answer.status, 2);
    QCOMPARE(support::readTree(path("line3")), support::smallProject());
}

QUORVANE_TEST_MAIN(QCoreApplication, PackMistakesTest)
#include "pack_mistakes_test.moc"
