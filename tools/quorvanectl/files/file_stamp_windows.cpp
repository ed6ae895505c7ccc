#include "quorvanectl/files/file_stamp.h"

#include <QDateTime>
#include <QFileInfo>

namespace ctl {

FileStamp stampOf(const QString &path) {
    const QFileInfo found(path);
    return found.isFile() ? FileStamp{found.size(), found.lastModified().toMSecsSinceEpoch()}
                          : FileStamp();
}

} // namespace ctl
