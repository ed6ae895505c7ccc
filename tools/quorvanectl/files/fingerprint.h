// The fingerprint of a key, for two people to compare.
#pragma once

#include <QByteArray>
#include <QCryptographicHash>
#include <QString>

namespace ctl {

// SHA-256 of a public key in DER form, as `openssl pkey -pubin -in update.pub -outform DER | openssl sha256`
// says it.
[[nodiscard]] inline QString fingerprintOf(const QByteArray &der) {
    return QString::fromLatin1(QCryptographicHash::hash(der, QCryptographicHash::Sha256).toHex());
}

} // namespace ctl
