#include "update/manifest_signature.h"

#include "frame/app_paths.h"
#include "update/canonical_manifest.h"
#include "update/files/text_file.h"
#include "update/manifest_keys.h"
#include "update/rsa_attempts.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <QRegularExpression>

namespace {

VerifyResult refused(const QString &message) {
    return {false, message};
}

VerifyResult refused(const char *message) {
    return {false, QString::fromLatin1(message)};
}

// The checks from the signature on, in their order. `canonical` is empty if the text held no
// manifest, which is told after a missing signature and a missing key. `attempts` may be null.
VerifyResult verifyCanonical(const QString &canonical, const QString &signatureBase64,
                             const QString &keyPath, QString *attempts) {
    if (signatureBase64.trimmed().isEmpty())
        return refused("signature is empty");
    const QString path = keyPath.isEmpty() ? AppPaths::updatePublicKeyPath() : keyPath;
    if (!QFileInfo::exists(path))
        return refused(QStringLiteral("update public key not found: %1").arg(path));
    if (canonical.isEmpty())
        return refused("manifest JSON is invalid");

    QString fileError;
    const QString pemText = readTextFile(path, &fileError);
    if (pemText.isEmpty())
        return refused(QStringLiteral("unable to read update public key: %1").arg(fileError));
    const QByteArray key = decodePemBody(pemText);
    if (key.isEmpty())
        return refused("update public key PEM is invalid");
    // A text of which something decodes goes on.
    const QByteArray signature = decodeSignature(signatureBase64);
    if (signature.isEmpty())
        return refused("signature base64 is invalid");

    const QByteArray data = canonical.toUtf8();
    QString details;
    const bool verified = verifyRsaSha256(key, data, signature, &details);
    if (attempts != nullptr)
        *attempts = details;
    if (verified)
        return {true, QStringLiteral("signature verified")};
    const QByteArray hash = QCryptographicHash::hash(data, QCryptographicHash::Sha256);
    return refused(QStringLiteral("RSA signature verification failed (%1), key=%2, "
                                  "canonical_sha256=%3, sig_bytes=%4")
                       .arg(details, path, QString::fromLatin1(hash.toHex()),
                            QString::number(signature.size())));
}

} // namespace

ManifestProof proveManifest(const QString &manifestText, const QString &keyPath) {
    ManifestProof proof;
    proof.manifest = parseManifest(manifestText);
    if (!proof.manifest) {
        proof.result = refused("manifest JSON is invalid");
        return proof;
    }
    const QString signature = proof.manifest->value(manifest_keys::signature).toString();
    proof.canonical = canonicalManifest(*proof.manifest);
    proof.result = verifyCanonical(proof.canonical, signature, keyPath, &proof.attempts);
    return proof;
}

VerifyResult verifyManifest(const QString &manifestText, const QString &keyPath) {
    return proveManifest(manifestText, keyPath).result;
}

VerifyResult verifyManifestSignature(const QString &manifestText, const QString &signatureBase64,
                                     const QString &keyPath) {
    if (manifestText.trimmed().isEmpty())
        return refused("manifest JSON is empty");
    return verifyCanonical(canonicalManifestText(manifestText), signatureBase64, keyPath, nullptr);
}

QByteArray decodeSignature(const QString &base64) {
    return QByteArray::fromBase64(base64.trimmed().toLatin1());
}

QByteArray decodePemBody(const QString &pemText) {
    // The body ends at the first character outside its class, and the markers begin with one such,
    // so nothing is gained by giving characters back: possessive repeats keep the match linear.
    static const QRegularExpression block(
        QStringLiteral("-----BEGIN [^-]++-----([A-Za-z0-9+/=\\s]++)-----END [^-]++-----"),
        QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression blank(QStringLiteral("\\s"));
    const QRegularExpressionMatch match = block.match(pemText);
    if (!match.hasMatch())
        return QByteArray();
    return QByteArray::fromBase64(match.captured(1).remove(blank).toLatin1());
}

VerifyResult verifyFileSha256(const QString &path, const QString &expectedHex) {
    return verifyFileSha256(path, expectedHex, path);
}

VerifyResult verifyFileSha256(const QString &path, const QString &expectedHex,
                              const QString &toldPath) {
    const QString expected = expectedHex.trimmed();
    if (expected.isEmpty())
        return refused("expected SHA256 is empty");
    QString error;
    const QString actual = fileSha256Hex(path, &error);
    if (actual.isEmpty()) {
        return refused(error.isEmpty()
                           ? QStringLiteral("unable to compute SHA256 for %1").arg(toldPath)
                           : error);
    }
    if (actual.compare(expected, Qt::CaseInsensitive) != 0) {
        return refused(QStringLiteral("SHA256 mismatch for %1 (expected %2, got %3)")
                           .arg(toldPath, expected, actual));
    }
    return {true, QStringLiteral("SHA256 verified")};
}
