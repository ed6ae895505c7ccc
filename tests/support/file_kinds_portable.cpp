// Links and pipes by the system's own calls; a name's dot hides it, so nothing is left to do for
// that.
#include "support/file_kinds.h"

#include <QFile>

#include <sys/stat.h>
#include <unistd.h>

namespace support {

bool makeLink(const QString &target, const QString &path) {
    return ::symlink(QFile::encodeName(target).constData(), QFile::encodeName(path).constData()) ==
           0;
}

bool makePipe(const QString &path) {
    return ::mkfifo(QFile::encodeName(path).constData(), 0600) == 0;
}

void hide(const QString &) {}

bool permissionsKeepOut() {
    return ::geteuid() != 0; // root reads everything
}

} // namespace support
