// A file that lies there as long as one process is at a piece of work, and keeps others from it.
#pragma once

class QLockFile;

// Takes the lock at once or not at all, however long it has been held. One that was left by a killed
// process is no hindrance.
[[nodiscard]] bool takeLock(QLockFile &lock);
