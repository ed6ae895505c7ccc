#include "quorvanectl/manifest/public_key.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/files/fingerprint.h"
#include "update/canonical_manifest.h"
#include "update/manifest_keys.h"
#include "update/manifest_signature.h"
#include "update/rsa_attempts.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace ctl {

bool isPublicKey(const QString &path, QString *error) {
    if (path.isEmpty()) {
        *error = QStringLiteral("no key given; --key names the file");
        return false;
    }
    const QString pem = readText(path, error);
    if (pem.isNull())
        return false;
    if (isRsaKey(decodePemBody(pem))) // a private key is PEM too
        return true;
    *error = QStringLiteral("%1: holds no RSA public key in PEM form").arg(path);
    return false;
}

QString fingerprintIn(const QString &path) {
    QString error;
    return fingerprintOf(decodePemBody(readText(path, &error)));
}

bool verifiesWith(const QString &manifestText, const QByteArray &publicPem) {
    const QJsonObject root = QJsonDocument::fromJson(manifestText.toUtf8()).object();
    const QByteArray signature = decodeSignature(root.value(manifest_keys::signature).toString());
    return !signature.isEmpty() &&
           verifyRsaSha256(decodePemBody(QString::fromLatin1(publicPem)),
                           canonicalManifestText(manifestText).toUtf8(), signature);
}

} // namespace ctl
