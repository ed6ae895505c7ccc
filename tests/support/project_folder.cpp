#include "support/project_folder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace support {
namespace {

void openForWriting(QFile &file) {
    if (!QDir().mkpath(QFileInfo(file).absolutePath()) || !file.open(QIODevice::WriteOnly))
        qFatal("cannot write %s", qPrintable(file.fileName()));
}

} // namespace

QString ProjectFolder::path(const QString &name) const {
    return folder.filePath(name);
}

QString ProjectFolder::write(const QString &name, const QByteArray &content) const {
    QFile file(path(name));
    openForWriting(file);
    if (file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(file.fileName()));
    return file.fileName();
}

QString ProjectFolder::writeZeros(const QString &name, qint64 size) const {
    QFile file(path(name));
    openForWriting(file);
    if (!file.resize(size))
        qFatal("cannot resize %s", qPrintable(file.fileName()));
    return file.fileName();
}

QByteArray ProjectFolder::read(const QString &name) const {
    QFile file(path(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace support
