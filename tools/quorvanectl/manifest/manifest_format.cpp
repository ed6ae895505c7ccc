#include "quorvanectl/manifest/manifest_format.h"

#include "launcher/offer/update_context.h"
#include "update/files/version_text.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QUrl>

namespace ctl {

const QStringList &componentKeys() {
    static const QStringList keys{QStringLiteral("runtime"), QStringLiteral("launcher"),
                                  QStringLiteral("editor"), QStringLiteral("pythonTools")};
    return keys;
}

const QStringList &rootKeys() {
    static const QStringList keys =
        QStringList{QStringLiteral("schemaVersion"), QStringLiteral("publishedAt")} +
        componentKeys() +
        QStringList{QStringLiteral("plugins"), QStringLiteral("projects"),
                    QStringLiteral("signature")};
    return keys;
}

const QStringList &componentRecordKeys() {
    static const QStringList keys{QStringLiteral("version"), QStringLiteral("minVersion"),
                                  QStringLiteral("setupUrl"), QStringLiteral("setupSha256")};
    return keys;
}

const QStringList &pluginRecordKeys() {
    static const QStringList keys{QStringLiteral("id"), QStringLiteral("minVersion"),
                                  QStringLiteral("path")};
    return keys;
}

const QStringList &projectRecordKeys() {
    static const QStringList keys{QStringLiteral("name"), QStringLiteral("version"),
                                  QStringLiteral("zipUrl"), QStringLiteral("zipSha256")};
    return keys;
}

QString PackageRecord::urlKey() const {
    return isProject ? QStringLiteral("zipUrl") : QStringLiteral("setupUrl");
}

QString PackageRecord::hashKey() const {
    return isProject ? QStringLiteral("zipSha256") : QStringLiteral("setupSha256");
}

QString PackageRecord::url() const {
    return record.value(urlKey()).toString().trimmed();
}

QString PackageRecord::hash() const {
    return record.value(hashKey()).toString().trimmed();
}

QString PackageRecord::version() const {
    return isProject ? normalizeVersion(record.value(QLatin1String("version")).toString())
                     : UpdateContext::targetComponentVersion(record);
}

QString PackageRecord::identity() const {
    if (!isProject)
        return where;
    return QLatin1String("project:") +
           record.value(QLatin1String("name")).toString().toCaseFolded();
}

QVector<PackageRecord> packageRecords(const QJsonObject &root) {
    QVector<PackageRecord> records;
    for (const QString &key : componentKeys()) {
        if (root.value(key).isObject())
            records += PackageRecord{key, false, root.value(key).toObject()};
    }
    const QJsonArray projects = root.value(QLatin1String("projects")).toArray();
    for (int i = 0; i < projects.size(); ++i) {
        if (projects.at(i).isObject()) {
            records += PackageRecord{QStringLiteral("projects[%1]").arg(i), true,
                                     projects.at(i).toObject()};
        }
    }
    return records;
}

bool isUrl(const QString &address) {
    const QUrl url(address);
    return url.isValid() && url.scheme().size() > 1;
}

QString packageFileName(const QString &address) {
    return QFileInfo(address).fileName();
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
