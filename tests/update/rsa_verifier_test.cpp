// Real keys against the verifier of this platform: what must pass, and the published ways of
// forging a PKCS#1 v1.5 signature, none of which may.
#include "support/key_maker.h"
#include "support/platform.h"
#include "support/staged_main.h"
#include "update/rsa_attempts.h"
#include "update/rsa_verifier.h"

#include <QCryptographicHash>

#include <algorithm>

using support::KeyPair;

namespace {

const QByteArray data = "the canonical text";
const QString allFailed =
    QStringLiteral("BCryptVerifySignature direct=0xFFFFFFFFC000A000 reversed=0xFFFFFFFFC000A000; "
                   "CryptVerifySignature direct=2148073478 reversed=2148073478");

QByteArray reversed(QByteArray bytes) {
    std::reverse(bytes.begin(), bytes.end());
    return bytes;
}

QByteArray sha256(const QByteArray &bytes) {
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}

// DigestInfo headers of RFC 8017, section 9.2, note 1.
const QByteArray sha256Header = QByteArray::fromHex("3031300d060960864801650304020105000420");
const QByteArray sha384Header = QByteArray::fromHex("3041300d060960864801650304020205000430");
const QByteArray sha1Header = QByteArray::fromHex("3021300906052b0e03021a05000414");
const QByteArray md5Header = QByteArray::fromHex("3020300c06082a864886f70d020505000410");
// The same as for SHA-256, with the NULL of the parameters left out.
const QByteArray sha256WithoutNull = QByteArray::fromHex("302f300b0609608648016503040201"
                                                         "0420");

// 00 01 FF... 00 and what follows it, filled up to the length of the modulus.
QByteArray block(int size, const QByteArray &info) {
    return QByteArray::fromHex("0001") + QByteArray(size - 3 - info.size(), '\xFF') +
           QByteArray(1, '\0') + info;
}

} // namespace

class RsaVerifierTest : public QObject {
    Q_OBJECT

private:
    // Made once: a large pair takes a while.
    const KeyPair signer = KeyPair::rsa(2048);

    static void refuse(const KeyPair &key, const QByteArray &signature);

private Q_SLOTS:
    void acceptsEitherByteOrder_data();
    void acceptsEitherByteOrder();
    void theLegacyInterfaceReadsLittleEndian();
    void everyChangedBitIsNoticed();
    void signaturesOfTheWrongLength();
    void numbersThatAreNoSignature();
    void keysThatDoNotDecode_data();
    void keysThatDoNotDecode();
    void keysOfAnotherKind_data();
    void keysOfAnotherKind();
    void malformedBlocks_data();
    void malformedBlocks();
    void theWellFormedBlockIsAccepted();
    void lowExponentForgeries_data();
    void lowExponentForgeries();
    void onlyWineIsForgivenItsNumbers();
};

void RsaVerifierTest::refuse(const KeyPair &key, const QByteArray &signature) {
    QString details;
    QVERIFY(isRsaKey(key.publicDer()));
    QVERIFY(!verifyRsaSha256(key.publicDer(), data, signature, &details));
    QCOMPARE(support::withWindowsNumbers(details), allFailed);
    QVERIFY(!verifyRsaSha256(key.publicDer(), data, reversed(signature)));
}

void RsaVerifierTest::acceptsEitherByteOrder_data() {
    QTest::addColumn<int>("bits");
    QTest::newRow("2048 bits") << 2048;
    QTest::newRow("3072 bits") << 3072;
    QTest::newRow("4096 bits") << 4096;
}

void RsaVerifierTest::acceptsEitherByteOrder() {
    QFETCH(int, bits);
    const KeyPair key = KeyPair::rsa(bits);
    const QByteArray signature = key.sign(data);
    QCOMPARE(signature.size(), bits / 8);
    QString details;
    QVERIFY(verifyRsaSha256(key.publicDer(), data, signature, &details));
    QCOMPARE(details, QStringLiteral("BCryptVerifySignature direct"));
    QVERIFY(verifyRsaSha256(key.publicDer(), data, reversed(signature), &details));
    QCOMPARE(details, QStringLiteral("BCryptVerifySignature reversed-bytes"));
    refuse(key, signer.sign(data));
}

// Attempts 1 and 4 take an ordinary signature, 2 and 3 a reversed one.
void RsaVerifierTest::theLegacyInterfaceReadsLittleEndian() {
    const QByteArray signature = signer.sign(data);
    const std::unique_ptr<RsaVerifier> verifier = platformRsaVerifier();
    QVERIFY(verifier->acquireLegacyContext().ok);
    QVERIFY(verifier->decodeLegacyKey(signer.publicDer()).ok);
    QVERIFY(verifier->importLegacyKey().ok);
    QVERIFY(verifier->verifyLegacy(data, reversed(signature)).ok);
    const RsaStep refused = verifier->verifyLegacy(data, signature);
    QVERIFY(!refused.ok);
    QCOMPARE(support::withWindowsNumbers(QString::number(refused.error)), QString("2148073478"));
}

