#include "update/files/project_path.h"

#include <QFileInfo>

QString slashedPath(const QString &path) {
    return QString(path).replace(QLatin1Char('\\'), QLatin1Char('/'));
}

QString cleanedPath(const QString &path) {
    return QDir::cleanPath(slashedPath(path));
}

QString locatedPath(const QDir &folder, const QString &path) {
    const QString asWritten = folder.absoluteFilePath(path);
    if (QFileInfo::exists(asWritten))
        return asWritten;
    return folder.absoluteFilePath(slashedPath(path));
}
