// Paths that a user gives to a command: names that Windows has in another way are refused before Qt, which
// passes over that, has made files of them.
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/files/given_paths.h"
#include "quorvanectl/keys/key_files.h"
#include "support/file_tree.h"
#include "support/staged_main.h"

class GivenPathsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatCannotBeMade_data();
    void whatCannotBeMade();
    void nothingIsMade();
    void theMarkOfLongPaths_data();
    void theMarkOfLongPaths();
};

void GivenPathsTest::whatCannotBeMade_data() {
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("fault");
    const QString none;
    const QString device = "Windows keeps this name for a device";
    const QString letter = "Windows allows none of < > : \" | ? * \\ in a name";
    const QString end = "Windows drops a point or blank at a name's end";
    QTest::newRow("a file") << "out.json" << none;
    QTest::newRow("in a folder") << "C:\\data/out.json" << none;
    QTest::newRow("beside a drive's own folder") << "C:out.json" << none;
    QTest::newRow("above") << "../../out.json" << none;
    QTest::newRow("on a server") << "\\\\server\\share$\\out.json" << none;
    QTest::newRow("a name with a point") << "a.b.c" << none;
    QTest::newRow("the device for nothing") << "NUL" << device;
    QTest::newRow("in small letters, with an ending") << "data/nul.json" << device;
    QTest::newRow("a blank before the ending") << "con .txt" << device;
    QTest::newRow("a port") << "C:/com1" << device;
    QTest::newRow("a port with a small number") << "COM\u00b2" << device;
    QTest::newRow("no port") << "com10" << none;
    QTest::newRow("a device as a folder") << "aux/out.json" << device;
    QTest::newRow("a stream") << "out.json:more" << letter;
    QTest::newRow("a stream behind a drive") << "C:/out.json:more" << letter;
    QTest::newRow("a question mark") << "what?.json" << letter;
    QTest::newRow("a point at the end") << "out." << end;
    QTest::newRow("a folder with a blank at the end") << "data /out.json" << end;
}

void GivenPathsTest::whatCannotBeMade() {
    QFETCH(QString, path);
    QTEST(ctl::pathFault(path), "fault");
}

void GivenPathsTest::nothingIsMade() {
    const QTemporaryDir folder;
    const QString nul = folder.filePath("NUL");
    const QString fault = ": Windows keeps this name for a device";
    QString error;
    QVERIFY(!ctl::writeFile(nul, "text", true, &error));
    QCOMPARE(error, nul + fault);
    QCOMPARE(ctl::makeKeyFiles(nul, nullptr).error, nul + fault);
    QCOMPARE(support::readTree(folder.path()), support::FileTree());
}

void GivenPathsTest::theMarkOfLongPaths_data() {
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QString>("plain");
    QTest::newRow("on a drive") << "\\\\?\\C:\\data\\a.json"
                                << "C:\\data\\a.json";
    QTest::newRow("on a server") << "\\\\?\\UNC\\server\\share\\a.json"
                                 << "//server\\share\\a.json";
    QTest::newRow("in small letters") << "\\\\?\\unc\\server\\share"
                                      << "//server\\share";
    QTest::newRow("with slashes") << "//?/C:/data"
                                  << "C:/data";
    QTest::newRow("of an option") << "--out=\\\\?\\UNC\\server\\share"
                                  << "--out=//server\\share";
    QTest::newRow("none") << "\\\\server\\share"
                          << "\\\\server\\share";
    QTest::newRow("none, of an option") << "--version=1.0.0"
                                        << "--version=1.0.0";
    QTest::newRow("behind other text") << "a\\\\?\\C:\\data"
                                       << "a\\\\?\\C:\\data";
}

void GivenPathsTest::theMarkOfLongPaths() {
    QFETCH(QString, argument);
    QTEST(ctl::withoutLengthMark(argument), "plain");
}

QUORVANE_TEST_MAIN(QCoreApplication, GivenPathsTest)
#include "given_paths_test.moc"
