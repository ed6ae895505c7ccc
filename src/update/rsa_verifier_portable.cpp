// OpenSSL plays both interfaces of Windows and reports Windows' numbers.
#include "update/openssl_objects_portable.h"
#include "update/rsa_verifier.h"

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <QCryptographicHash>

#include <algorithm>

namespace {

// winerror.h and ntstatus.h, public constants of the Windows SDK.
constexpr quint32 asn1BadTag = 0x8009310BU;       // CRYPT_E_ASN1_BADTAG, 2148086027
constexpr quint32 badAlgorithm = 0x80090008U;     // NTE_BAD_ALGID, 2148073480
constexpr quint32 badSignature = 0x80090006U;     // NTE_BAD_SIGNATURE, 2148073478
constexpr quint32 invalidSignature = 0xC000A000U; // STATUS_INVALID_SIGNATURE

using PublicKeyInfo = std::unique_ptr<X509_PUBKEY, OpenSslFree<X509_PUBKEY_free>>;
using KeyContext = std::unique_ptr<EVP_PKEY_CTX, OpenSslFree<EVP_PKEY_CTX_free>>;

const unsigned char *bytesOf(const QByteArray &bytes) {
    return reinterpret_cast<const unsigned char *>(bytes.constData());
}

bool signatureMatches(EVP_PKEY *key, const QByteArray &sha256, const QByteArray &signature) {
    const KeyContext context(EVP_PKEY_CTX_new(key, nullptr));
    const bool valid = context && EVP_PKEY_verify_init(context.get()) == 1 &&
                       EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING) == 1 &&
                       EVP_PKEY_CTX_set_signature_md(context.get(), EVP_sha256()) == 1 &&
                       EVP_PKEY_verify(context.get(), bytesOf(signature), size_t(signature.size()),
                                       bytesOf(sha256), size_t(sha256.size())) == 1;
    // A refusal leaves entries in this thread's error queue, which nobody reads.
    ERR_clear_error();
    return valid;
}

class OpenSslVerifier : public RsaVerifier {
public:
    RsaStep decodeKey(const QByteArray &derKey) override {
        const unsigned char *at = bytesOf(derKey);
        const unsigned char *end = at + derKey.size();
        info.reset(d2i_X509_PUBKEY(nullptr, &at, long(derKey.size())));
        ERR_clear_error();
        return info && at == end ? RsaStep{true} : RsaStep{false, asn1BadTag};
    }

    RsaStep importKey() override {
        // The structure keeps the key; it is empty if the bits inside are not a key of their kind.
        key = X509_PUBKEY_get0(info.get());
        ERR_clear_error();
        if (!key)
            return {false, asn1BadTag};
        return isRsa(key) ? RsaStep{true} : RsaStep{false, badAlgorithm};
    }

    qint32 verifyHash(const QByteArray &sha256, const QByteArray &signature) override {
        return signatureMatches(key, sha256, signature) ? 0 : qint32(invalidSignature);
    }

    RsaStep acquireLegacyContext() override { return {true}; }
    RsaStep decodeLegacyKey(const QByteArray &derKey) override { return decodeKey(derKey); }
    RsaStep importLegacyKey() override { return importKey(); }

    RsaStep verifyLegacy(const QByteArray &data, const QByteArray &signature) override {
        QByteArray bigEndian = signature;
        std::reverse(bigEndian.begin(), bigEndian.end());
        const QByteArray hash = QCryptographicHash::hash(data, QCryptographicHash::Sha256);
        return signatureMatches(key, hash, bigEndian) ? RsaStep{true}
                                                      : RsaStep{false, badSignature};
    }

private:
    PublicKeyInfo info;
    EVP_PKEY *key = nullptr; // owned by info
};

} // namespace

std::unique_ptr<RsaVerifier> platformRsaVerifier() {
    return std::make_unique<OpenSslVerifier>();
}
