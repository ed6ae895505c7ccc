#include "window/log_notice.h"

#include "frame/pipe_or_device.h"

#include <QCoreApplication>
#include <QFile>

QString logNotice(const QString &builtIn) {
    QFile file(QCoreApplication::applicationDirPath() +
               QStringLiteral("/config/launcher_notice.txt"));
    if (isPipeOrDevice(file.fileName()) || !file.open(QIODevice::ReadOnly))
        return builtIn;
    const QByteArray bytes = file.readAll();
    return QString::fromUtf8(bytes.constData(), bytes.size()).trimmed();
}
