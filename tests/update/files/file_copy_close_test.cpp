// A copy on a volume that tells only at the end that it could not keep what was written to it.
#include "update/files/file_copy.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <cerrno>
#include <string>

#include <sys/syscall.h>
#include <unistd.h>

namespace {

std::string lost; // the file whose closing fails; none of that name: all end well

std::string nameOf(int descriptor) {
    char name[4096];
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const ssize_t size = ::readlink(link.c_str(), name, sizeof name);
    return size < 0 ? std::string() : std::string(name, size_t(size));
}

} // namespace

// A program's own functions come before those of the C library, for the libraries it uses too.
extern "C" int close(int descriptor) {
    const bool fails = !lost.empty() && nameOf(descriptor) == lost;
    const int result = int(::syscall(SYS_close, descriptor));
    if (!fails)
        return result;
    errno = EDQUOT;
    return -1;
}

class FileCopyCloseTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatWasLostAtTheEndIsNoCopy_data();
    void whatWasLostAtTheEndIsNoCopy();
};

void FileCopyCloseTest::whatWasLostAtTheEndIsNoCopy_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isCopied");
    QTest::newRow("the copy is lost") << "to" << false;
    QTest::newRow("nothing is lost") << "none" << true;
    QTest::newRow("the source was only read") << "from" << true;
}

void FileCopyCloseTest::whatWasLostAtTheEndIsNoCopy() {
    QFETCH(QString, name);
    QFETCH(bool, isCopied);
    const QTemporaryDir place;
    QFile file(place.filePath("from"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write("content"), qint64(7));
    file.close();
    lost =
        QFile::encodeName(QFileInfo(place.path()).canonicalFilePath() + '/' + name).toStdString();
    const bool done = copyFileContent(file.fileName(), place.filePath("to"));
    lost.clear();
    QCOMPARE(done, isCopied);
}

QTEST_GUILESS_MAIN(FileCopyCloseTest)
#include "file_copy_close_test.moc"
