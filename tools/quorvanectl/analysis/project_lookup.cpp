#include "quorvanectl/analysis/project_lookup.h"

#include "quorvanectl/files/file_access.h"
#include "update/files/project_path.h"

#include <QDirIterator>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace ctl {
namespace {

QStringList projectsIn(const QString &folder) {
    QDirIterator entries(folder, QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot);
    QStringList projects;
    for (int count = 0; entries.hasNext() && count < mostEntries; ++count) {
        const QString path = entries.next();
        if (path.endsWith(QLatin1String(".yslib"), Qt::CaseInsensitive) && QFileInfo(path).isFile())
            projects.append(path);
    }
    projects.sort();
    return projects;
}

} // namespace

bool listsScript(const QString &projectPath, const QString &scriptPath) {
    QString error;
    const QString text = readText(projectPath, &error);
    const QDir folder(QFileInfo(projectPath).absolutePath());
    const QJsonArray scripts =
        QJsonDocument::fromJson(text.toUtf8()).object().value(QLatin1String("scripts")).toArray();
    return std::any_of(scripts.begin(), scripts.end(), [&](const QJsonValue &entry) {
        const QString path = entry.toObject().value(QLatin1String("path")).toString();
        return !path.isEmpty() && QDir::cleanPath(locatedPath(folder, path)) == scriptPath;
    });
}

QString projectAbove(const QString &scriptPath) {
    QDir folder = QFileInfo(scriptPath).absoluteDir();
    for (;;) {
        const QStringList projects = projectsIn(folder.path());
        const auto listing =
            std::find_if(projects.begin(), projects.end(),
                         [&](const QString &project) { return listsScript(project, scriptPath); });
        if (listing != projects.end())
            return *listing;
        if (!projects.isEmpty())
            return projects.constFirst();
        const QString above = QFileInfo(folder.path()).absolutePath();
        if (above.size() >= folder.path().size()) // at a root, or where Qt knows no way up
            return {};
        folder.setPath(above);
    }
}

QStringList scriptsInFolder(const QString &folder, int limit) {
    QDirIterator entries(folder, QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    QStringList scripts;
    for (int count = 0; entries.hasNext() && count < limit; ++count) {
        const QString path = entries.next();
        if (path.endsWith(QLatin1String(".ys"), Qt::CaseInsensitive) && entries.fileInfo().isFile())
            scripts.append(path);
    }
    return scripts;
}

} // namespace ctl
