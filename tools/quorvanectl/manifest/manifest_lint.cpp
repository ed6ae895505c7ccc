#include "quorvanectl/manifest/manifest_lint.h"

#include "quorvanectl/files/repeated_keys.h"
#include "quorvanectl/manifest/manifest_lint_rules.h"

#include <QJsonDocument>

#include <algorithm>

namespace ctl {
namespace {

QJsonObject rootOf(const QByteArray &bytes) {
    return QJsonDocument::fromJson(QString::fromUtf8(bytes).toUtf8()).object();
}

// A stick's manifest may be GBK, one from a server is read as UTF-8 whatever it is.
QVector<LintFinding> lintEncoding(const QByteArray &bytes) {
    if (!QString::fromUtf8(bytes).contains(QChar::ReplacementCharacter))
        return {};
    return {
        {QStringLiteral("not-utf8"), QString(),
         QStringLiteral("the file is not UTF-8, and a server's manifest is read as nothing else")}};
}

QVector<LintFinding> lintRepeatedKeys(const QByteArray &bytes) {
    QVector<LintFinding> findings;
    for (const RepeatedKey &key : repeatedKeys(QString::fromUtf8(bytes))) {
        findings.append(
            {QStringLiteral("repeated-key"), key.where,
             QStringLiteral("line %1, column %2: stands already in line %3, column %4; the "
                            "launcher takes the last, other readers the first")
                 .arg(QString::number(key.again.line), QString::number(key.again.column),
                      QString::number(key.first.line), QString::number(key.first.column))});
    }
    return findings;
}

} // namespace

QVector<LintFinding> lintManifest(const LintSubject &subject) {
    const QJsonObject root = rootOf(subject.manifest);
    const QVector<PackageRecord> packages = packageRecords(root);
    QVector<LintFinding> findings = lintEncoding(subject.manifest);
    findings.append(lintRepeatedKeys(subject.manifest) + lintShape(root));
    for (const PackageRecord &package : packages) {
        findings.append(lintVersions(package) + lintAddress(package));
        findings.append(lintPackageFile(package, subject));
    }
    findings.append(lintTogether(packages));
    if (!subject.previous.isNull())
        findings.append(lintSuccession(root, rootOf(subject.previous)));
    return findings;
}

bool hasErrors(const QVector<LintFinding> &findings) {
    return std::any_of(findings.begin(), findings.end(),
                       [](const LintFinding &finding) { return finding.severity == 0; });
}

QString lintLine(const LintFinding &finding) {
    const QString where =
        finding.where.isEmpty() ? QString() : finding.where + QStringLiteral(": ");
    return QStringLiteral("%1%2 [%3]").arg(where, finding.message, finding.kind);
}

} // namespace ctl
