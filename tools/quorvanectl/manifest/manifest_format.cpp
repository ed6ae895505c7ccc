#include "quorvanectl/manifest/manifest_format.h"

#include "launcher/offer/update_component.h"
#include "launcher/offer/update_context.h"
#include "update/files/version_text.h"
#include "update/manifest_keys.h"

#include <QDir>
#include <QJsonArray>

namespace ctl {

namespace {

template<typename Keys>
QStringList listOf(const Keys &keys) {
    QStringList list;
    for (const QLatin1String key : keys)
        list.append(key);
    return list;
}

QStringList listOfRoot() {
    QStringList list;
    for (const manifest_keys::RootKey &entry : manifest_keys::root)
        list.append(entry.key);
    return list + QStringList(manifest_keys::signature);
}

QStringList listOfComponents() {
    QStringList list;
    for (const UpdateComponent *component : updateComponents)
        list.append(component->keyText());
    return list;
}

} // namespace

const QStringList &componentKeys() {
    static const QStringList keys = listOfComponents();
    return keys;
}

const QStringList &rootKeys() {
    static const QStringList keys = listOfRoot();
    return keys;
}

const QStringList &componentRecordKeys() {
    static const QStringList keys =
        QStringList(manifest_keys::version) + listOf(manifest_keys::signedOfComponent);
    return keys;
}

const QStringList &pluginRecordKeys() {
    static const QStringList keys = listOf(manifest_keys::ofPlugin);
    return keys;
}

const QStringList &projectRecordKeys() {
    static const QStringList keys = listOf(manifest_keys::ofProject);
    return keys;
}

QString PackageRecord::urlKey() const {
    return isProject ? manifest_keys::zipUrl : manifest_keys::setupUrl;
}

QString PackageRecord::hashKey() const {
    return isProject ? manifest_keys::zipSha256 : manifest_keys::setupSha256;
}

QString PackageRecord::url() const {
    return record.value(urlKey()).toString().trimmed();
}

QString PackageRecord::hash() const {
    return record.value(hashKey()).toString().trimmed();
}

QString PackageRecord::version() const {
    return isProject ? normalizeVersion(record.value(manifest_keys::version).toString())
                     : UpdateContext::targetComponentVersion(record);
}

QString PackageRecord::identity() const {
    if (!isProject)
        return where;
    return QLatin1String("project:") + record.value(manifest_keys::name).toString().toCaseFolded();
}

QString titleOf(const PackageRecord &package) {
    const QString name =
        package.isProject ? package.record.value(manifest_keys::name).toString() : package.where;
    return QStringLiteral("%1 %2").arg(name, package.version());
}

QVector<PackageRecord> packageRecords(const QJsonObject &root) {
    QVector<PackageRecord> records;
    for (const QString &key : componentKeys()) {
        if (root.value(key).isObject())
            records.append(PackageRecord{key, false, root.value(key).toObject()});
    }
    const QJsonArray projects = root.value(manifest_keys::projects).toArray();
    for (int i = 0; i < projects.size(); ++i) {
        if (projects.at(i).isObject()) {
            records.append(PackageRecord{QStringLiteral("projects[%1]").arg(i), true,
                                         projects.at(i).toObject()});
        }
    }
    return records;
}

QString localPackage(const QString &address, const QString &folder, const QString &base) {
    QString relative = address;
    if (isUrl(address)) {
        const QString start = base.endsWith(QLatin1Char('/')) ? base : base + QLatin1Char('/');
        if (base.isEmpty() || !address.startsWith(start))
            return QString();
        relative = address.mid(start.size());
    }
    return relative.isEmpty() ? QString() : QDir(folder).filePath(relative);
}

} // namespace ctl
