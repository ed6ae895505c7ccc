// The four attempts and their report, walked with a verifier that answers as it is told.
#include "support/staged_main.h"
#include "update/rsa_attempts.h"
#include "update/rsa_verifier.h"

#include <QCryptographicHash>

namespace {

const qint32 badStatus = qint32(0xC000A000U);
const QByteArray key = "key";
const QByteArray data = "data";
const QByteArray signature = "abc";

class ScriptedVerifier : public RsaVerifier {
public:
    RsaStep decode{true};
    RsaStep import{true};
    qint32 direct = badStatus;
    qint32 reversed = badStatus;
    RsaStep acquire{true};
    RsaStep legacyDecode{true};
    RsaStep legacyImport{true};
    RsaStep legacyDirect{false, 11};
    RsaStep legacyReversed{false, 22};
    QStringList calls;

    RsaStep decodeKey(const QByteArray &derKey) override {
        calls.append(QStringLiteral("decode ") + derKey);
        return decode;
    }
    RsaStep importKey() override {
        calls.append(QStringLiteral("import"));
        return import;
    }
    qint32 verifyHash(const QByteArray &sha256, const QByteArray &bytes) override {
        hash = sha256;
        calls.append(QStringLiteral("verify ") + bytes);
        return bytes == signature ? direct : reversed;
    }
    RsaStep acquireLegacyContext() override {
        calls.append(QStringLiteral("legacy acquire"));
        return acquire;
    }
    RsaStep decodeLegacyKey(const QByteArray &derKey) override {
        calls.append(QStringLiteral("legacy decode ") + derKey);
        return legacyDecode;
    }
    RsaStep importLegacyKey() override {
        calls.append(QStringLiteral("legacy import"));
        return legacyImport;
    }
    RsaStep verifyLegacy(const QByteArray &bytes, const QByteArray &signatureBytes) override {
        calls.append(QStringLiteral("legacy verify ") + bytes + " " + signatureBytes);
        return signatureBytes == signature ? legacyDirect : legacyReversed;
    }

    QByteArray hash;
};

const QStringList modernCalls = {"decode key", "import", "verify abc", "verify cba"};

} // namespace

class RsaAttemptsTest : public QObject {
    Q_OBJECT

private:
    ScriptedVerifier verifier;
    QString details;

    bool run();
    void reset();

private Q_SLOTS:
    void init();
    void theModernInterfacePassesDirectly();
    void theModernInterfacePassesReversed();
    void theLegacyInterfacePassesDirectly();
    void theLegacyInterfacePassesReversed();
    void allFourFail();
    void aKeyThatDoesNotDecodeNeverReachesTheLegacyInterface();
    void aKeyThatCannotBeImportedNeverReachesTheLegacyInterface();
    void noLegacyContext();
    void theLegacyKeyDoesNotDecode();
    void theLegacyKeyCannotBeImported();
    void detailsMayBeLeftOut();
};

bool RsaAttemptsTest::run() {
    return verifyRsaSha256With(verifier, key, data, signature, &details);
}

void RsaAttemptsTest::reset() {
    verifier.~ScriptedVerifier();
    new (&verifier) ScriptedVerifier;
    details.clear();
}

void RsaAttemptsTest::init() {
    reset();
}

void RsaAttemptsTest::theModernInterfacePassesDirectly() {
    verifier.direct = 0;
    QVERIFY(run());
    QCOMPARE(details, QStringLiteral("BCryptVerifySignature direct"));
    QCOMPARE(verifier.calls, modernCalls.mid(0, 3));
    QCOMPARE(verifier.hash, QCryptographicHash::hash(data, QCryptographicHash::Sha256));
}

void RsaAttemptsTest::theModernInterfacePassesReversed() {
    verifier.reversed = 0;
    QVERIFY(run());
    QCOMPARE(details, QStringLiteral("BCryptVerifySignature reversed-bytes"));
    QCOMPARE(verifier.calls, modernCalls);
}

void RsaAttemptsTest::theLegacyInterfacePassesDirectly() {
    verifier.legacyDirect = {true};
    QVERIFY(run());
    QCOMPARE(details, QStringLiteral("CryptVerifySignature direct"));
    QCOMPARE(verifier.calls,
             modernCalls + QStringList({"legacy acquire", "legacy decode key", "legacy import",
                                        "legacy verify data abc"}));
}

void RsaAttemptsTest::theLegacyInterfacePassesReversed() {
    verifier.legacyReversed = {true};
    QVERIFY(run());
    QCOMPARE(details, QStringLiteral("CryptVerifySignature reversed-bytes"));
    QCOMPARE(verifier.calls,
             modernCalls + QStringList({"legacy acquire", "legacy decode key", "legacy import",
                                        "legacy verify data abc", "legacy verify data cba"}));
}

void RsaAttemptsTest::allFourFail() {
    verifier.reversed = 5;
    QVERIFY(!run());
    QCOMPARE(details, QStringLiteral("BCryptVerifySignature direct=0xFFFFFFFFC000A000 "
                                     "reversed=0x5; CryptVerifySignature direct=11 "
                                     "reversed=22"));
}

void RsaAttemptsTest::aKeyThatDoesNotDecodeNeverReachesTheLegacyInterface() {
    verifier.decode = {false, 2148086027U};
    QVERIFY(!run());
    QCOMPARE(details, QStringLiteral("CryptDecodeObjectEx failed: 2148086027"));
    QCOMPARE(verifier.calls, modernCalls.mid(0, 1));
}

void RsaAttemptsTest::aKeyThatCannotBeImportedNeverReachesTheLegacyInterface() {
    verifier.import = {false, 7};
    QVERIFY(!run());
    QCOMPARE(details, QStringLiteral("CryptImportPublicKeyInfoEx2 failed: 7"));
    QCOMPARE(verifier.calls, modernCalls.mid(0, 2));
}

void RsaAttemptsTest::noLegacyContext() {
    verifier.acquire = {false, 3};
    QVERIFY(!run());
    QCOMPARE(details, QStringLiteral("BCryptVerifySignature direct=0xFFFFFFFFC000A000 "
                                     "reversed=0xFFFFFFFFC000A000; CryptAcquireContext failed: 3"));
    QCOMPARE(verifier.calls, modernCalls + QStringList("legacy acquire"));
}

void RsaAttemptsTest::theLegacyKeyDoesNotDecode() {
    verifier.legacyDecode = {false, 4};
    QVERIFY(!run());
    QVERIFY(details.endsWith("reversed=0xFFFFFFFFC000A000; CryptDecodeObjectEx(legacy) failed: 4"));
    QCOMPARE(verifier.calls.last(), QStringLiteral("legacy decode key"));
}

void RsaAttemptsTest::theLegacyKeyCannotBeImported() {
    verifier.legacyImport = {false, 5};
    QVERIFY(!run());
    QVERIFY(details.endsWith("reversed=0xFFFFFFFFC000A000; CryptImportPublicKeyInfo failed: 5"));
    QCOMPARE(verifier.calls.last(), QStringLiteral("legacy import"));
}

void RsaAttemptsTest::detailsMayBeLeftOut() {
    QVERIFY(!verifyRsaSha256With(verifier, key, data, signature));
    verifier.direct = 0;
    QVERIFY(verifyRsaSha256With(verifier, key, data, signature));
}

QUORVANE_TEST_MAIN(QCoreApplication, RsaAttemptsTest)
#include "rsa_attempts_test.moc"
