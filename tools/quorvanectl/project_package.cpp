#include "quorvanectl/project_package.h"

#include "launcher/project_apply.h"
#include "project/project_file.h"
#include "update/version_text.h"
#include "update/zip_extract.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <algorithm>

namespace ctl {
namespace {

void readProject(const QString &folder, ProjectPackage *package) {
    const QString projectFile = findProjectFile(folder);
    if (projectFile.isEmpty())
        return;
    package->name = readProjectName(projectFile);
    package->version = normalizeVersion(installedProjectVersion(projectFile));
    package->issues = validateProjectFile(projectFile);
}

} // namespace

bool ProjectPackage::isSound() const {
    return unpacked && projectFiles.size() == 1 && !hasErrors(issues);
}

ProjectPackage inspectPackage(const QString &zipPath, const QString &workFolder) {
    const QTemporaryDir work(QDir(workFolder.isEmpty() ? QDir::tempPath() : workFolder)
                                 .filePath(QStringLiteral(".quorvanectl-XXXXXX")));
    ProjectPackage package;
    if (!work.isValid()) {
        package.error = work.errorString();
        return package;
    }
    const QString folder = work.filePath(QStringLiteral("unpacked"));
    package.unpacked = extractZip(zipPath, folder, &package.error);
    if (!package.unpacked)
        return package;
    package.files = filesBelow(folder);
    package.projectFiles = package.files.filter(QRegularExpression(QStringLiteral("\\.yslib$")));
    package.hasLogs = QFileInfo(QDir(folder).filePath(QStringLiteral("logs"))).isDir();
    readProject(folder, &package);
    return package;
}

QStringList filesBelow(const QString &folder) {
    QStringList files;
    const QDir root(QDir(folder).absolutePath()); // relative paths are taken from no other
    QDirIterator walk(root.path(), QDir::Files | QDir::Hidden | QDir::System,
                      QDirIterator::Subdirectories);
    while (walk.hasNext())
        files += root.relativeFilePath(walk.next());
    std::sort(files.begin(), files.end());
    return files;
}

bool hasErrors(const QVector<ProjectIssue> &issues) {
    return std::any_of(issues.begin(), issues.end(),
                       [](const ProjectIssue &issue) { return issue.severity == 0; });
}

} // namespace ctl
