// How one file is copied.
#include "support/file_kinds.h"
#include "support/staged_main.h"
#include "update/files/file_copy.h"
#include "update/files/place_facts.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <memory>

class FileCopyTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> place;

    QString path(const QString &name) const { return place->filePath(name); }
    void write(const QString &name, const QByteArray &content) const;
    QByteArray read(const QString &name) const;
    QString elsewhere() const;

private Q_SLOTS:
    void init() { place = std::make_unique<QTemporaryDir>(); }
    void aCopyHoldsTheSame_data();
    void aCopyHoldsTheSame();
    void aCopyIsAFileOfItsOwn();
    void aCopyHasThePermissions();
    void aCopyOnAnotherVolume();
    void nothingIsCopiedOverAFile();
    void whatIsNotThereIsNotCopied();
    void aFolderIsNotCopied();
    void aPipeIsNotWaitedFor();
};

void FileCopyTest::write(const QString &name, const QByteArray &content) const {
    QFile file(path(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
}

QByteArray FileCopyTest::read(const QString &name) const {
    QFile file(QDir::isAbsolutePath(name) ? name : path(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

// A folder on a second volume; empty if there is none.
QString FileCopyTest::elsewhere() const {
    for (const QString &folder : {QStringLiteral("/dev/shm"), QStringLiteral("/var/tmp")}) {
        if (QFileInfo(folder).isWritable() && !lieOnOneVolume(folder, place->path()))
            return folder;
    }
    return QString();
}

void FileCopyTest::aCopyHoldsTheSame_data() {
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("a byte") << QByteArray("x");
    QTest::newRow("bytes that end no text") << QByteArray("a\0b\r\n\x1a\xff", 7);
    QByteArray large((33 << 20) + 1, '\0');
    for (int i = 0; i < large.size(); i += 4099)
        large[i] = char(i >> 12);
    QTest::newRow("more than two pieces") << large;
}

void FileCopyTest::aCopyHoldsTheSame() {
    QFETCH(QByteArray, content);
    write("from", content);
    QVERIFY(copyFileContent(path("from"), path("to")));
    QVERIFY(read("to") == content);
    QVERIFY(read("from") == content);
}

// Also where the two share what they hold.
void FileCopyTest::aCopyIsAFileOfItsOwn() {
    write("from", "old");
    QVERIFY(copyFileContent(path("from"), path("to")));
    QVERIFY(!isSamePlace(path("from"), path("to")));
    write("from", "new");
    QCOMPARE(read("to"), QByteArray("old"));
}

void FileCopyTest::aCopyHasThePermissions() {
    write("from", "content");
    QVERIFY(QFile::setPermissions(path("from"), QFile::ReadOwner | QFile::WriteOwner |
                                                    QFile::ExeOwner | QFile::WriteOther));
    QVERIFY(copyFileContent(path("from"), path("to")));
    QCOMPARE(QFile::permissions(path("to")), QFile::permissions(path("from")));
}

void FileCopyTest::aCopyOnAnotherVolume() {
    if (elsewhere().isEmpty())
        QSKIP("no second volume that can be written to");
    const QTemporaryDir other(elsewhere() + "/quorvane-XXXXXX");
    const QByteArray content(20 << 20, 'c');
    write("from", content);
    QVERIFY(copyFileContent(path("from"), other.filePath("to")));
    QVERIFY(read(other.filePath("to")) == content);
}

void FileCopyTest::nothingIsCopiedOverAFile() {
    write("from", "new");
    write("to", "old");
    QVERIFY(!copyFileContent(path("from"), path("to")));
    QCOMPARE(read("to"), QByteArray("old"));
}

void FileCopyTest::whatIsNotThereIsNotCopied() {
    QVERIFY(!copyFileContent(path("from"), path("to")));
    QVERIFY(!QFileInfo::exists(path("to")));
}

void FileCopyTest::aFolderIsNotCopied() {
    QVERIFY(!copyFileContent(place->path(), path("to")));
    QVERIFY(!QFileInfo::exists(path("to")));
}

void FileCopyTest::aPipeIsNotWaitedFor() {
    if (!support::makePipe(path("pipe")))
        QSKIP("no pipes in folders here");
    QVERIFY(!copyFileContent(path("pipe"), path("to")));
    QVERIFY(!QFileInfo::exists(path("to")));
}

QUORVANE_TEST_MAIN(QCoreApplication, FileCopyTest)
#include "file_copy_test.moc"
