#include "update/files/left_lock.h"

#include <QFile>

// A lock is held open there as long as its process lives, and what is held so cannot be removed.
bool removeLeftLock(const QString &path, bool) {
    return QFile::remove(path);
}

// Rights come from the folder there.
void showLock(const QString &) {}
