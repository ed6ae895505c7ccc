// The folders are flushed as well: a rename is a change to them.
#include "placer/sure_files.h"

#include "update/files/failure.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace placer {
namespace {

bool flushParent(const QString &path) {
    const QByteArray folder = QFile::encodeName(QFileInfo(path).absolutePath());
    const int handle = open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0)
        return false;
    const bool flushed = fsync(handle) == 0;
    close(handle);
    return flushed;
}

bool renameEntry(const QString &from, const QString &to, unsigned flags, QString *error) {
    if (renameat2(AT_FDCWD, QFile::encodeName(from).constData(), AT_FDCWD,
                  QFile::encodeName(to).constData(), flags) != 0)
        return failAbout(to, qt_error_string(errno), error);
    return (flushParent(from) && flushParent(to)) || failAbout(to, qt_error_string(errno), error);
}

} // namespace

bool flushWritten(QFile &file) {
    return fsync(file.handle()) == 0;
}

bool moveFile(const QString &from, const QString &to, QString *error) {
    return renameEntry(from, to, RENAME_NOREPLACE, error);
}

bool moveOver(const QString &from, const QString &to, QString *error) {
    return renameEntry(from, to, 0, error);
}

bool removeNowOrLater(const QString &folder) {
    return QDir(folder).removeRecursively();
}

} // namespace placer
