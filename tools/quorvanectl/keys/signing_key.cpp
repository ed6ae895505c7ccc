#include "quorvanectl/keys/signing_key.h"
#include "update/files/failure.h"
#include "update/openssl_objects_portable.h"

#include <openssl/bio.h>
#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>

#include <algorithm>
#include <cstring>

namespace ctl {
namespace {

constexpr int newKeyBits = 3072;

using Stream = std::unique_ptr<BIO, OpenSslFree<BIO_vfree>>;
using DigestContext = std::unique_ptr<EVP_MD_CTX, OpenSslFree<EVP_MD_CTX_free>>;

// A stream's buffer is wiped when a secret memory stream goes.
Stream secretStream() {
    return Stream(BIO_new(BIO_s_secmem()));
}

QByteArray contentOf(BIO *stream) {
    char *bytes = nullptr;
    const long size = BIO_get_mem_data(stream, &bytes);
    return size > 0 ? QByteArray(bytes, int(size)) : QByteArray();
}

struct Question {
    const AskPassphrase &ask;
    bool asked = false;
    QString error;
};

int answerQuestion(char *buffer, int size, int, void *data) {
    auto *const question = static_cast<Question *>(data);
    // OpenSSL tries one decoder after the other, and each would ask: who gave none is not asked again.
    if (!question->error.isEmpty())
        return -1;
    question->asked = true;
    Passphrase passphrase;
    if (!question->ask(passphrase, &question->error) || passphrase.size() > size)
        return -1;
    std::memcpy(buffer, passphrase.data(), size_t(passphrase.size()));
    return passphrase.size();
}

QString whyNotRead(const Question &question) {
    if (!question.error.isEmpty())
        return question.error;
    return question.asked ? QStringLiteral("the passphrase is wrong, or the key is damaged")
                          : QStringLiteral("it holds no private key in PEM form");
}

} // namespace

SigningKey SigningKey::make(QString *error) {
    SigningKey made;
    made.key.reset(EVP_RSA_gen(newKeyBits), EVP_PKEY_free);
    if (!made.isValid())
        fail(QStringLiteral("OpenSSL cannot make a key pair"), error);
    ERR_clear_error();
    return made;
}

SigningKey SigningKey::fromPem(const QByteArray &pem, const QString &name, const AskPassphrase &ask,
                               QString *error) {
    const Stream stream(BIO_new_mem_buf(pem.constData(), pem.size()));
    Question question{ask, false, QString()};
    SigningKey read;
    read.key.reset(PEM_read_bio_PrivateKey(stream.get(), nullptr, answerQuestion, &question),
                   EVP_PKEY_free);
    ERR_clear_error();
    if (!read.isValid()) {
        failAbout(name, whyNotRead(question), error);
    } else if (!isRsa(read.key.get())) {
        failAbout(name, QStringLiteral("it is no RSA key"), error);
        read.key.reset();
    }
    return read;
}

int SigningKey::bits() const {
    return EVP_PKEY_get_bits(key.get());
}

QByteArray SigningKey::privatePem(const Passphrase *passphrase) const {
    const Stream stream = secretStream();
    const bool encrypted = passphrase != nullptr;
    const int written = PEM_write_bio_PKCS8PrivateKey(
        stream.get(), key.get(), encrypted ? EVP_aes_256_cbc() : nullptr,
        encrypted ? passphrase->data() : nullptr, encrypted ? passphrase->size() : 0, nullptr,
        nullptr);
    return written == 1 ? contentOf(stream.get()) : QByteArray();
}

QByteArray SigningKey::publicPem() const {
    const Stream stream(BIO_new(BIO_s_mem()));
    return PEM_write_bio_PUBKEY(stream.get(), key.get()) == 1 ? contentOf(stream.get())
                                                              : QByteArray();
}

QByteArray SigningKey::sign(const QByteArray &data) const {
    const DigestContext context(EVP_MD_CTX_new());
    QByteArray signature(EVP_PKEY_get_size(key.get()), '\0');
    auto length = size_t(signature.size());
    // PKCS#1 v1.5 is what an RSA key signs with unless told otherwise.
    const bool done =
        context &&
        EVP_DigestSignInit(context.get(), nullptr, EVP_sha256(), nullptr, key.get()) == 1 &&
        EVP_DigestSign(context.get(), reinterpret_cast<unsigned char *>(signature.data()), &length,
                       reinterpret_cast<const unsigned char *>(data.constData()),
                       size_t(data.size())) == 1;
    ERR_clear_error();
    if (!done)
        return QByteArray();
    signature.truncate(int(length));
    return signature;
}

void wipe(QByteArray *secret) {
    OPENSSL_cleanse(secret->data(), size_t(secret->size()));
}

} // namespace ctl