void RsaVerifierTest::everyChangedBitIsNoticed() {
    const QByteArray signature = signer.sign(data);
    for (int bit = 0; bit < signature.size() * 8; bit += 37) {
        QByteArray changed = signature;
        changed[bit / 8] = char(changed.at(bit / 8) ^ (1 << (bit % 8)));
        QVERIFY(!verifyRsaSha256(signer.publicDer(), data, changed));
    }
    QVERIFY(!verifyRsaSha256(signer.publicDer(), data + '\n', signature));
    QVERIFY(!verifyRsaSha256(signer.publicDer(), QByteArray(), signature));
}

void RsaVerifierTest::signaturesOfTheWrongLength() {
    const QByteArray signature = signer.sign(data);
    refuse(signer, signature.left(255));
    refuse(signer, QByteArray(1, '\0') + signature);
    refuse(signer, signature + QByteArray(1, '\0'));
    refuse(signer, QByteArray(1, '\x01'));
    refuse(signer, QByteArray(100000, '\x01'));
}

void RsaVerifierTest::numbersThatAreNoSignature() {
    refuse(signer, QByteArray(256, '\0'));
    refuse(signer, QByteArray(255, '\0') + '\x01');
    refuse(signer, QByteArray(256, '\xFF'));
    refuse(signer, signer.modulus());
}

void RsaVerifierTest::keysThatDoNotDecode_data() {
    QTest::addColumn<QByteArray>("der");
    QTest::addColumn<QString>("number");
    const QString wrong = "2148086027";
    // Windows tells a structure that ends too early from one of another kind.
    const QString early = support::onWindows ? QString("2148086018") : wrong;
    QTest::newRow("no bytes") << QByteArray() << early;
    QTest::newRow("text") << QByteArray("not a key") << wrong;
    QTest::newRow("zeros") << QByteArray(300, '\0') << wrong;
    QTest::newRow("cut short") << signer.publicDer().left(200) << early;
    // The RSAPublicKey inside, without the structure that names the algorithm.
    QTest::newRow("the inner key alone") << signer.publicDer().mid(24) << wrong;
    // Windows reads the structure and overlooks what follows it.
    if (!support::onWindows)
        QTest::newRow("with bytes behind it") << signer.publicDer() + "x" << wrong;
}

void RsaVerifierTest::keysThatDoNotDecode() {
    QFETCH(QByteArray, der);
    QFETCH(QString, number);
    QString details;
    QVERIFY(!verifyRsaSha256(der, data, signer.sign(data), &details));
    QCOMPARE(details, "CryptDecodeObjectEx failed: " + number);
    QVERIFY(!isRsaKey(der));
}

void RsaVerifierTest::keysOfAnotherKind_data() {
    QTest::addColumn<QByteArray>("der");
    QTest::addColumn<QString>("details");
    // CNG knows these keys, and refuses them for a signature of this kind.
    QTest::newRow("on an elliptic curve")
        << KeyPair::ellipticCurve().publicDer()
        << support::systemText("CryptImportPublicKeyInfoEx2 failed: 2148073480",
                               "BCryptVerifySignature direct=0xFFFFFFFFC000A000 "
                               "reversed=0xFFFFFFFFC000A000; "
                               "CryptImportPublicKeyInfo failed: 2148086027");
    QTest::newRow("for signatures of the kind PSS alone")
        << KeyPair::rsaPss(2048).publicDer() << "CryptImportPublicKeyInfoEx2 failed: 2148073480";
    // A structure that names RSA around bits that are no RSA key.
    QTest::newRow("broken inside") << QByteArray(signer.publicDer()).replace(24, 1, "\x04")
                                   << "CryptImportPublicKeyInfoEx2 failed: 2148086027";
}

void RsaVerifierTest::keysOfAnotherKind() {
    QFETCH(QByteArray, der);
    QString details;
    QVERIFY(!verifyRsaSha256(der, data, "x", &details));
    QTEST(details, "details");
    QVERIFY(!isRsaKey(der));
}

