#include "quorvanectl/manifest/public_key.h"
#include "quorvanectl/files/file_access.h"
#include "update/manifest_signature.h"
#include "update/rsa_attempts.h"

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

} // namespace ctl
