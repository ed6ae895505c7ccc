#include "quorvanectl/package/project_package.h"

#include "launcher/offer/apply_places.h"
#include "launcher/offer/project_apply.h"
#include "project/project_file.h"
#include "quorvanectl/files/unpack.h"
#include "quorvanectl/files/work_folder.h"
#include "quorvanectl/package/package_names.h"
#include "update/files/version_text.h"
#include "update/http_fetch.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QRegularExpression>

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

ProjectPackage inspectPackage(const QString &zipPath, const QString &workFolder) {
    const WorkFolder work(QDir(workFolder.isEmpty() ? QDir::tempPath() : workFolder)
                              .filePath(QStringLiteral(".quorvanectl-XXXXXX")));
    ProjectPackage package;
    if (!work.isValid()) {
        package.error = work.errorString();
        return package;
    }
    const QString folder = work.filePath(QStringLiteral("unpacked"));
    ZipFailure failure;
    QStringList leftOut; // for their names; they count all the same, so that these are told
    QSet<QString> folded;
    const auto leavesOut = [&](const QString &name) {
        const bool isLeftOut = cannotHold(name, &folded);
        if (isLeftOut && !name.endsWith(QLatin1Char('/')))
            leftOut.append(name);
        return isLeftOut;
    };
    package.unpacked = unpackSome(zipPath, folder, leavesOut, &failure);
    package.error = failure.reason;
    package.isUnsafe = failure.isUnsafe;
    if (!package.unpacked)
        return package;
    package.files = filesBelow(folder) + leftOut;
    package.files.sort();
    for (const QString &file : qAsConst(package.files))
        package.sizes.append(QFileInfo(QDir(folder).filePath(file)).size());
    package.projectFiles = projectFilesAmong(package.files);
    package.hasLogs = QFileInfo(QDir(folder).filePath(apply_places::keptFolder())).isDir();
    readProject(folder, &package);
    return package;
}

QString sizeFault(qint64 bytes) {
    if (bytes == 0)
        return QStringLiteral("is empty, and a launcher takes no empty download");
    if (bytes > largestDownload)
        return QStringLiteral("is larger than 2 GiB: a launcher holds a download whole in memory, "
                              "and none larger");
    return QString();
}

QStringList projectFilesAmong(const QStringList &files) {
    return files.filter(
        QRegularExpression(QStringLiteral("\\.yslib$"), QRegularExpression::CaseInsensitiveOption));
}

QStringList filesBelow(const QString &folder) {
    QStringList files;
    const QDir root(QDir(folder).absolutePath()); // relative paths are taken from no other
    QDirIterator walk(root.path(), QDir::Files | QDir::Hidden | QDir::System,
                      QDirIterator::Subdirectories);
    while (walk.hasNext())
        files.append(root.relativeFilePath(walk.next()));
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace ctl
