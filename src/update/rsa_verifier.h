// The platform's two ways of verifying an RSA signature (PKCS#1 v1.5, SHA-256), step by step.
//
// The order of the attempts and their report stand once, above this header, in rsa_attempts.h; a
// platform only carries out the single steps. Windows has CNG and the older CryptoAPI; elsewhere
// OpenSSL plays both and reports the numbers that Windows would, so that support reads one
// language.
#pragma once

#include <QByteArray>

#include <memory>

// The outcome of one step: `error` is the platform's error number and counts only if not `ok`.
struct RsaStep {
    bool ok = false;
    quint32 error = 0;
};

// One verifier serves one verification on one thread. What a step acquires lives until the verifier
// is destroyed.
class RsaVerifier {
public:
    RsaVerifier() = default;
    RsaVerifier(const RsaVerifier &) = delete;
    RsaVerifier &operator=(const RsaVerifier &) = delete;
    virtual ~RsaVerifier() = default;

    // The modern interface, in calling order. The key is a SubjectPublicKeyInfo in DER form.
    [[nodiscard]] virtual RsaStep decodeKey(const QByteArray &derKey) = 0;
    [[nodiscard]] virtual RsaStep importKey() = 0;
    // Takes the signature as a big-endian number. 0 for a valid signature, else a status.
    [[nodiscard]] virtual qint32 verifyHash(const QByteArray &sha256,
                                            const QByteArray &signature) = 0;

    // The legacy interface, in calling order. It takes the signature as a little-endian number.
    [[nodiscard]] virtual RsaStep acquireLegacyContext() = 0;
    [[nodiscard]] virtual RsaStep decodeLegacyKey(const QByteArray &derKey) = 0;
    [[nodiscard]] virtual RsaStep importLegacyKey() = 0;
    [[nodiscard]] virtual RsaStep verifyLegacy(const QByteArray &data,
                                               const QByteArray &signature) = 0;
};

// The verifier of the platform that this program was built for.
[[nodiscard]] std::unique_ptr<RsaVerifier> platformRsaVerifier();
