// The function library that scripts are read with: given, the installation's, or none.
#include "quorvanectl/shell/installation.h"

#include "library/function_library.h"
#include "run_tool.h"
#include "support/file_kinds.h"
#include "support/file_tree.h"
#include "support/platform.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

using support::Answer;
using support::FileTree;

class InstallationTest : public QObject {
    Q_OBJECT

private:
    QScopedPointer<QTemporaryDir> folder;

    QString path(const QString &name) const;

private Q_SLOTS:
    void init();
    void unusableLibraries_data();
    void unusableLibraries();
    void whateverIsTextIsALibrary_data();
    void whateverIsTextIsALibrary();
    void aLaterLibraryTakesThePlaceOfAnEarlierOne();
    void withoutOneTheBuiltInOneIsTaken_data();
    void withoutOneTheBuiltInOneIsTaken();
    void theBuiltInOneIsThatOfTheSourceTree();
    void anInstalledOneThatCannotBeUsedIsNotPassedOver();
    void nothingIsMadeInAnInstallationThatHasNone();
};

QString InstallationTest::path(const QString &name) const {
    return folder->filePath(name);
}

void InstallationTest::init() {
    folder.reset(new QTemporaryDir);
}

void InstallationTest::unusableLibraries_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("reason");
    QTest::newRow("one that is not there") << "none.ini"
                                           << "no such file";
    QTest::newRow("a folder") << "folder"
                              << "is a folder";
    QTest::newRow("a folder's name with a slash") << "folder/"
                                                  << "is a folder";
    QTest::newRow("a file below a file") << "a.ys/lib.ini"
                                         << "no such file";
    if (!support::onWindows)
        QTest::newRow("a pipe, which would wait for ever") << "pipe"
                                                           << "is no plain file";
    if (support::permissionsKeepOut())
        QTest::newRow("one that is not ours to read") << "closed"
                                                      << "Permission denied";
}

void InstallationTest::unusableLibraries() {
    QFETCH(QString, name);
    QFETCH(QString, reason);
    support::writeTree(folder->path(), {{"folder/", ""}, {"a.ys", "int a;\n"}, {"closed", ""}});
    QCOMPARE(support::makePipe(path("pipe")), !support::onWindows);
    QVERIFY(QFile::setPermissions(path("closed"), {}) || support::onWindows);
    const QString line = path(name) + ": " + reason;
    QString error;
    QVERIFY(!ctl::loadLibrary(path(name), &error));
    QCOMPARE(error, line);
    for (const char *const what : {"check", "tokens", "tree"}) {
        const Answer answer =
            support::runTool({"script", what, path("a.ys"), "--library", path(name)});
        QCOMPARE(answer.err, "quorvanectl: " + line + "\n");
        QCOMPARE(answer.out, QString());
        QCOMPARE(answer.status, 2);
    }
}

// As the launcher reads it: a line that means nothing costs no more than itself.
void InstallationTest::whateverIsTextIsALibrary_data() {
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("an empty file") << QByteArray();
    QTest::newRow("a byte order mark alone") << QByteArray("\xEF\xBB\xBF");
    QTest::newRow("bytes that are no text") << QByteArray("\x00\xff\xfe\x80", 4);
    QTest::newRow("a section that does not end") << QByteArray("[Highlight\nother=a");
    QTest::newRow("a JSON text") << QByteArray("{\"a\": [1, 2]}\n");
    QTest::newRow("a script") << QByteArray("int a = 1;\nfunction f() { }\n");
}

void InstallationTest::whateverIsTextIsALibrary() {
    QFETCH(QByteArray, content);
    support::writeTree(folder->path(), {{"lib.ini", content}, {"a.ys", "int a = 1;\n"}});
    QString error;
    QVERIFY2(ctl::loadLibrary(path("lib.ini"), &error), qPrintable(error));
    QCOMPARE(FunctionLibrary::instance().filePath, path("lib.ini"));
    const Answer answer =
        support::runTool({"script", "check", path("a.ys"), "--library", path("lib.ini")});
    QCOMPARE(answer.out, path("a.ys") + ": clean\n");
    QCOMPARE(answer.status, 0);
}

void InstallationTest::aLaterLibraryTakesThePlaceOfAnEarlierOne() {
    support::writeTree(folder->path(), {{"one.ini", "[Highlight]\nother=alpha\n"},
                                        {"two.ini", "[Highlight]\nother=beta\n"}});
    QVERIFY(ctl::loadLibrary(path("one.ini"), nullptr));
    QVERIFY(FunctionLibrary::instance().otherWords.contains("alpha"));
    QVERIFY(ctl::loadLibrary(path("two.ini"), nullptr));
    QVERIFY(FunctionLibrary::instance().otherWords.contains("beta"));
    QVERIFY(!FunctionLibrary::instance().otherWords.contains("alpha"));
}

// Each goes on to what it was asked for, with the words of the installation that is built here.
void InstallationTest::withoutOneTheBuiltInOneIsTaken_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("rest"); // of the errors
    const QString missing = "quorvanectl: none.x: no such file\n";
    QTest::newRow("library list") << QStringList{"library", "list"} << QString();
    QTest::newRow("project check") << QStringList{"project", "check", "none.x"} << missing;
    QTest::newRow("project graph") << QStringList{"project", "graph", "none.x"} << missing;
    QTest::newRow("script check") << QStringList{"script", "check", "none.x"} << missing;
    QTest::newRow("update info") << QStringList{"update", "info", "@/a.zip"}
                                 << "quorvanectl: @/a.zip: Not a zip archive\n";
    QTest::newRow("update manifest")
        << QStringList{"update", "manifest", "--out", "@/m.json"} << QString();
}

void InstallationTest::withoutOneTheBuiltInOneIsTaken() {
    QFETCH(QStringList, arguments);
    QFETCH(QString, rest);
    support::writeTree(folder->path(), {{"a.zip", "PK"}});
    arguments.replaceInStrings("@", folder->path());
    const Answer answer = support::runTool(arguments);
    QCOMPARE(answer.err,
             QString("quorvanectl: no installation lies beside this program; scripts are read with "
                     "the function library that is built in\n") +
                 rest.replace("@", folder->path()));
    QCOMPARE(answer.status, rest.isEmpty() ? 0 : 2);
}

void InstallationTest::theBuiltInOneIsThatOfTheSourceTree() {
    const Answer builtIn = support::runTool({"library", "list"});
    QFile file(QUORVANE_SOURCE_TREE "/resources/config/FunctionLib.ini");
    const Answer given = support::runTool({"library", "list", file.fileName()});
    QVERIFY2(given.out.size() > 1000, qPrintable(given.err));
    QCOMPARE(builtIn.out, given.out);
}

void InstallationTest::anInstalledOneThatCannotBeUsedIsNotPassedOver() {
    const QString place = ctl::installedLibraryPath();
    QVERIFY(QDir().mkpath(place));
    const Answer answer = support::runTool({"library", "list"});
    QVERIFY(QDir().rmdir(place));
    QCOMPARE(answer.err, "quorvanectl: " + place + ": is a folder\n");
    QCOMPARE(answer.status, 2);
}

void InstallationTest::nothingIsMadeInAnInstallationThatHasNone() {
    const QString stage = support::stageRoot();
    const FileTree before = support::readTree(stage);
    QVERIFY(ctl::installedLibraryPath().startsWith(stage));
    (void)support::runTool({"library", "list"});
    QCOMPARE(support::readTree(stage).keys(), before.keys());
}

QUORVANE_TEST_MAIN(QCoreApplication, InstallationTest)
#include "installation_test.moc"
