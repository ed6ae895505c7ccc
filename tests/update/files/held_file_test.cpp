// A file that was proved, and what may have become of it by the time of its use.
#include "support/file_tree.h"
#include "support/staged_main.h"
#include "update/files/held_file.h"
#include "update/files/place_facts.h"

#include <QDir>
#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using Change = bool (*)(const QDir &folder);

bool write(const QDir &folder, const char *name, const QByteArray &content) {
    QFile file(folder.filePath(name));
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

// To when the file was written first.
bool setTimeBack(const QDir &folder, const char *name) {
    const timespec times[] = {{0, UTIME_OMIT}, {1600000000, 5}};
    return ::utimensat(AT_FDCWD, QFile::encodeName(folder.filePath(name)), times, 0) == 0;
}

} // namespace

Q_DECLARE_METATYPE(Change)

class HeldFileTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatBecameOfAFile_data();
    void whatBecameOfAFile();
    void aFileThatIsNotThereYet();
    void aLinkThatLeadsToAnotherVolume();
};

void HeldFileTest::whatBecameOfAFile_data() {
    QTest::addColumn<Change>("change");
    QTest::addColumn<bool>("isUnchanged");
    const auto row = [](const char *name, bool isUnchanged, Change change) {
        QTest::newRow(name) << change << isUnchanged;
    };
    row("nothing", true, [](const QDir &) { return true; });
    row("it was read", true,
        [](const QDir &folder) { return support::readTree(folder.path()).contains("file"); });
    row("another file was written beside it", true,
        [](const QDir &folder) { return write(folder, "other", "x"); });
    row("it is gone", false,
        [](const QDir &folder) { return QFile::remove(folder.filePath("file")); });
    row("it has another length", false, [](const QDir &folder) {
        return write(folder, "file", "longer than before") && setTimeBack(folder, "file");
    });
    row("it was written to, with its time", false, [](const QDir &folder) {
        return write(folder, "file", "after!") && setTimeBack(folder, "file");
    });
    row("another file has its name, with its time", false, [](const QDir &folder) {
        const QByteArray file = QFile::encodeName(folder.filePath("file"));
        const QByteArray other = QFile::encodeName(folder.filePath("other"));
        return write(folder, "other", "before") && setTimeBack(folder, "other") &&
               ::rename(other.constData(), file.constData()) == 0;
    });
}

void HeldFileTest::whatBecameOfAFile() {
    QFETCH(Change, change);
    const QTemporaryDir place;
    const QDir folder(place.path());
    QVERIFY(write(folder, "file", "before") && setTimeBack(folder, "file"));
    const HeldFile held(folder.filePath("file"));
    QVERIFY(change(folder));
    QTEST(held.isUnchanged(), "isUnchanged");
}

void HeldFileTest::aFileThatIsNotThereYet() {
    const QTemporaryDir place;
    const HeldFile held(place.filePath("file"));
    QVERIFY(!held.isUnchanged());
    QVERIFY(write(QDir(place.path()), "file", "x"));
    QVERIFY(!held.isUnchanged());
}

void HeldFileTest::aLinkThatLeadsToAnotherVolume() {
    const QTemporaryDir place;
    const QByteArray link = QFile::encodeName(place.filePath("file"));
    QVERIFY(write(QDir(place.path()), "there", "x"));
    QCOMPARE(::symlink("there", link.constData()), 0);
    const HeldFile held(place.filePath("file"));
    QVERIFY(held.isUnchanged());
    QVERIFY(!lieOnOneVolume(place.path(), "/proc"));
    QCOMPARE(::unlink(link.constData()), 0);
    QCOMPARE(::symlink("/proc/version", link.constData()), 0);
    QVERIFY(!held.isUnchanged());
}

QUORVANE_TEST_MAIN(QCoreApplication, HeldFileTest)
#include "held_file_test.moc"
