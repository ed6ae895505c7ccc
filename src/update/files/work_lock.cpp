#include "update/files/work_lock.h"

#include <QLockFile>

// The lock of one that was killed may hold no text yet, or the number of a process that is another's
// by now. Removing it fails as long as its own process lives: the system holds it for that one.
bool takeLock(QLockFile &lock) {
    lock.setStaleLockTime(0);
    return lock.tryLock(0) || (lock.removeStaleLockFile() && lock.tryLock(0));
}
