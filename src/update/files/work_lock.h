// A file that lies there as long as one process is at a piece of work, and keeps others from it.
//
// One that was left by a killed process is no hindrance, whoever's it was: where the file system knows
// locks it tells, and elsewhere what the file says of its process does. Any thread.
#pragma once

#include "update/files/cancel_flag.h"

class QLockFile;

// How long a lock is waited for, and how often it is tried, and the cancel flag asked, meanwhile.
struct LockWait {
    int limitMs;
    int everyMs;
};

enum class LockOutcome {
    Taken,
    Refused,    // another process has it
    Cancelled,  // the flag was raised while it was waited for
    Impossible, // no lock can be written there
};

// Takes the lock, which lies at `path`, at once or not at all, however long it has been held.
[[nodiscard]] bool takeLock(QLockFile &lock, const QString &path);

// The same, waiting as long as another process has it. `cancelRef` may be null.
[[nodiscard]] LockOutcome waitForLock(QLockFile &lock, const QString &path, const LockWait &wait,
                                      const CancelFlag *cancelRef);
