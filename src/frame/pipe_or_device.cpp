#include "frame/pipe_or_device.h"

#include <QFileInfo>

bool isPipeOrDevice(const QString &path) {
    const QFileInfo info(path);
    return info.exists() && !info.isFile() && !info.isDir();
}
