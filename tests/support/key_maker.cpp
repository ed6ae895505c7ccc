#include "support/key_maker.h"

#include <utility>

namespace support {

KeyPair::KeyPair(std::shared_ptr<PrivateKey> key)
    : secret(std::move(key)) {}

QString KeyPair::publicPem() const {
    const QByteArray body = publicDer().toBase64();
    QString pem = QStringLiteral("-----BEGIN PUBLIC KEY-----\n");
    for (int at = 0; at < body.size(); at += 64)
        pem += QString::fromLatin1(body.mid(at, 64)) + QLatin1Char('\n');
    return pem + QStringLiteral("-----END PUBLIC KEY-----\n");
}

} // namespace support
