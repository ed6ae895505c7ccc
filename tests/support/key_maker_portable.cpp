// Key pairs made by OpenSSL.
#include "support/key_maker.h"

#include <openssl/bn.h>
#include <openssl/core_names.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <algorithm>

namespace support {

struct PrivateKey {
    explicit PrivateKey(EVP_PKEY *key)
        : evp(key, EVP_PKEY_free) {}
    std::unique_ptr<EVP_PKEY, void (*)(EVP_PKEY *)> evp;
};

namespace {

template<auto freeFunction>
struct Free {
    template<typename T>
    void operator()(T *object) const {
        freeFunction(object);
    }
};
using Context = std::unique_ptr<EVP_PKEY_CTX, Free<EVP_PKEY_CTX_free>>;
using DigestContext = std::unique_ptr<EVP_MD_CTX, Free<EVP_MD_CTX_free>>;
using Number = std::unique_ptr<BIGNUM, Free<BN_free>>;
using NumberContext = std::unique_ptr<BN_CTX, Free<BN_CTX_free>>;

const unsigned char *in(const QByteArray &bytes) {
    return reinterpret_cast<const unsigned char *>(bytes.constData());
}

unsigned char *out(QByteArray &bytes) {
    return reinterpret_cast<unsigned char *>(bytes.data());
}

std::shared_ptr<PrivateKey> generate(const char *algorithm, int bits, unsigned long exponent) {
    const Context context(EVP_PKEY_CTX_new_from_name(nullptr, algorithm, nullptr));
    const Number publicExponent(BN_new());
    EVP_PKEY *key = nullptr;
    if (!context || EVP_PKEY_keygen_init(context.get()) != 1 ||
        EVP_PKEY_CTX_set_rsa_keygen_bits(context.get(), bits) != 1 ||
        BN_set_word(publicExponent.get(), exponent) != 1 ||
        EVP_PKEY_CTX_set1_rsa_keygen_pubexp(context.get(), publicExponent.get()) != 1 ||
        EVP_PKEY_keygen(context.get(), &key) != 1)
        qFatal("cannot make a key pair");
    return std::make_shared<PrivateKey>(key);
}

QByteArray bytesOf(const BIGNUM *number, int size) {
    QByteArray bytes(size, '\0');
    if (BN_bn2binpad(number, out(bytes), size) != size)
        qFatal("the number does not fit");
    return bytes;
}

} // namespace

KeyPair KeyPair::rsa(int bits, unsigned long exponent) {
    return KeyPair(generate("RSA", bits, exponent));
}

KeyPair KeyPair::rsaPss(int bits) {
    return KeyPair(generate("RSA-PSS", bits, 65537));
}

KeyPair KeyPair::ellipticCurve() {
    return KeyPair(std::make_shared<PrivateKey>(EVP_EC_gen("P-256")));
}

QByteArray KeyPair::publicDer() const {
    QByteArray der(i2d_PUBKEY(secret->evp.get(), nullptr), '\0');
    unsigned char *at = out(der);
    i2d_PUBKEY(secret->evp.get(), &at);
    return der;
}

QByteArray KeyPair::modulus() const {
    BIGNUM *modulus = nullptr;
    if (EVP_PKEY_get_bn_param(secret->evp.get(), OSSL_PKEY_PARAM_RSA_N, &modulus) != 1)
        qFatal("not an RSA key");
    const Number owner(modulus);
    return bytesOf(modulus, size());
}

int KeyPair::size() const {
    return EVP_PKEY_get_size(secret->evp.get());
}

QByteArray KeyPair::sign(const QByteArray &data) const {
    const DigestContext context(EVP_MD_CTX_new());
    QByteArray signature(size(), '\0');
    size_t length = size_t(signature.size());
    if (EVP_DigestSignInit(context.get(), nullptr, EVP_sha256(), nullptr, secret->evp.get()) != 1 ||
        EVP_DigestSign(context.get(), out(signature), &length, in(data), size_t(data.size())) != 1)
        qFatal("cannot sign");
    signature.truncate(int(length));
    return signature;
}

QByteArray KeyPair::signRawBlock(const QByteArray &block) const {
    const Context context(EVP_PKEY_CTX_new(secret->evp.get(), nullptr));
    QByteArray signature(size(), '\0');
    size_t length = size_t(signature.size());
    if (EVP_PKEY_sign_init(context.get()) != 1 ||
        EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_NO_PADDING) != 1 ||
        EVP_PKEY_sign(context.get(), out(signature), &length, in(block), size_t(block.size())) != 1)
        qFatal("cannot sign the block");
    return signature;
}

QByteArray cubeRootAtLeast(const QByteArray &target, int size) {
    const NumberContext context(BN_CTX_new());
    const Number wanted(BN_bin2bn(in(target), int(target.size()), nullptr));
    const Number root(BN_new());
    const Number square(BN_new());
    const Number cube(BN_new());
    // Bit by bit from the top: the largest root whose cube stays below, then one more.
    BN_zero(root.get());
    for (int bit = BN_num_bits(wanted.get()) / 3 + 1; bit >= 0; --bit) {
        BN_set_bit(root.get(), bit);
        BN_sqr(square.get(), root.get(), context.get());
        BN_mul(cube.get(), square.get(), root.get(), context.get());
        if (BN_cmp(cube.get(), wanted.get()) >= 0)
            BN_clear_bit(root.get(), bit);
    }
    BN_add_word(root.get(), 1);
    return bytesOf(root.get(), size);
}

QByteArray cubeOf(const QByteArray &number, int size) {
    const NumberContext context(BN_CTX_new());
    const Number root(BN_bin2bn(in(number), int(number.size()), nullptr));
    const Number square(BN_new());
    const Number cube(BN_new());
    BN_sqr(square.get(), root.get(), context.get());
    BN_mul(cube.get(), square.get(), root.get(), context.get());
    return bytesOf(cube.get(), size);
}

} // namespace support
