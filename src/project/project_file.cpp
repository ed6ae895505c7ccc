#include "project/project_file.h"

#include "update/files/memory_guard.h"
#include "update/files/text_file.h"
#include "update/files/version_text.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSaveFile>

namespace {

const QLatin1String projectKey("project");
const QLatin1String versionKey("version");

// An empty object stands for every text that is no JSON object: it holds no project either.
QJsonObject rootObject(const QString &text) {
    return unlessOutOfMemory([&] { return QJsonDocument::fromJson(text.toUtf8()).object(); },
                             QJsonObject());
}

QString versionText(const QJsonValue &value) {
    if (value.isDouble())
        return QString::number(value.toDouble(), 'f', 8);
    return value.toString();
}

// Looks at no structure on purpose: a version in a damaged file still counts, and so does one that
// belongs to something else than the project.
QString firstVersionInText(const QString &text) {
    static const QRegularExpression version(QStringLiteral("\"version\"\\s*:\\s*\"([^\"]+)\""));
    return normalizeVersion(version.match(text).captured(1));
}

QString nameIn(const QJsonObject &root) {
    return root.value(projectKey).toObject().value(QLatin1String("name")).toString();
}

// `root` is what parses of `text`.
QString versionIn(const QJsonObject &root, const QString &text) {
    const QJsonObject project = root.value(projectKey).toObject();
    const QString version = normalizeVersion(versionText(project.value(versionKey)));
    return version.isEmpty() ? firstVersionInText(text) : version;
}

QString orRecorded(const QString &version, const QString &projectPath) {
    if (!version.isEmpty())
        return version;
    const QString recorded = readTextFile(versionSidecarPath(projectPath)).trimmed();
    return recorded.isEmpty() ? QString() : recorded;
}

// Nothing is created: the system may refuse that for a file of another user's that is there. Nothing
// is cut off before the new text stands: a full disk leaves the old one as it is.
bool writeOver(const QString &path, const QByteArray &content) {
    QFile file(path);
    return file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly | QIODevice::Text) &&
           file.write(content) == content.size() && file.flush() && file.resize(file.pos());
}

// No moment without a whole project file: the new text takes the place of the old one once it lies
// on the disk. Where no file can be made beside it, it is written over; so it is where none can take
// its place, since a reader holds it on Windows, or it is another user's in a sticky folder.
bool replaceContent(const QString &path, const QByteArray &content) {
    QSaveFile file(path);
    file.setDirectWriteFallback(true);
    const bool written = file.open(QIODevice::WriteOnly | QIODevice::Text) &&
                         file.write(content) == content.size() &&
                         file.flush(); // commit() does not look at what its own flush comes to
    return written && (file.commit() || writeOver(path, content));
}

bool stampProjectFile(const QString &projectPath, const QString &version) {
    QJsonDocument document = QJsonDocument::fromJson(readTextFile(projectPath).toUtf8());
    if (!document.isObject())
        return false;
    QJsonObject root = document.object();
    QJsonObject project = root.value(projectKey).toObject();
    project.insert(versionKey, version);
    root.insert(projectKey, project);
    document.setObject(root);
    return replaceContent(projectPath, document.toJson(QJsonDocument::Indented));
}

} // namespace

QString readProjectName(const QString &projectPath) {
    return nameIn(rootObject(readTextFile(projectPath)));
}

QString readProjectVersion(const QString &projectPath) {
    const QString text = readTextFile(projectPath);
    return versionIn(rootObject(text), text);
}

QString installedProjectVersion(const QString &projectPath) {
    return orRecorded(readProjectVersion(projectPath), projectPath);
}

ProjectIdentity readProjectIdentity(const QString &projectPath) {
    const QString text = readTextFile(projectPath);
    const QJsonObject root = rootObject(text);
    return {nameIn(root), orRecorded(versionIn(root, text), projectPath)};
}

QString versionSidecarPath(const QString &projectPath) {
    if (projectPath.trimmed().isEmpty())
        return QString();
    const QDir folder(QFileInfo(projectPath).absolutePath());
    return folder.filePath(QStringLiteral(".quorvane-installed-version"));
}

bool stampProjectVersion(const QString &projectPath, const QString &version) {
    if (version.trimmed().isEmpty() || projectPath.trimmed().isEmpty())
        return false;
    const bool stamped =
        unlessOutOfMemory([&] { return stampProjectFile(projectPath, version); }, false);
    const bool recorded =
        writeTextFile(versionSidecarPath(projectPath), version + QLatin1Char('\n'));
    // The file is the first place: with the version in it, the sidecar may fail.
    return stamped || recorded;
}
