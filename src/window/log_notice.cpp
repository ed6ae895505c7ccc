#include "window/log_notice.h"

#include <QCoreApplication>
#include <QFile>

QString logNotice(const QString &builtIn) {
    QFile file(QCoreApplication::applicationDirPath() +
               QStringLiteral("/config/launcher_notice.txt"));
    if (!file.open(QIODevice::ReadOnly))
        return builtIn;
    const QByteArray bytes = file.readAll();
    return QString::fromUtf8(bytes.constData(), bytes.size()).trimmed();
}
