#include "quorvanectl/package/project_pack.h"

#include "launcher/offer/apply_places.h"
#include "project/project_file.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/files/interruption.h"
#include "quorvanectl/files/work_folder.h"
#include "quorvanectl/files/zip_writer.h"
#include "quorvanectl/package/package_names.h"
#include "quorvanectl/package/project_package.h"
#include "quorvanectl/package/version_fault.h"
#include "quorvanectl/package/version_in_text.h"
#include "update/files/failure.h"
#include "update/files/folder_listing.h"
#include "update/files/patient_files.h"
#include "update/files/text_file.h"
#include "update/files/version_text.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QRegularExpression>

#include <algorithm>
#include <memory>

namespace ctl {
namespace {

// Entry names and the files that they are read from; an empty file stands for an empty folder. The
// map's order, by code units, is the package's.
using Content = QMap<QString, QString>;

QString fileName(const QString &path) {
    return QFileInfo(path).fileName();
}

bool isLeftOut(const QString &name) {
    const QString kept = apply_places::keptFolder();
    return name == kept || name.startsWith(kept + QLatin1Char('/'));
}

QString entryFault(const QFileInfo &info, const QString &name) {
    if (info.isSymLink())
        return QStringLiteral("it is a link");
    if (!info.isDir() && !info.isFile())
        return QStringLiteral("it is neither a file nor a folder");
    if (!info.isReadable())
        return QStringLiteral("it cannot be read");
    return nameFault(name);
}

// False if a folder cannot be listed whole: what lies in it would be left out without a word.
bool list(const QString &folder, const QDir &root, QFileInfoList *entries, QStringList *findings) {
    QString unreadable;
    if (listFolder(folder, entries, &unreadable))
        return true;
    *findings += QStringLiteral("%1: %2").arg(root.relativeFilePath(unreadable),
                                              unreadable == folder
                                                  ? QStringLiteral("it cannot be read")
                                                  : QStringLiteral("it is not readable as text"));
    return false;
}

void take(const QFileInfo &info, const QString &name, Content *content, QStringList *folders,
          QStringList *findings) {
    const QString fault = entryFault(info, name);
    if (!fault.isEmpty())
        *findings += QStringLiteral("%1: %2").arg(name, fault);
    else if (info.isFile())
        content->insert(name, info.filePath());
    if (info.isDir() && !info.isSymLink() && info.isReadable())
        folders->append(info.filePath());
}

// False if not all of it can be seen.
bool contentOf(const QString &folder, Content *content, QStringList *findings) {
    const QDir root(QDir(folder).absolutePath()); // relative paths are taken from no other
    QStringList folders{root.path()};
    bool isWhole = true;
    while (!folders.isEmpty()) {
        const QString place = folders.takeLast();
        QFileInfoList entries;
        isWhole = list(place, root, &entries, findings) && isWhole;
        if (entries.isEmpty() && place != root.path())
            content->insert(root.relativeFilePath(place), QString());
        for (const QFileInfo &info : qAsConst(entries)) {
            const QString name = root.relativeFilePath(info.filePath());
            if (!isLeftOut(name))
                take(info, name, content, &folders, findings);
        }
    }
    findings->sort();
    *findings += sameNameFaults(content->keys());
    return isWhole;
}

// Whose first line says so, as every tool writes it, encrypted or not.
bool isPrivateKey(const QString &path) {
    static const QRegularExpression begin(QStringLiteral("^-----BEGIN [A-Z ]*PRIVATE KEY-----"));
    constexpr int longestLine = 64; // bytes
    QFile file(path);
    return file.open(QIODevice::ReadOnly) &&
           begin.match(QString::fromLatin1(file.read(longestLine))).hasMatch();
}

// What goes into a package and may be meant, but hardly is.
QStringList warningsOf(const Content &content) {
    QStringList warnings;
    for (auto entry = content.begin(); entry != content.end(); ++entry) {
        if (!entry.value().isEmpty() && isPrivateKey(entry.value()))
            warnings +=
                QStringLiteral("%1: it is a private key, and whoever gets the package gets it")
                    .arg(entry.key());
    }
    return warnings;
}

// The one project file, at the top: elsewhere the launcher would find it, but the project would move.
QString projectFileOf(const Content &content, QStringList *findings) {
    QStringList names = content.keys();
    const auto isFolder = [&](const QString &name) { return content.value(name).isEmpty(); };
    names.erase(std::remove_if(names.begin(), names.end(), isFolder), names.end());
    const QStringList files = projectFilesAmong(names);
    if (files.size() == 1 && !files.first().contains(QLatin1Char('/')))
        return content.value(files.first());
    if (files.isEmpty())
        *findings += QStringLiteral("no project file (.yslib) lies here");
    else if (files.size() == 1)
        *findings += QStringLiteral("%1: the project file must lie at the top").arg(files.first());
    else
        *findings += QStringLiteral("several project files, of which the launcher takes any: %1")
                         .arg(files.join(QStringLiteral(", ")));
    return QString();
}

bool writeNewBytes(const QString &path, const QByteArray &bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush();
}

// Changes the version in the file's text, which keeps its form. False if that cannot be done.
bool sayVersion(const QString &projectFile, const QString &version) {
    if (readProjectVersion(projectFile) == version)
        return true;
    QString error;
    const QByteArray made = withVersion(readBytes(projectFile, &error), version);
    return !made.isNull() && writeFile(projectFile, made, true, &error);
}

// A launcher's own stamp has the line ends of its system; a package is the same wherever it was made.
bool stampWithPlainLines(const QString &projectFile, const QString &version) {
    if (!stampProjectVersion(projectFile, version))
        return false;
    QString error;
    const QByteArray stamped = readBytes(projectFile, &error);
    return !stamped.contains('\r') ||
           writeNewBytes(projectFile, QByteArray(stamped).replace("\r\n", "\n"));
}

// Puts a copy of the project file that says `version`, and a sidecar, in the place of the folder's.
bool stampVersion(const QString &projectFile, const QString &version, const QString &workFolder,
                  Content *content) {
    const QString copy = QDir(workFolder).filePath(fileName(projectFile));
    if (!QDir().mkpath(workFolder) || !QFile::copy(projectFile, copy))
        return false;
    const QFile::Permissions writable = QFile::ReadOwner | QFile::WriteOwner;
    if (!QFile::setPermissions(copy, writable))
        return false;
    const QString sidecar = versionSidecarPath(copy);
    const bool stamped = (sayVersion(copy, version) || stampWithPlainLines(copy, version)) &&
                         writeNewBytes(sidecar, version.toUtf8() + '\n');
    content->insert(fileName(projectFile), copy);
    content->insert(fileName(sidecar), sidecar);
    return stamped && readProjectVersion(copy) == version;
}

bool writeZip(const Content &content, const QString &zipPath, QString *error) {
    QFile zip(zipPath);
    if (!zip.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        return fail(zip.errorString(), error);
    ZipWriter writer(&zip);
    for (auto entry = content.begin(); entry != content.end(); ++entry) {
        const bool added =
            entry.value().isEmpty()
                ? writer.addFolder(entry.key())
                : writer.addFile(entry.key(), std::make_unique<QFile>(entry.value()));
        if (!added)
            return fail(writer.error(), error);
    }
    if (!writer.finish())
        return fail(writer.error(), error);
    return zip.flush() || fail(zip.errorString(), error);
}

// What the launcher would say to the finished package.
QStringList faultsOf(const ProjectPackage &package, qint64 size) {
    QStringList faults;
    const QString unfit = sizeFault(size);
    if (!unfit.isEmpty())
        faults.append(QStringLiteral("the package ") + unfit);
    for (const QString &line : errorLines(package.issues))
        faults.append(QStringLiteral("in the package, %1").arg(line));
    return faults;
}

bool moveIn(const QString &from, const QString &to, bool overwrite, QString *error) {
    if (!mayWrite(to, overwrite, error)) // it may have appeared meanwhile
        return false;
    return renameOverWhenFree(from, to, error);
}

// Letters of any script stay; what a URL or a shell reads in its own way does not.
QString packageName(const QString &projectName, const QString &version) {
    static const QRegularExpression other(QStringLiteral("[^\\w.-]+"),
                                          QRegularExpression::UseUnicodePropertiesOption);
    return QString(projectName).replace(other, QStringLiteral("_")) + QLatin1Char('-') + version +
           QStringLiteral(".zip");
}

// Looks into the finished package as a launcher does, and moves it to its place.
void takeIn(const QString &zip, const QString &workFolder, bool overwrite, PackResult *result) {
    const ProjectPackage package = inspectPackage(zip, workFolder);
    if (!package.unpacked) { // what was packed a moment ago is sound: the disk is full, or the like
        (void)failAbout(result->zipPath, package.error, &result->error);
        return;
    }
    result->findings = faultsOf(package, QFileInfo(zip).size());
    if (!result->findings.isEmpty())
        return;
    result->sha256 = fileSha256Hex(zip, &result->error);
    result->files = package.files.size();
    result->ok = !interrupted() && !result->sha256.isEmpty() &&
                 moveIn(zip, result->zipPath, overwrite, &result->error);
    if (interrupted() && !result->ok)
        result->error = QStringLiteral("interrupted");
}

} // namespace

bool liesIn(const QString &path, const QString &folder) {
    QString place = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    while (!QFileInfo::exists(place) && place != QFileInfo(place).path())
        place = QFileInfo(place).path();
    place = QFileInfo(place).canonicalFilePath();
    for (QString below; place != below; place = QFileInfo(place).path()) {
        if (isOnePlace(place, folder))
            return true;
        below = place;
    }
    return false;
}

bool liesOutside(const QString &folder, const QString &outFolder, QString *error) {
    return !liesIn(outFolder, folder) ||
           failAbout(outFolder, QStringLiteral("lies in the project's folder"), error);
}

bool isFullVersion(const QString &text) {
    return extractVersion(text) == text && versionFault(text).isEmpty() &&
           !isPlaceholderVersion(text);
}

PackResult packProject(const QString &folder, const QString &version, const QString &outFolder,
                       bool overwrite) {
    PackResult result;
    if (!canBeNamed(folder, &result.error) || !liesOutside(folder, outFolder, &result.error))
        return result;
    if (!QFileInfo(folder).isDir()) {
        result.error = QStringLiteral("%1: is no folder").arg(folder);
        return result;
    }
    Content content;
    if (!contentOf(folder, &content, &result.findings))
        return result;
    const QString projectFile = projectFileOf(content, &result.findings);
    if (!projectFile.isEmpty())
        result.issues = validateProjectFile(projectFile);
    result.warnings = warningsOf(content);
    if (!result.findings.isEmpty() || hasErrors(result.issues))
        return result;

    result.projectName = readProjectName(projectFile);
    result.zipPath = QDir(outFolder).filePath(packageName(result.projectName, version));
    if (!mayWrite(result.zipPath, overwrite, &result.error))
        return result;
    const InterruptionWatch watch;
    QDir().mkpath(outFolder);
    const WorkFolder work(QDir(outFolder).filePath(QStringLiteral(".quorvanectl-XXXXXX")));
    if (!work.isValid()) {
        result.error = QStringLiteral("%1: %2").arg(outFolder, work.errorString());
        return result;
    }
    if (!stampVersion(projectFile, version, work.filePath(QStringLiteral("stamped")), &content)) {
        result.error = QStringLiteral("%1: cannot write a copy of %2 that says the version")
                           .arg(outFolder, projectFile);
        return result;
    }
    const QString zip = work.filePath(QStringLiteral("package.zip"));
    QString reason;
    if (writeZip(content, zip, &reason))
        takeIn(zip, work.path(), overwrite, &result);
    else
        (void)failAbout(result.zipPath, reason, &result.error);
    return result;
}

} // namespace ctl
