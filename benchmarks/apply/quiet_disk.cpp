#include "quiet_disk.h"

#include "update/files/file_copy.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QFile>
#include <QStorageInfo>
#include <QThread>

#include <cstdio>

namespace {

constexpr qint64 quietKibibytes = 16384;
constexpr int patienceMs = 10000;
constexpr int lookMs = 100;

// What waits to be written, and what is on its way.
qint64 waitingKibibytes() {
    QFile file(QStringLiteral("/proc/meminfo"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    qint64 sum = 0;
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith("Dirty:") || line.startsWith("Writeback:"))
            sum += line.simplified().split(' ').value(1).toLongLong();
    }
    return sum;
}

} // namespace

void waitForQuietDisk(const QString &folder) {
    if (QStorageInfo(folder).fileSystemType() == "tmpfs" || !flushFolder(folder))
        return;
    QElapsedTimer clock;
    clock.start();
    while (waitingKibibytes() > quietKibibytes) {
        if (clock.hasExpired(patienceMs)) {
            std::printf("  the disk did not come to rest: others write to it\n");
            return;
        }
        QThread::msleep(lookMs);
    }
}