// Blocks that only the owner of the key could make: refused all the same, so that no verifier
// that is lenient about their form stands behind us.
void RsaVerifierTest::malformedBlocks_data() {
    QTest::addColumn<QByteArray>("block");
    const int size = signer.size();
    const QByteArray hash = sha256(data);
    const QByteArray zero(1, '\0');
    QTest::newRow("the parameters' NULL left out") << block(size, sha256WithoutNull + hash);
    QTest::newRow("the hash named as SHA-384") << block(size, sha384Header + hash);
    QTest::newRow("the hash named as SHA-1") << block(size, sha1Header + hash);
    QTest::newRow("a SHA-1 hash, truly named")
        << block(size, sha1Header + QCryptographicHash::hash(data, QCryptographicHash::Sha1));
    QTest::newRow("an MD5 hash, truly named")
        << block(size, md5Header + QCryptographicHash::hash(data, QCryptographicHash::Md5));
    // CryptoAPI takes it under Wine.
    if (!support::onWindows)
        QTest::newRow("the hash without its header") << block(size, hash);
    QTest::newRow("another hash") << block(size, sha256Header + sha256("other"));
    QTest::newRow("a hash cut short") << block(size, sha256Header + hash.left(31));
    QTest::newRow("bytes behind the hash")
        << block(size - 40, sha256Header + hash) + QByteArray(40, '\x5A');
    QTest::newRow("zeros behind the hash")
        << block(size - 40, sha256Header + hash) + QByteArray(40, '\0');
    QTest::newRow("one byte behind the hash") << block(size - 1, sha256Header + hash) + zero;
    QTest::newRow("padding of eight bytes, the rest behind the hash")
        << QByteArray::fromHex("0001") + QByteArray(8, '\xFF') + zero + sha256Header + hash +
               QByteArray(size - 11 - 51, '\x5A');
    QTest::newRow("no padding, the rest behind the hash")
        << QByteArray::fromHex("000100") + sha256Header + hash + QByteArray(size - 3 - 51, '\x5A');
    QTest::newRow("padding with a hole")
        << QByteArray(block(size, sha256Header + hash)).replace(10, 1, "\xFE");
    QTest::newRow("padding of zeros, block type 0")
        << QByteArray(size - 51, '\0') + sha256Header + hash;
    QTest::newRow("padding of block type 2")
        << QByteArray(block(size, sha256Header + hash)).replace(1, 1, "\x02");
    QTest::newRow("no zero between padding and hash")
        << QByteArray::fromHex("0001") + QByteArray(size - 53, '\xFF') + sha256Header + hash;
    QTest::newRow("a first byte that is not zero")
        << QByteArray(block(size, sha256Header + hash)).replace(0, 1, "\x01");
    QTest::newRow("parameters that hide bytes")
        << block(size, QByteArray::fromHex("3039301506096086480165030402010"
                                           "408"
                                           "4141414141414141"
                                           "0420") +
                           hash);
    QTest::newRow("lengths in the long form")
        << block(size, QByteArray::fromHex("308131300d060960864801650304020105000420") + hash);
}

void RsaVerifierTest::malformedBlocks() {
    QFETCH(QByteArray, block);
    QCOMPARE(block.size(), signer.size());
    refuse(signer, signer.signRawBlock(block));
}

// The rows above would also pass if signRawBlock made nonsense.
void RsaVerifierTest::theWellFormedBlockIsAccepted() {
    const QByteArray signature =
        signer.signRawBlock(block(signer.size(), sha256Header + sha256(data)));
    QCOMPARE(signature, signer.sign(data));
    QVERIFY(verifyRsaSha256(signer.publicDer(), data, signature));
}

// With exponent 3, and a verifier that does not look behind the hash, a cube root forges a
// signature without any private key.
void RsaVerifierTest::lowExponentForgeries_data() {
    QTest::addColumn<QByteArray>("start");
    const QByteArray zero(1, '\0');
    const QByteArray info = sha256Header + sha256(data);
    QTest::newRow("padding of eight bytes")
        << QByteArray::fromHex("0001") + QByteArray(8, '\xFF') + zero + info;
    QTest::newRow("padding of one byte") << QByteArray::fromHex("0001FF00") + info;
    QTest::newRow("no padding") << QByteArray::fromHex("000100") + info;
    QTest::newRow("the parameters' NULL left out") << QByteArray::fromHex("0001") +
                                                          QByteArray(8, '\xFF') + zero +
                                                          sha256WithoutNull + sha256(data);
}

void RsaVerifierTest::lowExponentForgeries() {
    QFETCH(QByteArray, start);
    static const KeyPair key = KeyPair::rsa(3072, 3);
    QVERIFY(verifyRsaSha256(key.publicDer(), data, key.sign(data)));
    const QByteArray target = start + QByteArray(key.size() - start.size(), '\0');
    const QByteArray forged = support::cubeRootAtLeast(target, key.size());
    QVERIFY(support::cubeOf(forged, key.size()).startsWith(start));
    refuse(key, forged);
}

// Of the comparisons above: every other system is held to the told number.
void RsaVerifierTest::onlyWineIsForgivenItsNumbers() {
    const QString wines = "direct=2148073504 reversed=2148073488";
    QCOMPARE(support::withWindowsNumbers(wines, true), "direct=2148073478 reversed=2148073478");
    QCOMPARE(support::withWindowsNumbers(wines, false), wines);
    QVERIFY(support::onWindows || !support::underWine());
}

QUORVANE_TEST_MAIN(QCoreApplication, RsaVerifierTest)
#include "rsa_verifier_test.moc"
