#include "quorvanectl/manifest/update_info.h"

#include "update/files/text_file.h"
#include "update/manifest_keys.h"
#include "update/manifest_signature.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

namespace ctl {
namespace {

NamedPackage lookedUp(const PackageRecord &package, const QString &folder, const QString &base) {
    NamedPackage named;
    named.package = package;
    const QString path = localPackage(package.url(), folder, base);
    if (path.isEmpty() || !QFileInfo(path).isFile())
        return named;
    named.bytes = QFileInfo(path).size();
    QString reason;
    named.isNamedOne =
        package.hash().isEmpty() ||
        fileSha256Hex(path, &reason).compare(package.hash(), Qt::CaseInsensitive) == 0;
    return named;
}

// A size that is not known is null, and so is what follows from it.
QJsonObject toJson(const NamedPackage &named) {
    const PackageRecord &package = named.package;
    const bool isThere = named.bytes >= 0;
    return {
        {QStringLiteral("where"), package.where},
        {QStringLiteral("name"),
         package.isProject ? package.record.value(manifest_keys::name).toString() : package.where},
        {QStringLiteral("version"), package.version()},
        {QStringLiteral("minVersion"), package.record.value(manifest_keys::minVersion).toString()},
        {QStringLiteral("address"), package.url()},
        {QStringLiteral("sha256"), package.hash()},
        {QStringLiteral("bytes"), isThere ? QJsonValue(named.bytes) : QJsonValue()},
        {QStringLiteral("isNamedOne"), isThere ? QJsonValue(named.isNamedOne) : QJsonValue()}};
}

} // namespace

ManifestInfo manifestInfo(const QString &text, const QString &folder, const QString &base) {
    const QByteArray bytes = text.toUtf8();
    const QJsonObject root = QJsonDocument::fromJson(bytes).object();
    ManifestInfo info;
    info.bytes = bytes.size();
    info.publishedAt = root.value(manifest_keys::publishedAt).toString();
    info.signatureBytes = decodeSignature(root.value(manifest_keys::signature).toString()).size();
    const QVector<PackageRecord> records = packageRecords(root);
    for (const PackageRecord &record : records)
        info.packages.append(lookedUp(record, folder, base));
    const QJsonArray plugins = root.value(manifest_keys::plugins).toArray();
    for (const QJsonValue &plugin : plugins) {
        if (plugin.isObject())
            info.plugins.append(plugin.toObject());
    }
    return info;
}

bool areNamedOnes(const ManifestInfo &info) {
    return std::all_of(info.packages.begin(), info.packages.end(), [](const NamedPackage &named) {
        return named.bytes < 0 || named.isNamedOne;
    });
}

QJsonObject toJson(const ManifestInfo &info) {
    QJsonArray packages;
    for (const NamedPackage &named : info.packages)
        packages.append(toJson(named));
    QJsonArray plugins;
    for (const QJsonObject &plugin : info.plugins) {
        plugins.append(QJsonObject{
            {manifest_keys::id, plugin.value(manifest_keys::id).toString()},
            {manifest_keys::minVersion, plugin.value(manifest_keys::minVersion).toString()},
            {manifest_keys::path, plugin.value(manifest_keys::path).toString()}});
    }
    return {{QStringLiteral("kind"), QStringLiteral("manifest")},
            {QStringLiteral("bytes"), info.bytes},
            {QStringLiteral("publishedAt"), info.publishedAt},
            {QStringLiteral("packages"), packages},
            {QStringLiteral("plugins"), plugins},
            {QStringLiteral("sig_bytes"), info.signatureBytes}};
}

QJsonObject toJson(const ProjectPackage &package) {
    QJsonArray files;
    for (int i = 0; i < package.files.size(); ++i) {
        files.append(QJsonObject{{QStringLiteral("path"), package.files.at(i)},
                                 {QStringLiteral("bytes"), package.sizes.at(i)}});
    }
    return {{QStringLiteral("kind"), QStringLiteral("package")},
            {QStringLiteral("name"), package.name},
            {QStringLiteral("version"), package.version},
            {QStringLiteral("files"), files}};
}

bool isArchive(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && file.read(2) == QByteArrayLiteral("PK");
}

} // namespace ctl
