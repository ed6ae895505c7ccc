// By the system's call: Qt gives a time of the clock on the wall, whose making takes longer than the call.
#include "quorvanectl/files/file_stamp.h"

#include <QFile>

#include <sys/stat.h>

namespace ctl {

FileStamp stampOf(const QString &path) {
    struct stat found {};
    if (::stat(QFile::encodeName(path).constData(), &found) != 0 || !S_ISREG(found.st_mode))
        return {};
    constexpr qint64 nanoseconds = 1000000000;
    return {qint64(found.st_size), found.st_mtim.tv_sec * nanoseconds + found.st_mtim.tv_nsec};
}

} // namespace ctl
