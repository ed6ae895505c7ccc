#include "update/files/work_lock.h"

#include "update/files/left_lock.h"

#include <QLockFile>
#include <QThread>

namespace {

// The lock of one that was killed may hold no text yet, or the number of a process that is another's
// by now.
bool tryLock(QLockFile &lock, const QString &path, bool textIsDue) {
    lock.setStaleLockTime(0);
    if (!lock.tryLock(0) && !(removeLeftLock(path, textIsDue) && lock.tryLock(0)))
        return false;
    showLock(path);
    return true;
}

} // namespace

bool takeLock(QLockFile &lock, const QString &path) {
    return tryLock(lock, path, false);
}

LockOutcome waitForLock(QLockFile &lock, const QString &path, const LockWait &wait,
                        const CancelFlag *cancelRef) {
    const int waits = wait.limitMs / wait.everyMs;
    for (int done = 0;; ++done) {
        if (tryLock(lock, path, done > 0 && done == waits))
            return LockOutcome::Taken;
        if (lock.error() != QLockFile::LockFailedError)
            return LockOutcome::Impossible;
        if (isCancelled(cancelRef))
            return LockOutcome::Cancelled;
        if (done == waits)
            return LockOutcome::Refused;
        QThread::msleep(static_cast<unsigned long>(wait.everyMs));
    }
}
