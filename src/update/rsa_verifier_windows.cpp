// CNG for the modern attempts, CryptoAPI for the legacy ones.
#include "update/rsa_verifier.h"

#include <windows.h>

#include <bcrypt.h>
#include <wincrypt.h>

namespace {

// BCryptVerifySignature and CryptVerifySignatureA take their input through pointers that are not
// const, and only read it.
BYTE *bytesOf(const QByteArray &bytes) {
    return reinterpret_cast<BYTE *>(const_cast<char *>(bytes.constData()));
}

DWORD sizeOf(const QByteArray &bytes) {
    return static_cast<DWORD>(bytes.size());
}

RsaStep outcome(BOOL succeeded) {
    return succeeded ? RsaStep{true} : RsaStep{false, GetLastError()};
}

class WindowsVerifier : public RsaVerifier {
public:
    ~WindowsVerifier() override {
        releaseModernKey();
        if (m_legacyKey)
            CryptDestroyKey(m_legacyKey);
        if (m_provider)
            CryptReleaseContext(m_provider, 0);
    }

    RsaStep decodeKey(const QByteArray &derKey) override {
        releaseModernKey();
        DWORD size = 0;
        return outcome(CryptDecodeObjectEx(X509_ASN_ENCODING, X509_PUBLIC_KEY_INFO, bytesOf(derKey),
                                           sizeOf(derKey), CRYPT_DECODE_ALLOC_FLAG, nullptr,
                                           &m_info, &size));
    }

    RsaStep importKey() override {
        return outcome(CryptImportPublicKeyInfoEx2(X509_ASN_ENCODING, m_info, 0, nullptr, &m_key));
    }

    qint32 verifyHash(const QByteArray &sha256, const QByteArray &signature) override {
        BCRYPT_PKCS1_PADDING_INFO padding = {BCRYPT_SHA256_ALGORITHM};
        return BCryptVerifySignature(m_key, &padding, bytesOf(sha256), sizeOf(sha256),
                                     bytesOf(signature), sizeOf(signature), BCRYPT_PAD_PKCS1);
    }

    RsaStep acquireLegacyContext() override {
        return outcome(
            CryptAcquireContextW(&m_provider, nullptr, nullptr, PROV_RSA_AES, CRYPT_VERIFYCONTEXT));
    }

    RsaStep decodeLegacyKey(const QByteArray &derKey) override { return decodeKey(derKey); }

    RsaStep importLegacyKey() override {
        return outcome(
            CryptImportPublicKeyInfo(m_provider, X509_ASN_ENCODING, m_info, &m_legacyKey));
    }

    RsaStep verifyLegacy(const QByteArray &data, const QByteArray &signature) override {
        HCRYPTHASH hash = 0;
        RsaStep step = outcome(CryptCreateHash(m_provider, CALG_SHA_256, 0, 0, &hash));
        if (!step.ok)
            return step;
        step = outcome(CryptHashData(hash, bytesOf(data), sizeOf(data), 0));
        if (step.ok)
            step = outcome(CryptVerifySignatureA(hash, bytesOf(signature), sizeOf(signature),
                                                 m_legacyKey, nullptr, 0));
        CryptDestroyHash(hash);
        return step;
    }

private:
    void releaseModernKey() {
        if (m_key)
            BCryptDestroyKey(m_key);
        if (m_info)
            LocalFree(m_info);
        m_key = nullptr;
        m_info = nullptr;
    }

    CERT_PUBLIC_KEY_INFO *m_info = nullptr;
    BCRYPT_KEY_HANDLE m_key = nullptr;
    HCRYPTPROV m_provider = 0;
    HCRYPTKEY m_legacyKey = 0;
};

} // namespace

std::unique_ptr<RsaVerifier> platformRsaVerifier() {
    return std::make_unique<WindowsVerifier>();
}
