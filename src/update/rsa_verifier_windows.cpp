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
    return DWORD(bytes.size());
}

RsaStep outcome(BOOL succeeded) {
    return succeeded ? RsaStep{true} : RsaStep{false, GetLastError()};
}

class WindowsVerifier : public RsaVerifier {
public:
    ~WindowsVerifier() override {
        releaseModernKey();
        if (legacyKey)
            CryptDestroyKey(legacyKey);
        if (provider)
            CryptReleaseContext(provider, 0);
    }

    RsaStep decodeKey(const QByteArray &derKey) override {
        releaseModernKey();
        DWORD size = 0;
        return outcome(CryptDecodeObjectEx(X509_ASN_ENCODING, X509_PUBLIC_KEY_INFO, bytesOf(derKey),
                                           sizeOf(derKey), CRYPT_DECODE_ALLOC_FLAG, nullptr, &info,
                                           &size));
    }

    RsaStep importKey() override {
        return outcome(CryptImportPublicKeyInfoEx2(X509_ASN_ENCODING, info, 0, nullptr, &key));
    }

    qint32 verifyHash(const QByteArray &sha256, const QByteArray &signature) override {
        BCRYPT_PKCS1_PADDING_INFO padding = {BCRYPT_SHA256_ALGORITHM};
        return BCryptVerifySignature(key, &padding, bytesOf(sha256), sizeOf(sha256),
                                     bytesOf(signature), sizeOf(signature), BCRYPT_PAD_PKCS1);
    }

    RsaStep acquireLegacyContext() override {
        return outcome(
            CryptAcquireContextW(&provider, nullptr, nullptr, PROV_RSA_AES, CRYPT_VERIFYCONTEXT));
    }

    RsaStep decodeLegacyKey(const QByteArray &derKey) override { return decodeKey(derKey); }

    RsaStep importLegacyKey() override {
        return outcome(CryptImportPublicKeyInfo(provider, X509_ASN_ENCODING, info, &legacyKey));
    }

    RsaStep verifyLegacy(const QByteArray &data, const QByteArray &signature) override {
        HCRYPTHASH hash = 0;
        RsaStep step = outcome(CryptCreateHash(provider, CALG_SHA_256, 0, 0, &hash));
        if (!step.ok)
            return step;
        step = outcome(CryptHashData(hash, bytesOf(data), sizeOf(data), 0));
        if (step.ok)
            step = outcome(CryptVerifySignatureA(hash, bytesOf(signature), sizeOf(signature),
                                                 legacyKey, nullptr, 0));
        CryptDestroyHash(hash);
        return step;
    }

private:
    void releaseModernKey() {
        if (key != nullptr)
            BCryptDestroyKey(key);
        if (info != nullptr)
            LocalFree(info);
        key = nullptr;
        info = nullptr;
    }

    CERT_PUBLIC_KEY_INFO *info = nullptr;
    BCRYPT_KEY_HANDLE key = nullptr;
    HCRYPTPROV provider = 0;
    HCRYPTKEY legacyKey = 0;
};

} // namespace

std::unique_ptr<RsaVerifier> platformRsaVerifier() {
    return std::make_unique<WindowsVerifier>();
}
