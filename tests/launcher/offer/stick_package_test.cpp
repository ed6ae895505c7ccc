// The copy of a stick's package, and sticks and disks that do not give or take it.
#include "launcher/offer/stick_package.h"

#include "../installation.h"
#include "support/file_kinds.h"
#include "support/file_tree.h"
#include "support/size_limit.h"
#include "support/staged_main.h"

#include <QTemporaryDir>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using support::FileTree;
using Outcome = StickPackage::Outcome;

namespace {

bool foldersAreRefused = false;
constexpr rlim_t mostBytes = 1 << 20; // that a file takes on the disk that is full

QByteArray content() {
    return QByteArray(3 << 20, 'p'); // more than two pieces, and than the full disk takes
}

} // namespace

// A program's own functions come before those of the C library, for the libraries it uses too.
extern "C" int mkdir(const char *path, mode_t mode) noexcept {
    if (!foldersAreRefused || std::strstr(path, "/package_") == nullptr)
        return int(::syscall(SYS_mkdirat, AT_FDCWD, path, mode));
    errno = ENOSPC;
    return -1;
}

extern "C" int open64(const char *path, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const mode_t mode = va_arg(more, mode_t);
    va_end(more);
    if (std::strstr(path, "/refused.zip") == nullptr)
        return int(::syscall(SYS_openat, AT_FDCWD, path, flags, mode));
    errno = EIO;
    return -1;
}

class StickPackageTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir stick;

    [[nodiscard]] static QStringList left();

private Q_SLOTS:
    void init();
    void cleanup();
    void theCopyIsForThisUserAlone();
    void whatCannotBeCopied_data();
    void whatCannotBeCopied();
    void aDiskThatIsFull();
    void aFolderThatIsRefused();
    void aCancelLeavesNothing();
};

QStringList StickPackageTest::left() {
    return QDir(AppPaths::updateTempPath("")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
}

void StickPackageTest::init() {
    installation::reset();
    QVERIFY(QDir().mkpath(AppPaths::updateTempPath("")));
    support::writeTree(stick.path(), {{"包/line.zip", content()}});
    QCOMPARE(left(), QStringList());
}

void StickPackageTest::cleanup() {
    foldersAreRefused = false;
}

void StickPackageTest::theCopyIsForThisUserAlone() {
    StickPackage package;
    QCOMPARE(package.copyFrom(stick.filePath("包/line.zip"), nullptr), Outcome::Made);
    const QFileInfo copy(package.path());
    QCOMPARE(copy.fileName(), QString("line.zip"));
    QFile file(copy.filePath());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll() == content());
    struct stat about {};
    QCOMPARE(::stat(QFile::encodeName(copy.path()), &about), 0);
    QCOMPARE(about.st_mode & 07777, 0700U);
    QCOMPARE(left().size(), 2); // the folder and its lock
    package.remove();
    QCOMPARE(package.path(), QString());
    QCOMPARE(left(), QStringList());
}

void StickPackageTest::whatCannotBeCopied_data() {
    QTest::addColumn<QString>("name");
    QTest::newRow("it is gone") << "gone.zip";
    QTest::newRow("a folder has its name") << "包";
    QTest::newRow("a pipe has its name") << "pipe.zip";
    QTest::newRow("it cannot be opened") << "refused.zip";
    QTest::newRow("its first byte is damaged") << "damaged.zip";
    QTest::newRow("a link to nowhere") << "dangling.zip";
}

void StickPackageTest::whatCannotBeCopied() {
    QFETCH(QString, name);
    if (!QFileInfo(stick.filePath("pipe.zip")).exists()) {
        QVERIFY(support::makePipe(stick.filePath("pipe.zip")));
        QVERIFY(support::makeLink("包/line.zip", stick.filePath("refused.zip")));
        // Reading the first page of a process's own memory opens well and then fails.
        QVERIFY(support::makeLink("/proc/self/mem", stick.filePath("damaged.zip")));
        QVERIFY(support::makeLink("nowhere", stick.filePath("dangling.zip")));
    }
    StickPackage package;
    QCOMPARE(package.copyFrom(stick.filePath(name), nullptr), Outcome::Failed);
    QCOMPARE(package.path(), QString());
    QCOMPARE(left(), QStringList());
}

void StickPackageTest::aDiskThatIsFull() {
    StickPackage package;
    {
        const support::SizeLimit disk(mostBytes);
        QCOMPARE(package.copyFrom(stick.filePath("包/line.zip"), nullptr), Outcome::Failed);
    }
    QCOMPARE(package.path(), QString());
    QCOMPARE(left(), QStringList());
}

void StickPackageTest::aFolderThatIsRefused() {
    foldersAreRefused = true;
    StickPackage package;
    QCOMPARE(package.copyFrom(stick.filePath("包/line.zip"), nullptr), Outcome::Failed);
    QCOMPARE(package.path(), QString());
    QCOMPARE(left(), QStringList());
}

void StickPackageTest::aCancelLeavesNothing() {
    const CancelFlag raised{1};
    StickPackage package;
    QCOMPARE(package.copyFrom(stick.filePath("包/line.zip"), &raised), Outcome::Cancelled);
    QCOMPARE(package.path(), QString());
    QCOMPARE(left(), QStringList());
}

QUORVANE_TEST_MAIN(QCoreApplication, StickPackageTest)
#include "stick_package_test.moc"
