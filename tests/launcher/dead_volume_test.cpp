// The real walk over the mounted volumes, one of which never answers: a file system of this process's
// own (FUSE) of which nobody reads the questions.
#include "installation.h"
#include "launcher/launcher_service.h"
#include "support/staged_main.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace {

QByteArray lastError(const char *what) {
    return QByteArray(what).append(": ").append(std::strerror(errno));
}

// This process's own view of the mounts, which it takes while it has one thread alone. What went wrong;
// empty if it has one.
QByteArray ownMounts() {
    if (::unshare(CLONE_NEWNS) != 0)
        return lastError("no mounts of its own");
    if (::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        return lastError("no private mounts");
    return QByteArray();
}

const QByteArray noOwnMounts = ownMounts();

class DeadVolume {
public:
    DeadVolume() {
        if (!noOwnMounts.isEmpty()) {
            missing = noOwnMounts;
            return;
        }
        device = ::open("/dev/fuse", O_RDWR | O_CLOEXEC);
        if (device < 0) {
            missing = lastError("/dev/fuse");
            return;
        }
        const QByteArray options =
            "fd=" + QByteArray::number(device) + ",rootmode=40000,user_id=0,group_id=0";
        if (::mount("dead", place().constData(), "fuse", 0, options.constData()) != 0)
            missing = lastError("no file system of its own");
    }
    // Whoever still asks gets an error.
    ~DeadVolume() {
        ::umount2(place().constData(), MNT_DETACH);
        if (device >= 0)
            ::close(device);
    }
    DeadVolume(const DeadVolume &) = delete;
    DeadVolume &operator=(const DeadVolume &) = delete;

    QByteArray missing; // why there is none; empty if there is one

private:
    [[nodiscard]] QByteArray place() const { return QFile::encodeName(folder.path()); }

    const QTemporaryDir folder;
    int device = -1;
};

int threads() {
    return QDir("/proc/self/task").entryList(QDir::Dirs | QDir::NoDotAndDotDot).size();
}

} // namespace

class DeadVolumeTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theCancelEndsTheCheck();
};

void DeadVolumeTest::theCancelEndsTheCheck() {
    installation::reset();
    int before = 0;
    {
        const DeadVolume volume;
        if (!volume.missing.isEmpty())
            QSKIP(volume.missing.constData());
        LauncherService service;
        service.countdownTimer.setInterval(1000 * 1000);
        before = threads();
        service.start();
        QTRY_COMPARE(threads(), before + 2); // the check's, and the one that hangs
        QElapsedTimer waited;
        waited.start();
        service.cancelUpdateTask();
        QTRY_VERIFY(!service.isUpdateTaskActive());
        const qint64 took = waited.elapsed();
        QVERIFY2(took < 1000, qPrintable(QString::number(took))); // 100 on an idle machine
        QVERIFY(threads() > before);                              // still there
        QVERIFY(installation::takeLog().filter("No answer").isEmpty());
    }
    QTRY_VERIFY(threads() <= before + 1); // the pool keeps its own for a while
}

QUORVANE_TEST_MAIN(QCoreApplication, DeadVolumeTest)
#include "dead_volume_test.moc"
