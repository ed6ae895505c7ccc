// RSA and other key pairs made while a test runs: no private key is ever kept on disk or committed.
#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

namespace support {

// The pair as the platform's library holds it: OpenSSL, and libgcrypt where that is not at hand.
struct PrivateKey;

// A key pair in memory. Copies share it.
class KeyPair {
public:
    // An RSA pair of that many bits; the public exponent is 65537 unless a small one is asked for.
    [[nodiscard]] static KeyPair rsa(int bits, unsigned long exponent = 65537);
    // Pairs of another kind, for keys that must be refused.
    [[nodiscard]] static KeyPair ellipticCurve();
    [[nodiscard]] static KeyPair rsaPss(int bits);

    // SubjectPublicKeyInfo.
    [[nodiscard]] QByteArray publicDer() const;
    [[nodiscard]] QString publicPem() const;
    // The modulus, big-endian, and its length in bytes.
    [[nodiscard]] QByteArray modulus() const;
    [[nodiscard]] int size() const;

    // RSASSA-PKCS1-v1_5 with SHA-256, big-endian, as every signing tool writes it.
    [[nodiscard]] QByteArray sign(const QByteArray &data) const;
    // The private operation on a block as it stands (as long as the modulus): what a forger with
    // the key could make of a malformed block.
    [[nodiscard]] QByteArray signRawBlock(const QByteArray &block) const;

private:
    explicit KeyPair(std::shared_ptr<PrivateKey> key);
    std::shared_ptr<PrivateKey> secret;
};

// The smallest number whose cube is at least `target`, big-endian and `size` bytes long: the forged
// signature of a key with exponent 3 whose verifier ignores what follows the hash.
[[nodiscard]] QByteArray cubeRootAtLeast(const QByteArray &target, int size);
// The cube of a number, big-endian and `size` bytes long: what such a verifier would look at.
[[nodiscard]] QByteArray cubeOf(const QByteArray &number, int size);

} // namespace support
