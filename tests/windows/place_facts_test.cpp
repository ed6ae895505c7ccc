// Folders on a server, and folders by other names: which is the root of a volume, and which are one.
// The server is Wine's: a folder of its prefix stands for one.
#include "update/files/place_facts.h"

#include "support/file_tree.h"
#include "support/staged_main.h"
#include "update/files/file_copy.h"
#include "update/files/file_operations.h"
#include "update/files/folder_listing.h"

#include <windows.h>

using support::FileTree;

namespace {

const QString server = "quorvane-test-server";

// The folder that Wine takes for the server's; empty on Windows itself.
QString serverFolder() {
    const QString prefix = qEnvironmentVariable("WINEPREFIX");
    return prefix.isEmpty() ? QString() : "Z:" + prefix + "/dosdevices/unc/" + server;
}

std::wstring native(const QString &path) {
    return QDir::toNativeSeparators(path).toStdWString();
}

QString shortName(const QString &path) {
    std::wstring name(MAX_PATH, L'\0');
    name.resize(GetShortPathNameW(native(path).c_str(), name.data(), MAX_PATH));
    return QDir::fromNativeSeparators(QString::fromStdWString(name));
}

// Whether the file can be opened for writing, and whether it can then be waited for.
bool isOpened(const QString &path, bool *flushed) {
    const HANDLE file =
        CreateFileW(native(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    *flushed = FlushFileBuffers(file) != FALSE;
    CloseHandle(file);
    return true;
}

} // namespace

class PlaceFactsTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir folder;

private Q_SLOTS:
    void initTestCase();
    void rootsOfVolumes_data();
    void rootsOfVolumes();
    void oneVolumeOrTwo_data();
    void oneVolumeOrTwo();
    void aProjectOnAServerIsReplaced();
    void namesOfOneFolder_data();
    void namesOfOneFolder();
    void anEmptyVolumeIsListed();
    void aFileThatTheDiskDoesNotTake();
    void cleanupTestCase();
};

void PlaceFactsTest::initTestCase() {
    support::writeTree(folder.path(), {{"A long name/project/a", ""}});
    if (!serverFolder().isEmpty())
        support::writeTree(serverFolder(),
                           {{"share/line/a", "old"}, {"share/new/a", "new"}, {"other/a", ""}});
}

void PlaceFactsTest::cleanupTestCase() {
    if (!serverFolder().isEmpty())
        QVERIFY(QDir(serverFolder()).removeRecursively());
}

void PlaceFactsTest::rootsOfVolumes_data() {
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("root");
    const QString drive = QDir::tempPath().left(1).toUpper() + ":/";
    QTest::newRow("a drive") << drive << drive;
    QTest::newRow("a drive in small letters") << drive.toLower() << drive;
    QTest::newRow("a folder on it") << QDir::tempPath() << drive;
    QTest::newRow("a share") << "//" + server + "/share"
                             << "//" + server + "/share";
    QTest::newRow("a folder on it, on a server") << "//" + server + "/share/line"
                                                 << "//" + server + "/share";
}

void PlaceFactsTest::rootsOfVolumes() {
    QFETCH(QString, path);
    QFETCH(QString, root);
    if (path.startsWith("//") && !QFileInfo(path).isDir())
        QSKIP("no server");
    QCOMPARE(rootOfVolume(path).toLower(), root.toLower());
    QCOMPARE(isRootOfVolume(path), path.compare(root, Qt::CaseInsensitive) == 0);
}

void PlaceFactsTest::oneVolumeOrTwo_data() {
    QTest::addColumn<QString>("one");
    QTest::addColumn<QString>("other");
    QTest::addColumn<bool>("same");
    const QString here = QDir::tempPath();
    QTest::newRow("two folders of a drive") << here << QDir(here).absoluteFilePath("..") << true;
    QTest::newRow("one of them in capitals") << here << here.toUpper() << true;
    QTest::newRow("two folders of a share") << "//" + server + "/share/line"
                                            << "//" + server + "/share/new" << true;
    QTest::newRow("two shares") << "//" + server + "/share/line"
                                << "//" + server + "/other" << false;
    QTest::newRow("a drive and a share") << here << "//" + server + "/share" << false;
}

void PlaceFactsTest::oneVolumeOrTwo() {
    QFETCH(QString, one);
    QFETCH(QString, other);
    if (other.startsWith("//") && !QFileInfo(other).isDir())
        QSKIP("no server");
    QTEST(lieOnOneVolume(one, other), "same");
    QTEST(lieOnOneVolume(other, one), "same");
}

void PlaceFactsTest::aProjectOnAServerIsReplaced() {
    const QString share = "//" + server + "/share";
    if (!QFileInfo(share).isDir())
        QSKIP("no server");
    QString error;
    QVERIFY2(replaceDirectory(share + "/new", share + "/line", {}, share + "/backup", &error),
             qPrintable(error));
    QCOMPARE(support::readTree(share), FileTree({{"line/a", "new"}}));
}

void PlaceFactsTest::namesOfOneFolder_data() {
    QTest::addColumn<QString>("one");
    QTest::addColumn<QString>("other");
    QTest::addColumn<bool>("same");
    const QString holds = folder.filePath("A long name");
    QTest::newRow("the same name") << holds << holds << true;
    QTest::newRow("in capitals") << holds << holds.toUpper() << true;
    QTest::newRow("a short name") << holds << shortName(holds) << true;
    QTest::newRow("a folder and the one above") << holds << holds + "/project" << false;
    QTest::newRow("a folder and a file of it")
        << holds + "/project" << holds + "/project/a" << false;
    QTest::newRow("what is not there") << holds + "/none" << holds + "/none" << false;
    QTest::newRow("no name") << holds << QString() << false;
}

void PlaceFactsTest::namesOfOneFolder() {
    QFETCH(QString, one);
    QFETCH(QString, other);
    QFETCH(bool, same);
    QCOMPARE(isSamePlace(one, other), same);
    QCOMPARE(isSamePlace(other, one), same);
    if (same)
        QCOMPARE(realPath(other), realPath(one));
    if (same)
        QVERIFY2(realPath(other).endsWith("/A long name"), qPrintable(realPath(other)));
}

// Its root has no entries for itself and the folder above, as other folders have. A folder of Wine's prefix
// stands for one.
void PlaceFactsTest::anEmptyVolumeIsListed() {
    const QString volume = QFileInfo(serverFolder() + "/../../y:").absoluteFilePath();
    if (serverFolder().isEmpty() || !QDir().mkdir(volume))
        QSKIP("no volume");
    QFileInfoList entries;
    QString unreadable;
    const bool isListed = listFolder("Y:/", &entries, &unreadable);
    const bool isFound = listFolder("Y:/none", &entries, &unreadable);
    QVERIFY(QDir().rmdir(volume));
    QVERIFY(isListed);
    QCOMPARE(entries.size(), 0);
    QVERIFY(!isFound);
    QCOMPARE(unreadable, QString("Y:/none"));
}

// Linux has files that can be written to and that no disk holds; Wine shows them.
void PlaceFactsTest::aFileThatTheDiskDoesNotTake() {
    QVERIFY(flushFolder(folder.path()));
    const QString notOnDisk = "Z:/proc/self/attr";
    const QFileInfoList files = QDir(notOnDisk).entryInfoList(QDir::Files | QDir::System);
    bool flushed = true;
    for (const QFileInfo &file : files) {
        bool isFlushed = true;
        if (!isOpened(file.filePath(), &isFlushed))
            QSKIP("this user may not write to them");
        flushed = flushed && isFlushed;
    }
    if (flushed)
        QSKIP("no such files");
    QVERIFY(!flushFolder(notOnDisk));
}

QUORVANE_TEST_MAIN(QCoreApplication, PlaceFactsTest)
#include "place_facts_test.moc"
