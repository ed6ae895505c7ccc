#include "frame/log_append.h"

#include "frame/pipe_or_device.h"

#include <QFile>

// Qt opens with O_APPEND: the system places each write at the end of the file.
bool appendToFile(const QString &path, const QByteArray &text) {
    QFile file(path);
    if (isPipeOrDevice(path) ||
        !file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text))
        return false;
    return file.write(text) == text.size() && file.flush();
}
