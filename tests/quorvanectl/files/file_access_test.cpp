// How the tool reads and writes files: the reason for each that it refuses, and that a file shows
// under its name only once it is whole.
#include "quorvanectl/files/file_access.h"

#include "support/file_kinds.h"
#include "support/platform.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

class FileAccessTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aFileIsRead();
    void aFileThatCannotBeRead_data();
    void aFileThatCannotBeRead();
    void theLimitItselfIsRead();
    void aFileIsWritten();
    void aPlaceThatCannotBeWritten();
    void nothingShowsBeforeTheCommit();
};

void FileAccessTest::aFileIsRead() {
    const support::ProjectFolder folder;
    QString error;
    QCOMPARE(ctl::readText(folder.write("a.ys", "\xEF\xBB\xBF\xE5\x90\x8D"), &error),
             QString("名"));
    QCOMPARE(ctl::readText(folder.write("gbk.ys", "\xC3\xFB"), &error), QString("名"));
    QCOMPARE(ctl::readBytes(folder.write("b.ys", "\r\n"), &error), QByteArray("\r\n"));
    QVERIFY(!ctl::readBytes(folder.write("empty.ys", ""), &error).isNull());
    QVERIFY(!ctl::readText(folder.path("empty.ys"), &error).isNull());
    QCOMPARE(error, QString());
}

void FileAccessTest::aFileThatCannotBeRead_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("reason");

    QTest::newRow("missing") << "missing"
                             << "no such file";
    QTest::newRow("a folder") << "folder"
                              << "is a folder";
    if (!support::onWindows) // no folder there holds one
        QTest::newRow("a pipe") << "pipe"
                                << "is no plain file";
    QTest::newRow("larger than any text") << "huge"
                                          << "is larger than 64 MiB";
    if (support::permissionsKeepOut())
        QTest::newRow("no permission") << "closed"
                                       << "Permission denied";
}

void FileAccessTest::aFileThatCannotBeRead() {
    QFETCH(QString, name);
    QFETCH(QString, reason);
    const support::ProjectFolder folder;
    QVERIFY(QDir(folder.path("")).mkdir("folder"));
    QCOMPARE(support::makePipe(folder.path("pipe")), !support::onWindows);
    folder.writeZeros("huge", ctl::largestText + 1);
    QFile closed(folder.write("closed", ""));
    QVERIFY(closed.setPermissions(QFile::Permissions()) || !support::permissionsKeepOut());
    const QString line = folder.path(name) + ": " + reason;
    QString error;
    QVERIFY(ctl::readText(folder.path(name), &error).isNull());
    QCOMPARE(error, line);
    error.clear();
    QVERIFY(ctl::readBytes(folder.path(name), &error).isNull());
    QCOMPARE(error, line);
    QVERIFY(!ctl::isUsableFile(folder.path(name), nullptr));
}

void FileAccessTest::theLimitItselfIsRead() {
    const support::ProjectFolder folder;
    QVERIFY(ctl::isUsableFile(folder.writeZeros("a", ctl::largestText), nullptr));
    QString error;
    QVERIFY(!ctl::isUsableFile(folder.writeZeros("b", 11), &error, 10));
    QCOMPARE(error, folder.path("b") + ": is larger than 10 bytes");
}

void FileAccessTest::aFileIsWritten() {
    const support::ProjectFolder folder;
    QString error;
    QVERIFY(ctl::writeFile(folder.path("a.json"), "1", false, &error));
    QCOMPARE(folder.read("a.json"), QByteArray("1"));
    QVERIFY(!ctl::writeFile(folder.path("a.json"), "2", false, &error));
    QCOMPARE(error, folder.path("a.json") + ": exists; --force overwrites it");
    QCOMPARE(folder.read("a.json"), QByteArray("1"));
    QVERIFY(ctl::writeFile(folder.path("a.json"), "2", true, &error));
    QCOMPARE(folder.read("a.json"), QByteArray("2"));
    QCOMPARE(QDir(folder.path("")).entryList(QDir::Files | QDir::Hidden), QStringList("a.json"));
}

void FileAccessTest::aPlaceThatCannotBeWritten() {
    const support::ProjectFolder folder;
    QString error;
    QVERIFY(!ctl::writeFile(folder.path("no/such/a.json"), "1", true, &error));
    QCOMPARE(error, folder.path("no/such/a.json") + ": " +
                        support::systemText("No such file or directory", "Path not found."));
    QVERIFY(!ctl::writeFile(folder.path(""), "1", true, &error));
    QCOMPARE(error, folder.path("") + ": is a folder");
    if (!support::makeLink("nowhere", folder.path("link")))
        return; // Wine makes none
    QVERIFY(!ctl::writeFile(folder.path("link"), "1", false, &error));
    QCOMPARE(error, folder.path("link") + ": exists; --force overwrites it");
}

// Until it is whole, nothing of a file shows.
void FileAccessTest::nothingShowsBeforeTheCommit() {
    const support::ProjectFolder folder;
    QString error;
    {
        QSaveFile file(folder.path("a.json"));
        QVERIFY(ctl::openFile(file, false, &error));
        QCOMPARE(file.write("half"), qint64(4));
        QVERIFY(!QFileInfo::exists(folder.path("a.json")));
    }
    QVERIFY(QDir(folder.path("")).isEmpty());
    QSaveFile file(folder.path("a.json"));
    QVERIFY(ctl::openFile(file, false, &error));
    QCOMPARE(file.write("whole"), qint64(5));
    QVERIFY(ctl::commitFile(file, &error));
    QCOMPARE(folder.read("a.json"), QByteArray("whole"));
}

QUORVANE_TEST_MAIN(QCoreApplication, FileAccessTest)
#include "file_access_test.moc"
