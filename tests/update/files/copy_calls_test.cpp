// Copying a file where the file system knows none of the system's calls for it. The program has these calls of
// its own, which refuse as the system would.
#include "support/staged_main.h"
#include "update/files/file_copy.h"

#include <QTemporaryDir>

#include <cerrno>
#include <climits>
#include <sys/sendfile.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

// What each refuses with, after how many calls.
struct Refusal {
    int error = EINVAL;
    int calls = 0; // that go well before
};

Refusal sharing;
Refusal sending;
Refusal writing;
bool isCopying = false;       // what is written by hand then is the copy
constexpr size_t most = 1000; // bytes at a time, of those that go well

ssize_t moveOrRefuse(Refusal *refusal, int from, int to, size_t size) {
    if (refusal->calls-- <= 0) {
        errno = refusal->error;
        return -1;
    }
    QByteArray block(int(qMin(size, most)), '\0');
    const ssize_t got = ::read(from, block.data(), size_t(block.size()));
    return got > 0 ? ::syscall(SYS_write, to, block.constData(), size_t(got)) : got;
}

} // namespace

extern "C" {

ssize_t copy_file_range(int from, off64_t *, int to, off64_t *, size_t size, unsigned) {
    return moveOrRefuse(&sharing, from, to, size);
}

ssize_t sendfile(int to, int from, off_t *, size_t size) {
    return moveOrRefuse(&sending, from, to, size);
}

ssize_t write(int to, const void *data, size_t size) {
    if (!isCopying)
        return ::syscall(SYS_write, to, data, size);
    if (writing.calls-- <= 0) {
        errno = writing.error;
        return -1;
    }
    return ::syscall(SYS_write, to, data, qMin(size, most));
}

} // extern "C"

class CopyCallsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatIsRefusedIsMovedInAnotherWay_data();
    void whatIsRefusedIsMovedInAnotherWay();
};

void CopyCallsTest::whatIsRefusedIsMovedInAnotherWay_data() {
    QTest::addColumn<int>("shared");
    QTest::addColumn<int>("sent");
    QTest::addColumn<int>("error");
    QTest::addColumn<int>("written"); // pieces by hand that go well
    QTest::addColumn<bool>("copied");
    QTest::newRow("both from the first byte") << 0 << 0 << EINVAL << INT_MAX << true;
    QTest::newRow("both, the system knows neither") << 0 << 0 << ENOSYS << INT_MAX << true;
    QTest::newRow("the first in the middle of the file") << 2 << 0 << EINVAL << INT_MAX << true;
    QTest::newRow("the second in the middle of the file") << 0 << 3 << EINVAL << INT_MAX << true;
    QTest::newRow("each after a part") << 2 << 3 << EINVAL << INT_MAX << true;
    QTest::newRow("the first, and the second goes well") << 1 << 1000 << EINVAL << INT_MAX << true;
    QTest::newRow("the disk is full at the first byte by hand") << 0 << 0 << EINVAL << 0 << false;
    QTest::newRow("the disk is full in the midst of a piece by hand")
        << 2 << 3 << ENOSYS << 400 << false;
    QTest::newRow("the disk is full") << 2 << 3 << ENOSPC << INT_MAX << false;
    QTest::newRow("the disk is damaged") << 0 << 0 << EIO << INT_MAX << false;
}

void CopyCallsTest::whatIsRefusedIsMovedInAnotherWay() {
    QFETCH(int, shared);
    QFETCH(int, sent);
    QFETCH(int, error);
    QFETCH(int, written);
    QFETCH(bool, copied);
    const QTemporaryDir place;
    QByteArray content(600001, '\0');
    for (int i = 0; i < content.size(); ++i)
        content[i] = char((i * 2654435761U) >> 13);
    QFile from(place.filePath("from"));
    QVERIFY(from.open(QIODevice::WriteOnly) && from.write(content) == content.size());
    from.close();
    sharing = {EXDEV, shared};
    sending = {error, sent};
    writing = {ENOSPC, written};
    isCopying = true;
    const bool done = copyFileContent(from.fileName(), place.filePath("to"));
    isCopying = false;
    QCOMPARE(done, copied);
    QFile to(place.filePath("to"));
    QVERIFY(to.open(QIODevice::ReadOnly));
    QCOMPARE(to.readAll() == content, copied);
}

QUORVANE_TEST_MAIN(QCoreApplication, CopyCallsTest)
#include "copy_calls_test.moc"
