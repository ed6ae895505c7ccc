#include "update/rsa_attempts.h"

#include <QCryptographicHash>

#include <algorithm>

namespace {

QByteArray reversed(QByteArray bytes) {
    std::reverse(bytes.begin(), bytes.end());
    return bytes;
}

// The status is widened with its sign, so a failure prints as sixteen digits from FFFFFFFF on.
QString hexStatus(qint32 status) {
    return QString::number(quint64(qint64(status)), 16).toUpper();
}

// False, with the text of the failed step put at the end of the report.
bool stepFailed(const char *text, const RsaStep &step, QString *report) {
    *report += QString::fromLatin1(text).arg(step.error);
    return false;
}

// Sets `decided` if the outcome is final: passed, or a key that the legacy interface is not to see.
bool modernAttempts(RsaVerifier &verifier, const QByteArray &derKey, const QByteArray &data,
                    const QByteArray &signature, QString *report, bool *decided) {
    *decided = true;
    if (const RsaStep step = verifier.decodeKey(derKey); !step.ok)
        return stepFailed("CryptDecodeObjectEx failed: %1", step, report);
    if (const RsaStep step = verifier.importKey(); !step.ok)
        return stepFailed("CryptImportPublicKeyInfoEx2 failed: %1", step, report);

    const QByteArray hash = QCryptographicHash::hash(data, QCryptographicHash::Sha256);
    const qint32 direct = verifier.verifyHash(hash, signature);
    if (direct == 0) {
        *report = QStringLiteral("BCryptVerifySignature direct");
        return true;
    }
    const qint32 reverse = verifier.verifyHash(hash, reversed(signature));
    if (reverse == 0) {
        *report = QStringLiteral("BCryptVerifySignature reversed-bytes");
        return true;
    }
    *report = QStringLiteral("BCryptVerifySignature direct=0x%1 reversed=0x%2")
                  .arg(hexStatus(direct), hexStatus(reverse));
    *decided = false;
    return false;
}

bool legacyAttempts(RsaVerifier &verifier, const QByteArray &derKey, const QByteArray &data,
                    const QByteArray &signature, QString *report) {
    if (const RsaStep step = verifier.acquireLegacyContext(); !step.ok)
        return stepFailed("; CryptAcquireContext failed: %1", step, report);
    if (const RsaStep step = verifier.decodeLegacyKey(derKey); !step.ok)
        return stepFailed("; CryptDecodeObjectEx(legacy) failed: %1", step, report);
    if (const RsaStep step = verifier.importLegacyKey(); !step.ok)
        return stepFailed("; CryptImportPublicKeyInfo failed: %1", step, report);

    const RsaStep direct = verifier.verifyLegacy(data, signature);
    if (direct.ok) {
        *report = QStringLiteral("CryptVerifySignature direct");
        return true;
    }
    const RsaStep reverse = verifier.verifyLegacy(data, reversed(signature));
    if (reverse.ok) {
        *report = QStringLiteral("CryptVerifySignature reversed-bytes");
        return true;
    }
    *report += QStringLiteral("; CryptVerifySignature direct=%1 reversed=%2")
                   .arg(QString::number(direct.error), QString::number(reverse.error));
    return false;
}

} // namespace

bool verifyRsaSha256With(RsaVerifier &verifier, const QByteArray &derKey, const QByteArray &data,
                         const QByteArray &signature, QString *details) {
    QString report;
    bool decided = false;
    bool passed = modernAttempts(verifier, derKey, data, signature, &report, &decided);
    if (!decided)
        passed = legacyAttempts(verifier, derKey, data, signature, &report);
    if (details != nullptr)
        *details = report;
    return passed;
}

bool verifyRsaSha256(const QByteArray &derKey, const QByteArray &data, const QByteArray &signature,
                     QString *details) {
    if (details != nullptr)
        *details = QStringLiteral("unknown");
    const std::unique_ptr<RsaVerifier> verifier = platformRsaVerifier();
    return verifyRsaSha256With(*verifier, derKey, data, signature, details);
}

// Windows imports keys of other algorithms as well, so that this one has to be named in it: rsaEncryption of
// RFC 3279, 2.3.1, as DER writes it.
bool isRsaKey(const QByteArray &derKey) {
    static const QByteArray rsaEncryption = QByteArray::fromHex("06092a864886f70d010101");
    const std::unique_ptr<RsaVerifier> verifier = platformRsaVerifier();
    return derKey.contains(rsaEncryption) && verifier->decodeKey(derKey).ok &&
           verifier->importKey().ok;
}
