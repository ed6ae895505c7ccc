// lintShape() and unlistedKeys(). Keys and types: the format ignores what it does not list, and signs a value of a wrong type as an
// empty one.
#include "quorvanectl/manifest/manifest_lint_rules.h"

#include "quorvanectl/package/version_fault.h"
#include "update/manifest_keys.h"

#include <QDateTime>
#include <QJsonArray>

namespace ctl {
namespace {

QString at(const QString &where, const QString &key) {
    return where.isEmpty() ? key : QStringLiteral("%1.%2").arg(where, key);
}

LintFinding wrongType(const QString &where, const char *wanted) {
    return {QStringLiteral("wrong-type"), where,
            QStringLiteral("must be %1; it is read and signed as an empty one")
                .arg(QLatin1String(wanted))};
}

const QLatin1String unlistedKey("unlisted-key");

QVector<LintFinding> lintKeys(const QJsonObject &object, const QStringList &keys,
                              const QString &where) {
    QVector<LintFinding> findings;
    for (auto member = object.begin(); member != object.end(); ++member) {
        if (!keys.contains(member.key())) {
            findings.append({unlistedKey, at(where, member.key()),
                             QStringLiteral("nobody reads this key, and no signature covers it")});
        }
    }
    return findings;
}

QVector<LintFinding> lintRecord(const QJsonValue &value, const QStringList &keys,
                                const QString &where) {
    if (!value.isObject())
        return {wrongType(where, "an object")};
    const QJsonObject record = value.toObject();
    QVector<LintFinding> findings = lintKeys(record, keys, where);
    for (const QString &key : keys) {
        if (record.contains(key) && !record.value(key).isString())
            findings.append(wrongType(at(where, key), "a text"));
    }
    return findings;
}

QVector<LintFinding> lintRecords(const QJsonObject &root, const QString &key,
                                 const QStringList &keys) {
    if (!root.contains(key))
        return {};
    if (!root.value(key).isArray())
        return {wrongType(key, "an array")};
    QVector<LintFinding> findings;
    const QJsonArray records = root.value(key).toArray();
    for (int i = 0; i < records.size(); ++i)
        findings.append(lintRecord(records.at(i), keys, QStringLiteral("%1[%2]").arg(key).arg(i)));
    return findings;
}

QVector<LintFinding> lintSchemaVersion(const QJsonObject &root) {
    const QString key = manifest_keys::schemaVersion;
    const QJsonValue value = root.value(key);
    if (!root.contains(key) || (value.isDouble() && value.toDouble() == 1.0))
        return {};
    if (!value.isDouble()) {
        return {{QStringLiteral("wrong-type"), key,
                 QStringLiteral("must be a number; a text or a bool is signed in another form")}};
    }
    return {{QStringLiteral("schema-version"), key, QStringLiteral("the format's version is 1")}};
}

QVector<LintFinding> lintPublishedAt(const QJsonObject &root) {
    const QString key = manifest_keys::publishedAt;
    const QJsonValue value = root.value(key);
    if (!root.contains(key))
        return {};
    if (!value.isString())
        return {wrongType(key, "a text")};
    if (QDateTime::fromString(value.toString(), Qt::ISODate).isValid())
        return {};
    return {{QStringLiteral("bad-time"), key,
             QStringLiteral("'%1' is no time such as 2026-11-20T06:00:00Z").arg(value.toString())}};
}

QVector<LintFinding> lintPlugins(const QJsonObject &root) {
    QVector<LintFinding> findings;
    const QJsonArray plugins = root.value(manifest_keys::plugins).toArray();
    for (int i = 0; i < plugins.size(); ++i) {
        const QJsonObject plugin = plugins.at(i).toObject();
        const QString where = QStringLiteral("plugins[%1]").arg(i);
        if (plugin.value(manifest_keys::path).toString().trimmed().isEmpty()) {
            findings.append({QStringLiteral("no-path"), where,
                             QStringLiteral("a plug-in without `path` is skipped without a word")});
        }
        const QString least = plugin.value(manifest_keys::minVersion).toString();
        const QString fault = versionFault(least);
        if (!fault.isEmpty())
            findings +=
                {QStringLiteral("bad-version"), at(where, manifest_keys::minVersion), fault};
    }
    return findings;
}

} // namespace

QVector<LintFinding> lintShape(const QJsonObject &root) {
    QVector<LintFinding> findings = lintKeys(root, rootKeys(), QString());
    findings.append(lintSchemaVersion(root) + lintPublishedAt(root));
    const QString signature = manifest_keys::signature;
    if (root.contains(signature) && !root.value(signature).isString())
        findings.append(wrongType(signature, "a text"));
    for (const QString &key : componentKeys()) {
        if (root.contains(key))
            findings.append(lintRecord(root.value(key), componentRecordKeys(), key));
    }
    findings.append(lintRecords(root, manifest_keys::plugins, pluginRecordKeys()));
    findings.append(lintRecords(root, manifest_keys::projects, projectRecordKeys()));
    findings.append(lintPlugins(root));
    if (packageRecords(root).isEmpty()) {
        findings.append({QStringLiteral("nothing-offered"), QString(),
                         QStringLiteral("the manifest names no component and no project")});
    }
    return findings;
}

QStringList unlistedKeys(const QJsonObject &manifest) {
    QStringList places;
    const QVector<LintFinding> findings = lintShape(manifest);
    for (const LintFinding &finding : findings) {
        if (finding.kind == unlistedKey)
            places.append(finding.where);
    }
    return places;
}

} // namespace ctl
