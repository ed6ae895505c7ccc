#include "quorvanectl/manifest/manifest_verify.h"

#include "update/canonical_manifest.h"
#include "update/files/text_file.h"
#include "update/manifest_keys.h"
#include "update/manifest_signature.h"
#include "update/rsa_attempts.h"

#include <QCryptographicHash>
#include <QJsonDocument>

namespace ctl {
namespace {

// The outcome of the attempts, which the launcher's message holds only after a failure.
QString attemptDetails(const QByteArray &canonical, const QByteArray &signature,
                       const QString &keyPath) {
    const QByteArray key = decodePemBody(readTextFile(keyPath));
    if (key.isEmpty() || signature.isEmpty())
        return QString();
    QString details;
    (void)verifyRsaSha256(key, canonical, signature, &details); // the verdict is the launcher's
    return details;
}

} // namespace

VerifyReport verifyReport(const QString &manifestText, const QString &keyPath) {
    const VerifyResult result = verifyManifest(manifestText, keyPath);
    VerifyReport report;
    report.ok = result.ok;
    report.message = result.message;
    const QString canonical = canonicalManifestText(manifestText);
    if (canonical.isNull())
        return report;
    const QByteArray signedBytes = canonical.toUtf8();
    report.canonicalSha256 = QString::fromLatin1(
        QCryptographicHash::hash(signedBytes, QCryptographicHash::Sha256).toHex());
    const QJsonObject root = QJsonDocument::fromJson(manifestText.toUtf8()).object();
    const QByteArray signature = decodeSignature(root.value(manifest_keys::signature).toString());
    report.signatureBytes = signature.size();
    report.details = attemptDetails(signedBytes, signature, keyPath);
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
