// Key pairs made by libgcrypt, which can be had for Windows programs where OpenSSL cannot.
#include "support/key_maker.h"

#include <QCryptographicHash>

#include <gcrypt.h>

namespace support {
namespace {

template<auto freeFunction>
struct Free {
    template<typename T>
    void operator()(T *object) const {
        freeFunction(object);
    }
};
using Expression = std::unique_ptr<gcry_sexp, Free<gcry_sexp_release>>;
using Number = std::unique_ptr<gcry_mpi, Free<gcry_mpi_release>>;

Number zero() {
    return Number(gcry_mpi_new(0));
}

Number numberOf(const QByteArray &bytes) {
    gcry_mpi_t number = nullptr;
    if (gcry_mpi_scan(&number, GCRYMPI_FMT_USG, bytes.constData(), bytes.size(), nullptr) != 0)
        qFatal("cannot read the number");
    return Number(number);
}

// Big-endian and `size` bytes long.
QByteArray bytesOf(const Number &number, int size) {
    QByteArray bytes(size, '\0');
    std::size_t length = 0;
    if (gcry_mpi_print(GCRYMPI_FMT_USG, reinterpret_cast<unsigned char *>(bytes.data()),
                       bytes.size(), &length, number.get()) != 0)
        qFatal("the number does not fit");
    bytes.truncate(int(length));
    return QByteArray(size - bytes.size(), '\0') + bytes;
}

// --- DER

QByteArray element(int tag, const QByteArray &content) {
    const int size = content.size();
    QByteArray head(1, char(tag));
    if (size > 0xFF)
        head += QByteArray(1, '\x82') + char(size >> 8);
    else if (size > 0x7F)
        head += '\x81';
    return head + char(size) + content;
}

QByteArray integer(const Number &number) {
    const int bits = int(gcry_mpi_get_nbits(number.get()));
    return element(0x02, bytesOf(number, bits / 8 + 1)); // one bit more: its sign
}

// SubjectPublicKeyInfo.
QByteArray publicKeyInfo(const QByteArray &algorithm, const QByteArray &key) {
    return element(0x30, element(0x30, algorithm) + element(0x03, QByteArray(1, '\0') + key));
}

const QByteArray rsaName = QByteArray::fromHex("06092a864886f70d010101"
                                               "0500");
const QByteArray rsaPssName = QByteArray::fromHex("06092a864886f70d01010a");
const QByteArray p256Name = QByteArray::fromHex("06072a8648ce3d020106082a8648ce3d030107");
// DigestInfo of RFC 8017, section 9.2, note 1.
const QByteArray sha256Header = QByteArray::fromHex("3031300d060960864801650304020105000420");

// The wish may have places for two numbers, as "%d".
Expression generate(const char *wish, int first = 0, int second = 0) {
    gcry_check_version(nullptr);
    gcry_control(GCRYCTL_ENABLE_QUICK_RANDOM, 0); // for tests
    gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
    gcry_sexp_t parameters = nullptr;
    gcry_sexp_t pair = nullptr;
    if (gcry_sexp_build(&parameters, nullptr, wish, first, second) != 0 ||
        gcry_pk_genkey(&pair, parameters) != 0)
        qFatal("cannot make a key pair");
    gcry_sexp_release(parameters);
    return Expression(pair);
}

Number part(const Expression &pair, const char *name) {
    const Expression token(gcry_sexp_find_token(pair.get(), name, 0));
    if (!token)
        qFatal("the key pair has no %s", name);
    return Number(gcry_sexp_nth_mpi(token.get(), 1, GCRYMPI_FMT_USG));
}

} // namespace

struct PrivateKey {
    QByteArray publicDer;
    Number modulus = zero();
    Number privateExponent = zero();
};

namespace {

std::shared_ptr<PrivateKey> rsaPair(int bits, unsigned long exponent, const QByteArray &algorithm) {
    const Expression pair =
        generate("(genkey (rsa (nbits %d) (rsa-use-e %d)))", bits, int(exponent));
    auto key = std::make_shared<PrivateKey>();
    key->modulus = part(pair, "n");
    key->privateExponent = part(pair, "d");
    key->publicDer =
        publicKeyInfo(algorithm, element(0x30, integer(key->modulus) + integer(part(pair, "e"))));
    return key;
}

} // namespace

KeyPair KeyPair::rsa(int bits, unsigned long exponent) {
    return KeyPair(rsaPair(bits, exponent, rsaName));
}

KeyPair KeyPair::rsaPss(int bits) {
    return KeyPair(rsaPair(bits, 65537, rsaPssName));
}

KeyPair KeyPair::ellipticCurve() {
    const Expression pair = generate("(genkey (ecc (curve \"NIST P-256\")))");
    auto key = std::make_shared<PrivateKey>();
    key->publicDer = publicKeyInfo(p256Name, bytesOf(part(pair, "q"), 65));
    return KeyPair(key);
}

QByteArray KeyPair::publicDer() const {
    return secret->publicDer;
}

QByteArray KeyPair::modulus() const {
    return bytesOf(secret->modulus, size());
}

int KeyPair::size() const {
    return int(gcry_mpi_get_nbits(secret->modulus.get()) + 7) / 8;
}

QByteArray KeyPair::sign(const QByteArray &data) const {
    const QByteArray info =
        sha256Header + QCryptographicHash::hash(data, QCryptographicHash::Sha256);
    return signRawBlock(QByteArray::fromHex("0001") + QByteArray(size() - 3 - info.size(), '\xFF') +
                        QByteArray(1, '\0') + info);
}

QByteArray KeyPair::signRawBlock(const QByteArray &block) const {
    const Number signature = zero();
    gcry_mpi_powm(signature.get(), numberOf(block).get(), secret->privateExponent.get(),
                  secret->modulus.get());
    return bytesOf(signature, size());
}

QByteArray cubeRootAtLeast(const QByteArray &target, int size) {
    const Number wanted = numberOf(target);
    const Number root = zero();
    const Number cube = zero();
    // Bit by bit from the top: the largest root whose cube stays below, then one more.
    for (int bit = int(gcry_mpi_get_nbits(wanted.get())) / 3 + 1; bit >= 0; --bit) {
        gcry_mpi_set_bit(root.get(), unsigned(bit));
        gcry_mpi_mul(cube.get(), root.get(), root.get());
        gcry_mpi_mul(cube.get(), cube.get(), root.get());
        if (gcry_mpi_cmp(cube.get(), wanted.get()) >= 0)
            gcry_mpi_clear_bit(root.get(), unsigned(bit));
    }
    gcry_mpi_add_ui(root.get(), root.get(), 1);
    return bytesOf(root, size);
}

QByteArray cubeOf(const QByteArray &number, int size) {
    const Number root = numberOf(number);
    const Number cube = zero();
    gcry_mpi_mul(cube.get(), root.get(), root.get());
    gcry_mpi_mul(cube.get(), cube.get(), root.get());
    return bytesOf(cube, size);
}

} // namespace support
