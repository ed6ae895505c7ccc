#include "placer/release_version.h"

#include "placer/sure_files.h"
#include "update/files/failure.h"
#include "update/files/patient_files.h"
#include "update/files/text_file.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

namespace placer {
namespace {

// How often another installer may have written the file in between.
constexpr int attempts = 20;

// Null where there is no file; an error where there is one that cannot be read.
bool readBytes(const QString &path, QByteArray *bytes, QString *error) {
    QFile file(path);
    *bytes = QByteArray();
    if (!file.exists())
        return true;
    if (!file.open(QIODevice::ReadOnly))
        return failAbout(path, file.errorString(), error);
    *bytes = file.readAll();
    if (bytes->isNull())
        *bytes = QByteArray("");
    return file.error() == QFileDevice::NoError || failAbout(path, file.errorString(), error);
}

QJsonDocument documentOf(const QByteArray &bytes) {
    return QJsonDocument::fromJson(decodeText(bytes).toUtf8());
}

QByteArray withVersion(const QByteArray &bytes, const QString &version) {
    QJsonObject object = documentOf(bytes).object();
    object.insert(QLatin1String(launcherVersionKey), version);
    return QJsonDocument(object).toJson();
}

bool holds(const QString &path, const QByteArray &bytes) {
    QByteArray now;
    return readBytes(path, &now, nullptr) && now.isNull() == bytes.isNull() && now == bytes;
}

// A name beside the file that nothing has.
QString freeName(const QString &path) {
    QString name = path + QStringLiteral(".bad");
    for (int number = 2; QFileInfo::exists(name); ++number)
        name = path + QStringLiteral(".bad%1").arg(number);
    return name;
}

bool putAside(const QString &path, QString *setAside, QString *error) {
    const QString name = freeName(path);
    if (!moveFile(path, name, error))
        return false;
    *setAside = QFileInfo(name).fileName();
    return true;
}

} // namespace

bool prepareLauncherVersion(const VersionFiles &files, const QString &version, QString *error) {
    QByteArray before;
    return readBytes(files.path, &before, error) &&
           writeSurely(files.prepared, withVersion(before, version), error);
}

bool writeLauncherVersion(const VersionFiles &files, const QString &version, QString *setAside,
                          QString *error) {
    setAside->clear();
    for (int attempt = 0; attempt < attempts; ++attempt) {
        QByteArray before;
        if (!readBytes(files.path, &before, error))
            return false;
        if (!before.isNull() && !documentOf(before).isObject()) {
            if (!putAside(files.path, setAside, error))
                return false;
            continue;
        }
        if (documentOf(before).object().value(QLatin1String(launcherVersionKey)) == version)
            return true;
        const QByteArray next = withVersion(before, version);
        if (!holds(files.prepared, next) && !writeSurely(files.prepared, next, error))
            return false;
        if (holds(files.path, before))
            return moveOver(files.prepared, files.path, error);
    }
    return failAbout(files.path, QStringLiteral("is being written by somebody else all the time"),
                     error);
}

bool removeLauncherVersion(const QString &path, QString *error) {
    QByteArray before;
    if (!readBytes(path, &before, error))
        return false;
    QJsonObject object = documentOf(before).object();
    if (!object.contains(QLatin1String(launcherVersionKey)))
        return true;
    object.remove(QLatin1String(launcherVersionKey));
    if (!object.isEmpty())
        return writeSurely(path, QJsonDocument(object).toJson(), error);
    return removeFileWhenFree(path, error);
}

} // namespace placer
