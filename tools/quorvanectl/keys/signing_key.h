// The publisher's RSA key pair: made, read, written as PEM, and signed with.
//
// RSASSA-PKCS1-v1_5 with SHA-256 (RFC 8017), as `openssl dgst -sha256 -sign` makes it. The key stays
// inside OpenSSL, which wipes its memory when the key goes.
#pragma once

#include "quorvanectl/keys/passphrase.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>

struct evp_pkey_st;

namespace ctl {

// Fills in the passphrase when an encrypted key asks for it. False ends the reading.
using AskPassphrase = std::function<bool(Passphrase &passphrase, QString *error)>;

class SigningKey {
public:
    // An RSA pair of 3072 bits, its public exponent 65537. Takes about a second.
    [[nodiscard]] static SigningKey make(QString *error = nullptr);
    // A private key in PEM form: PKCS#8, plain or encrypted, or the older RSA form. Anything but an
    // RSA key is refused. `name` stands for the file in the error.
    [[nodiscard]] static SigningKey fromPem(const QByteArray &pem, const QString &name,
                                            const AskPassphrase &ask, QString *error = nullptr);

    [[nodiscard]] bool isValid() const { return key != nullptr; }
    [[nodiscard]] int bits() const;
    // PKCS#8, encrypted with AES-256 if there is a passphrase. Wipe it after use: see wipe().
    [[nodiscard]] QByteArray privatePem(const Passphrase *passphrase) const;
    // SubjectPublicKeyInfo, as update.pub holds it.
    [[nodiscard]] QByteArray publicPem() const;
    // Empty on failure.
    [[nodiscard]] QByteArray sign(const QByteArray &data) const;

private:
    std::shared_ptr<evp_pkey_st> key;
};

// Overwrites the bytes, which must not be shared with another QByteArray.
void wipe(QByteArray *secret);

} // namespace ctl
