// A publisher's desk: a manifest of one installer, unsigned, signed and laid out for a stick, the key
// pair it is signed with, and the public key of another publisher.
#pragma once

#include "desk.h"

#include "publisher.h"
#include "quorvanectl/manifest/manifest_attach.h"
#include "small_project.h"
#include "support/key_maker.h"
#include "update/manifest_signature.h"

#include <QCryptographicHash>

namespace support {

// What is signed of the manifest.
const QByteArray signedBytes = R"({"schemaVersion":1,"runtime":{"setupUrl":"setup-1.2.0.exe"}})";

[[nodiscard]] inline QString signedSum() {
    return QCryptographicHash::hash(signedBytes, QCryptographicHash::Sha256).toHex();
}

// Why a signature that was tried in all ways is not taken.
const QString attempts = "BCryptVerifySignature direct=0xFFFFFFFFC000A000 "
                         "reversed=0xFFFFFFFFC000A000; CryptVerifySignature direct=2148073478 "
                         "reversed=2148073478";

// The same as a verification says it. `bytes` is the signature's length.
[[nodiscard]] inline QString verificationFailed(const QString &key, const QString &sum,
                                                int bytes = 384) {
    return QString("RSA signature verification failed (%1), key=%2, canonical_sha256=%3, "
                   "sig_bytes=%4")
        .arg(attempts, key, sum, QString::number(bytes));
}

[[nodiscard]] inline FileTree publishersFiles() {
    static const QByteArray signature = publisher::sign(signedBytes);
    static const KeyPair other = KeyPair::rsa(2048);
    const QByteArray manifest =
        R"({"schemaVersion": 1, "runtime": {"setupUrl": "setup-1.2.0.exe", "version": "1.2.0"}})";
    const QByteArray complete = ctl::withSignature(manifest, signature).toUtf8();
    return {{"m.json", manifest},
            {"m.sig", signature},
            {"signed.json", complete},
            {"private.pem", publisher::privatePem()},
            {"update.pub", publisher::publicPem()},
            {"other.pub", other.publicPem().toUtf8()},
            {"site/manifest.json", complete},
            {"site/setup-1.2.0.exe", "an installer"},
            {"out/", ""},
            {"stick/", ""}};
}

// The private key can be read by its owner alone.
class PublisherDesk : public Desk {
public:
    explicit PublisherDesk(const QString &command)
        : Desk(command, publishersFiles()) {
        if (!QFile::setPermissions(path("private.pem"), QFile::ReadOwner | QFile::WriteOwner))
            qFatal("the private key stays open to others");
    }
};

} // namespace support
