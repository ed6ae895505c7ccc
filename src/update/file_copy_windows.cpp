#include "update/file_copy.h"

#include <QFile>

bool copyFileContent(const QString &source, const QString &destination) {
    return QFile::copy(source, destination);
}

// Only an administrator may flush a volume there.
bool flushVolume(const QString &) {
    return true;
}

// Rights lie too deep there to be foretold.
bool mayTakeFrom(const QString &) {
    return true;
}

bool mayRead(const QString &) {
    return true;
}

// A mounted volume is a junction there, and removed as one.
bool isMountPoint(const QString &) {
    return false;
}
