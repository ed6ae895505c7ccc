// Versions: the launcher reads the first three or four numbers that it finds, and treats what it
// cannot read as nothing or as zero.
#include "quorvanectl/manifest/manifest_lint_rules.h"

#include "quorvanectl/package/version_fault.h"
#include "update/files/version_text.h"
#include "update/manifest_keys.h"

#include <QDateTime>
#include <QHash>
#include <QRegularExpression>

namespace ctl {
namespace {

QString text(const PackageRecord &package, QLatin1String key) {
    return package.record.value(key).toString().trimmed();
}

QString at(const PackageRecord &package, QLatin1String key) {
    return QStringLiteral("%1.%2").arg(package.where, key);
}

bool isTwoNumbers(const QString &version) {
    static const QRegularExpression two(QStringLiteral("^\\d+\\.\\d+$"));
    return two.match(normalizeVersion(version)).hasMatch();
}

QVector<LintFinding> lintForm(const PackageRecord &package, QLatin1String key) {
    const QString version = text(package, key);
    if (isTwoNumbers(version)) {
        return {
            {QStringLiteral("two-number-version"), at(package, key),
             QStringLiteral("'%1' has two numbers; only three or four are recognised everywhere")
                 .arg(version)}};
    }
    const QString fault = versionFault(version);
    if (!fault.isEmpty())
        return {{QStringLiteral("bad-version"), at(package, key), fault}};
    return {};
}

// What is no version at all has a finding already.
bool isZero(const QString &version) {
    return !version.isEmpty() && versionFault(version).isEmpty() && isPlaceholderVersion(version);
}

// Of the launcher's two places for a component's version this one is signed.
QVector<LintFinding> lintVersionInAddress(const PackageRecord &package) {
    const QString named = extractVersion(package.url());
    const QString inFileName = extractVersion(packageFileName(package.url()));
    const QString fault = versionFault(named);
    if (!fault.isEmpty())
        return {{QStringLiteral("bad-version"), at(package, manifest_keys::setupUrl), fault}};
    if (inFileName.isEmpty() || compareVersions(inFileName, named) == 0)
        return {};
    return {{QStringLiteral("version-disagrees"), at(package, manifest_keys::setupUrl),
             QStringLiteral("the first version in the address counts, %1, and not the installer's "
                            "%2")
                 .arg(named, inFileName)}};
}

QVector<LintFinding> lintComponent(const PackageRecord &package) {
    const QString named = extractVersion(package.url());
    const QString stated = extractVersion(text(package, manifest_keys::version));
    if (named.isEmpty() && stated.isEmpty()) {
        return {
            {QStringLiteral("no-version"), package.where,
             QStringLiteral("neither `version` nor the installer's name holds a version: nobody "
                            "is offered it")}};
    }
    if (named.isEmpty() && !package.url().isEmpty()) {
        return {{QStringLiteral("unsigned-version"), at(package, manifest_keys::setupUrl),
                 QStringLiteral("the version stands only in `version`, which no signature covers; "
                                "put it into the installer's name")}};
    }
    const QVector<LintFinding> findings = lintVersionInAddress(package);
    if (!findings.isEmpty())
        return findings;
    if (!stated.isEmpty() && !named.isEmpty() && compareVersions(named, stated) != 0) {
        return {{QStringLiteral("version-disagrees"), at(package, manifest_keys::version),
                 QStringLiteral("says %1, the installer's name says %2").arg(stated, named)}};
    }
    return {};
}

QVector<LintFinding> lintProject(const PackageRecord &package) {
    if (!text(package, manifest_keys::version).isEmpty())
        return {};
    return {{QStringLiteral("no-version"), package.where,
             QStringLiteral("a project without `version` is offered again at every start")}};
}

LintFinding step(const QString &kind, const PackageRecord &package, const QString &message) {
    return {kind, package.where, message};
}

bool isSamePackage(const PackageRecord &a, const PackageRecord &b) {
    return a.url() == b.url() && a.hash().compare(b.hash(), Qt::CaseInsensitive) == 0;
}

QVector<LintFinding> lintStep(const PackageRecord &now, const PackageRecord &before) {
    if (isSamePackage(now, before))
        return {}; // carried over as it was
    QVector<LintFinding> findings;
    if (compareVersions(now.version(), before.version()) <= 0) {
        findings.append(step(QStringLiteral("version-not-above-previous"), now,
                             QStringLiteral("version %1 is not above %2 of the previous manifest")
                                 .arg(now.version(), before.version())));
    }
    if (!now.url().isEmpty() && now.url() == before.url()) {
        findings.append(
            step(QStringLiteral("address-used-again"), now,
                 QStringLiteral("another package under the address of the previous one: %1")
                     .arg(now.url())));
    }
    return findings;
}

QDateTime publishedAt(const QJsonObject &root) {
    return QDateTime::fromString(root.value(manifest_keys::publishedAt).toString(), Qt::ISODate);
}

} // namespace

QVector<LintFinding> lintVersions(const PackageRecord &package) {
    QVector<LintFinding> findings = lintForm(package, manifest_keys::version);
    findings.append(package.isProject ? lintProject(package) : lintComponent(package));
    if (isZero(package.version())) {
        findings.append({QStringLiteral("no-version"), package.where,
                         QStringLiteral("%1 is above no version").arg(package.version())});
    }
    if (package.isProject)
        return findings;
    findings.append(lintForm(package, manifest_keys::minVersion));
    const QString least = text(package, manifest_keys::minVersion);
    if (!least.isEmpty() && !package.version().isEmpty() &&
        compareVersions(least, package.version()) >= 0) {
        findings.append({QStringLiteral("min-version-too-high"),
                         at(package, manifest_keys::minVersion),
                         QStringLiteral("%1 is not below the version %2 itself: nobody can update")
                             .arg(least, package.version())});
    }
    return findings;
}

QVector<LintFinding> lintSuccession(const QJsonObject &root, const QJsonObject &previous) {
    QVector<LintFinding> findings;
    QHash<QString, PackageRecord> now;
    const QVector<PackageRecord> records = packageRecords(root);
    for (const PackageRecord &package : records)
        now.insert(package.identity(), package);
    const QVector<PackageRecord> earlier = packageRecords(previous);
    for (const PackageRecord &before : earlier) {
        if (now.contains(before.identity())) {
            findings.append(lintStep(now.value(before.identity()), before));
        } else {
            findings.append({QStringLiteral("no-longer-offered"), before.where,
                             QStringLiteral("stood in the previous manifest (%1) and is gone")
                                 .arg(packageFileName(before.url())),
                             1}); // meant, as often as not
        }
    }
    if (publishedAt(previous).isValid() && publishedAt(root) <= publishedAt(previous)) {
        findings.append({QStringLiteral("not-later"), manifest_keys::publishedAt,
                         QStringLiteral("is not later than that of the previous manifest")});
    }
    return findings;
}

} // namespace ctl
