#include "quorvanectl/manifest/manifest_build.h"

#include "quorvanectl/files/file_access.h"
#include "quorvanectl/manifest/manifest_format.h"
#include "quorvanectl/package/project_package.h"
#include "update/files/failure.h"
#include "update/files/text_file.h"
#include "update/files/version_text.h"
#include "update/manifest_keys.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

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

bool componentRecord(const ManifestWish &wish, const QString &key, QJsonObject *record,
                     QString *error) {
    const QString file = wish.installers.value(key);
    // The name is signed and the key `version` is not: the version must stand in the name.
    const QString version = extractVersion(QFileInfo(file).fileName());
    if (version.isEmpty())
        return failAbout(file, QStringLiteral("its name holds no version, as in setup-1.2.0.exe"),
                         error);
    record->insert(manifest_keys::version, version);
    if (wish.minVersions.contains(key))
        record->insert(manifest_keys::minVersion, wish.minVersions.value(key));
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

} // namespace

QJsonObject buildManifest(const ManifestWish &wish, QString *error) {
    QJsonObject root{{manifest_keys::schemaVersion, 1},
                     {manifest_keys::publishedAt, wish.publishedAt}};
    for (auto entry = wish.installers.begin(); entry != wish.installers.end(); ++entry) {
        QJsonObject record;
        if (!componentRecord(wish, entry.key(), &record, error))
            return QJsonObject();
        root.insert(entry.key(), record);
    }
    QJsonArray plugins;
    for (const QString &plugin : wish.plugins) {
        QJsonObject record;
        if (!pluginRecord(plugin, &record, error))
            return QJsonObject();
        plugins.append(record);
    }
    if (!plugins.isEmpty())
        root.insert(manifest_keys::plugins, plugins);
    QJsonArray projects;
    for (const QString &file : wish.projects) {
        QJsonObject record;
        if (!projectRecord(wish, file, &record, error))
            return QJsonObject();
        projects.append(record);
    }
    if (!projects.isEmpty())
        root.insert(manifest_keys::projects, projects);
    return root;
}

QByteArray manifestBytes(const QJsonObject &manifest) {
    return QJsonDocument(manifest).toJson(QJsonDocument::Indented);
}

} // namespace ctl
