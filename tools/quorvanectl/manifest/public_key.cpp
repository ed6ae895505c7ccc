#include "quorvanectl/manifest/public_key.h"
#include "quorvanectl/files/file_access.h"
#include "update/manifest_signature.h"

namespace ctl {

bool isPublicKey(const QString &path, QString *error) {
    if (path.isEmpty()) {
        *error = QStringLiteral("no key given; --key names the file");
        return false;
    }
    const QString pem = readText(path, error);
    if (pem.isNull())
        return false;
    // A private key is PEM too: only a try tells.
    QString attempts;
    (void)verifyRsaSha256(decodePemBody(pem), QByteArray(), QByteArray(smallestSignature, '\0'),
                          &attempts);
    if (attempts.startsWith(QLatin1String("BCryptVerifySignature")))
        return true;
    *error = QStringLiteral("%1: holds no RSA public key in PEM form").arg(path);
    return false;
}

} // namespace ctl
