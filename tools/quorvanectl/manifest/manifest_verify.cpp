#include "quorvanectl/manifest/manifest_verify.h"

#include "update/manifest_keys.h"
#include "update/manifest_signature.h"

#include <QCryptographicHash>

namespace ctl {

VerifyReport verifyReport(const QString &manifestText, const QString &keyPath) {
    const ManifestProof proof = proveManifest(manifestText, keyPath);
    VerifyReport report;
    report.ok = proof.result.ok;
    report.message = proof.result.message;
    report.details = proof.attempts;
    if (!proof.manifest)
        return report;
    report.canonicalSha256 = QString::fromLatin1(
        QCryptographicHash::hash(proof.canonical.toUtf8(), QCryptographicHash::Sha256).toHex());
    report.signatureBytes =
        decodeSignature(proof.manifest->value(manifest_keys::signature).toString()).size();
    return report;
}

QJsonObject toJson(const VerifyReport &report) {
    return {{QStringLiteral("ok"), report.ok},
            {QStringLiteral("message"), report.message},
            {QStringLiteral("details"), report.details},
            {QStringLiteral("canonical_sha256"), report.canonicalSha256},
            {QStringLiteral("sig_bytes"), report.signatureBytes}};
}

} // namespace ctl
