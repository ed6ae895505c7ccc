// The attempts at verifying an RSA signature (PKCS#1 v1.5, SHA-256), and their report.
//
// Free of state, for any thread. Keys are SubjectPublicKeyInfo in DER form.
#pragma once

#include "update/rsa_verifier.h"

#include <QByteArray>
#include <QString>

// Whether `signature` is the key's signature over `data`, its bytes in either order. `details`, if
// given, receives the attempts' outcome as text.
[[nodiscard]] bool verifyRsaSha256(const QByteArray &derKey, const QByteArray &data,
                                   const QByteArray &signature, QString *details = nullptr);

// Whether the bytes are an RSA public key that the attempts can begin with.
[[nodiscard]] bool isRsaKey(const QByteArray &derKey);

// The four attempts of one verifier, in fixed order: modern direct, modern reversed, legacy direct,
// legacy reversed. The first to pass ends it with true. `details`, if given, receives the outcome as
// text: which attempt passed, or what each step answered.
[[nodiscard]] bool verifyRsaSha256With(RsaVerifier &verifier, const QByteArray &derKey,
                                       const QByteArray &data, const QByteArray &signature,
                                       QString *details = nullptr);
