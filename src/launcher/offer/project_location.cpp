#include "launcher/offer/project_location.h"

#include "frame/app_paths.h"

#include <QDir>
#include <QFileInfo>

QString normalizedProjectPath(const QString &path) {
    if (path.trimmed().isEmpty())
        return QString();
    const QString absolute = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    const QString projects = QDir::cleanPath(AppPaths::projectsDirectory());
    if (absolute.startsWith(projects + QLatin1Char('/'), Qt::CaseInsensitive) &&
        QFileInfo::exists(absolute))
        return absolute;

    const QString mark = QStringLiteral("/USER/projects/");
    QString forward = absolute;
    // A path stored on Windows is understood everywhere.
    forward.replace(QLatin1Char('\\'), QLatin1Char('/'));
    const int found = forward.indexOf(mark, 0, Qt::CaseInsensitive);
    if (found >= 0) {
        const QString moved = QDir(projects).filePath(forward.mid(found + mark.size()));
        if (QFileInfo::exists(moved))
            return QDir::cleanPath(QFileInfo(moved).absoluteFilePath());
    }
    return QFileInfo::exists(absolute) ? absolute : QString();
}
