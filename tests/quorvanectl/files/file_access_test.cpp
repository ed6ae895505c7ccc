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

#include <filesystem>
#include <system_error>

class FileAccessTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aFileIsRead();
    void aFileThatCannotBeRead_data();
    void aFileThatCannotBeRead();
    void theLimitItselfIsRead();
    void aFileIsWritten();
    void aPlaceThatCannotBeWritten();
    void whatIsNoPlainFileIsNotReplaced();
    void whatWasReadIsNotOverwritten();
    void whatIsTheSamePlace();
    void aFileThatBreaksOffIsNoShorterOne();
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
    constexpr int mebibyte = 1048576;
    QVERIFY(!ctl::isUsableFile(folder.writeZeros("b", mebibyte), &error, mebibyte - 1));
    QCOMPARE(error, folder.path("b") + ": is larger than 1048575 bytes");
    QVERIFY(!ctl::isUsableFile(folder.writeZeros("b", mebibyte + 1), &error, mebibyte));
    QCOMPARE(error, folder.path("b") + ": is larger than 1 MiB");
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

void FileAccessTest::whatIsNoPlainFileIsNotReplaced() {
    const support::ProjectFolder folder;
    if (!support::makePipe(folder.path("pipe")))
        QSKIP("no pipes in folders on this system");
    for (const bool force : {false, true}) {
        QString error;
        QVERIFY(!ctl::mayWrite(folder.path("pipe"), force, &error));
        QCOMPARE(error, folder.path("pipe") + ": is no plain file");
    }
}

void FileAccessTest::whatWasReadIsNotOverwritten() {
    const support::ProjectFolder folder;
    const QString key = folder.write("a.pem", "1");
    const QString other = folder.write("b.pem", "1");
    QString error;
    QVERIFY(ctl::mayWrite(other, true, &error, {key, QString()}));
    QVERIFY(ctl::mayWrite(folder.path("new"), true, &error, {key}));
    QVERIFY(!ctl::mayWrite(folder.path("./a.pem"), true, &error, {other, key}));
    QCOMPARE(error, folder.path("./a.pem") + ": is read by this command and not overwritten");
}

void FileAccessTest::whatIsTheSamePlace() {
    const support::ProjectFolder folder;
    const QString file = folder.write("a", "1");
    QVERIFY(ctl::isOnePlace(file, file));
    QVERIFY(ctl::isOnePlace(folder.path(""), folder.path(".")));
    QVERIFY(!ctl::isOnePlace(file, folder.write("b", "1")));
    QVERIFY(!ctl::isOnePlace(folder.path("none"), folder.path("none")));
    QVERIFY(!ctl::isOnePlace(file, QString()));
    if (!support::makeLink(file, folder.path("link")))
        return; // Wine makes none
    QVERIFY(ctl::isOnePlace(file, folder.path("link")));
    std::error_code failure;
    std::filesystem::create_hard_link(file.toStdString(), folder.path("twin").toStdString(),
                                      failure);
    QVERIFY(!failure && ctl::isOnePlace(folder.path("twin"), file));
}

// A process's own memory is such a file: it opens, and its first byte cannot be read.
void FileAccessTest::aFileThatBreaksOffIsNoShorterOne() {
    const QString file = "/proc/self/mem";
    if (support::onWindows) // Wine shows it, and has other words for it
        QSKIP("no such file on this system");
    QString error;
    QVERIFY(ctl::readText(file, &error).isNull());
    QCOMPARE(error, file + ": Input/output error");
    error.clear();
    QVERIFY(ctl::readBytes(file, &error).isNull());
    QCOMPARE(error, file + ": Input/output error");
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
