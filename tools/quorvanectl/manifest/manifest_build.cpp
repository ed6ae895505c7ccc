#include "quorvanectl/manifest/manifest_build.h"

#include "quorvanectl/files/file_access.h"
#include "quorvanectl/manifest/manifest_format.h"
#include "quorvanectl/package/project_package.h"
#include "update/files/failure.h"
#include "update/files/text_file.h"
#include "update/files/version_text.h"
#include "update/manifest_keys.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <functional>
#include <limits>

namespace ctl {
namespace {

// Where the launcher is to look for the file.
bool addressOf(const ManifestWish &wish, const QString &file, QString *address, QString *error) {
    if (!isUsableFile(file, error, std::numeric_limits<qint64>::max()))
        return false;
    const QString unfit = sizeFault(QFileInfo(file).size());
    if (!unfit.isEmpty())
        return failAbout(file, unfit, error);
    const QString folder = QDir(wish.folder).canonicalPath();
    const QString relative = QDir(folder).relativeFilePath(QFileInfo(file).canonicalFilePath());
    if (relative.startsWith(QLatin1String("../")) || QDir::isAbsolutePath(relative))
        return failAbout(file, QStringLiteral("lies outside the manifest's folder"), error);
    const bool joins = wish.base.isEmpty() || wish.base.endsWith(QLatin1Char('/'));
    *address = wish.base + (joins ? QString() : QStringLiteral("/")) + relative;
    return true;
}

bool addPackage(const ManifestWish &wish, const QString &file, const PackageRecord &kind,
                QJsonObject *record, QString *error) {
    QString address;
    if (!addressOf(wish, file, &address, error))
        return false;
    QString reason;
    const QString hash = fileSha256Hex(file, &reason);
    if (hash.isEmpty())
        return failAbout(file, reason, error);
    record->insert(kind.urlKey(), address);
    record->insert(kind.hashKey(), hash);
    return true;
}

bool projectRecord(const ManifestWish &wish, const QString &file, QJsonObject *record,
                   QString *error) {
    PackageRecord kind;
    kind.isProject = true;
    if (!addPackage(wish, file, kind, record, error))
        return false;
    const ProjectPackage package = inspectPackage(file);
    if (!package.unpacked)
        return failAbout(file, package.error, error);
    if (package.name.isEmpty() || package.version.isEmpty())
        return failAbout(file, QStringLiteral("its project has no name or no version"), error);
    record->insert(manifest_keys::name, package.name);
    record->insert(manifest_keys::version, package.version);
    return true;
}

// Without it, PCs that are too old for a component would be offered the next version of it.
QString publishedMinVersion(const QJsonObject &previous, const QString &key) {
    return previous.value(key).toObject().value(manifest_keys::minVersion).toString().trimmed();
}

bool componentRecord(const ManifestWish &wish, const QString &key, QJsonObject *record,
                     QString *error) {
    const QString file = wish.installers.value(key);
    // The name is signed and the key `version` is not: the version must stand in the name.
    const QString version = extractVersion(QFileInfo(file).fileName());
    if (version.isEmpty())
        return failAbout(file, QStringLiteral("its name holds no version, as in setup-1.2.0.exe"),
                         error);
    record->insert(manifest_keys::version, version);
    const QString least = wish.minVersions.value(key, publishedMinVersion(wish.previous, key));
    if (!least.isEmpty())
        record->insert(manifest_keys::minVersion, least);
    return addPackage(wish, file, PackageRecord(), record, error);
}

bool pluginRecord(const QString &plugin, QJsonObject *record, QString *error) {
    const QStringList parts = plugin.split(QLatin1Char(','));
    if (parts.size() != 3)
        return failAbout(plugin, QStringLiteral("a plug-in is given as id,minVersion,path"), error);
    for (int i = 0; i < parts.size(); ++i)
        record->insert(pluginRecordKeys().at(i), parts.at(i));
    return true;
}

// What stands in the previous manifest, without what only held for that one. The version of a component is
// signed in the installer's name alone: whatever `version` says is not trusted further than that.
QJsonObject carriedOver(const QJsonObject &previous) {
    QJsonObject root = previous;
    root.remove(manifest_keys::signature);
    for (const QString &key : componentKeys()) {
        QJsonObject record = root.value(key).toObject();
        const QString named = extractVersion(record.value(manifest_keys::setupUrl).toString());
        if (named.isEmpty())
            continue;
        record.insert(manifest_keys::version, named);
        root.insert(key, record);
    }
    return root;
}

// The records that were there and those given anew, each in the place of the one that is called the same,
// else behind all. Two that are given anew both stay: the lint tells of them.
QJsonArray merged(const QJsonArray &before, QJsonArray anew, QLatin1String nameKey) {
    const auto nameOf = [nameKey](const QJsonValue &value) {
        return value.toObject().value(nameKey).toString().toCaseFolded();
    };
    QJsonArray records;
    for (const QJsonValue &record : before) {
        const auto same = std::find_if(anew.begin(), anew.end(), [&](const QJsonValue &other) {
            return nameOf(other) == nameOf(record);
        });
        records.append(same == anew.end() ? record : QJsonValue(*same));
        if (same != anew.end())
            anew.erase(same);
    }
    for (const QJsonValue &record : qAsConst(anew))
        records.append(record);
    return records;
}

// Gathers the records of `given`; false if one of them cannot be made.
bool gather(const QStringList &given, QJsonArray *records,
            const std::function<bool(const QString &, QJsonObject *)> &make) {
    for (const QString &one : given) {
        QJsonObject record;
        if (!make(one, &record))
            return false;
        records->append(record);
    }
    return true;
}

void putRecords(QLatin1String key, const QJsonArray &anew, QLatin1String nameKey,
                QJsonObject *root) {
    const QJsonArray all = merged(root->value(key).toArray(), anew, nameKey);
    if (!all.isEmpty())
        root->insert(key, all);
}

} // namespace

QJsonObject buildManifest(const ManifestWish &wish, QString *error) {
    QJsonObject root = carriedOver(wish.previous);
    if (!root.contains(manifest_keys::schemaVersion))
        root.insert(manifest_keys::schemaVersion, 1);
    root.insert(manifest_keys::publishedAt, wish.publishedAt);
    for (auto entry = wish.installers.begin(); entry != wish.installers.end(); ++entry) {
        QJsonObject record;
        if (!componentRecord(wish, entry.key(), &record, error))
            return QJsonObject();
        root.insert(entry.key(), record);
    }
    QJsonArray plugins;
    QJsonArray projects;
    const bool made =
        gather(wish.plugins, &plugins,
               [&](const QString &plugin, QJsonObject *record) {
                   return pluginRecord(plugin, record, error);
               }) &&
        gather(wish.projects, &projects, [&](const QString &file, QJsonObject *record) {
            return projectRecord(wish, file, record, error);
        });
    if (!made)
        return QJsonObject();
    putRecords(manifest_keys::plugins, plugins, manifest_keys::id, &root);
    putRecords(manifest_keys::projects, projects, manifest_keys::name, &root);
    return root;
}

QString timeBehind(const QJsonObject &previous) {
    const QDateTime now = QDateTime::currentDateTimeUtc();
    const QDateTime before =
        QDateTime::fromString(previous.value(manifest_keys::publishedAt).toString(), Qt::ISODate);
    const QDateTime next = before.isValid() ? before.toUTC().addSecs(1) : now;
    return (next > now ? next : now).toString(Qt::ISODate);
}

QJsonObject publishedAgain(const QJsonObject &manifest, const QJsonObject &published) {
    QJsonObject again = carriedOver(manifest);
    again.insert(manifest_keys::publishedAt, timeBehind(published));
    return again;
}

QByteArray manifestBytes(const QJsonObject &manifest) {
    return QJsonDocument(manifest).toJson(QJsonDocument::Indented);
}

} // namespace ctl
