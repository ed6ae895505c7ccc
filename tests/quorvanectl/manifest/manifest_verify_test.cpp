// What a verification reports: the launcher's verdict, the attempts, and the hash to compare.
#include "quorvanectl/manifest/manifest_verify.h"
#include "support/manifest_maker.h"
#include "support/platform.h"
#include "support/staged_main.h"
#include "update/canonical_manifest.h"

#include "openssl_program.h"

#include <QJsonDocument>
#include <QTemporaryDir>

#include <algorithm>

using ctl::VerifyReport;
using ctl::verifyReport;

class ManifestVerifyTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir folder;
    const support::KeyPair key = support::KeyPair::rsa(2048);
    const QString manifest = support::signedManifest(support::fullManifest(), key);
    QString keyPath;

private Q_SLOTS:
    void initTestCase();
    void aGoodSignature();
    void aReversedSignature();
    void anotherKeysSignature();
    void noSignature();
    void noManifest();
    void theKeysOfTheJson();
};

void ManifestVerifyTest::initTestCase() {
    keyPath = folder.filePath("update.pub");
    support::writeBytes(keyPath, key.publicPem().toUtf8());
}

void ManifestVerifyTest::aGoodSignature() {
    const VerifyReport report = verifyReport(manifest, keyPath);
    QVERIFY(report.ok);
    QCOMPARE(report.message, QString("signature verified"));
    QCOMPARE(report.details, QString("BCryptVerifySignature direct"));
    QCOMPARE(report.signatureBytes, 256);
    const QByteArray canonical = canonicalManifestText(manifest).toUtf8();
    QCOMPARE(report.canonicalSha256,
             QString(QCryptographicHash::hash(canonical, QCryptographicHash::Sha256).toHex()));
}

void ManifestVerifyTest::aReversedSignature() {
    QJsonObject root = QJsonDocument::fromJson(manifest.toUtf8()).object();
    QByteArray signature = QByteArray::fromBase64(root["signature"].toString().toLatin1());
    std::reverse(signature.begin(), signature.end());
    root["signature"] = QString(signature.toBase64());
    QCOMPARE(verifyReport(support::jsonText(root), keyPath).details,
             QString("BCryptVerifySignature reversed-bytes"));
}

void ManifestVerifyTest::anotherKeysSignature() {
    const QString foreign =
        support::signedManifest(support::fullManifest(), support::KeyPair::rsa(2048));
    const VerifyReport report = verifyReport(foreign, keyPath);
    QVERIFY(!report.ok);
    QCOMPARE(support::withWindowsNumbers(report.details),
             QString("BCryptVerifySignature direct=0xFFFFFFFFC000A000 "
                     "reversed=0xFFFFFFFFC000A000; CryptVerifySignature direct=2148073478 "
                     "reversed=2148073478"));
    QVERIFY(report.message.contains("canonical_sha256=" + report.canonicalSha256));
}

void ManifestVerifyTest::noSignature() {
    const VerifyReport report = verifyReport(support::jsonText(support::fullManifest()), keyPath);
    QCOMPARE(report.message, QString("signature is empty"));
    QCOMPARE(report.details, QString());
    QCOMPARE(report.signatureBytes, 0);
    QCOMPARE(report.canonicalSha256.size(), 64);
}

void ManifestVerifyTest::noManifest() {
    const VerifyReport report = verifyReport("[]", keyPath);
    QCOMPARE(report.message, QString("manifest JSON is invalid"));
    QCOMPARE(report.canonicalSha256, QString());
}

void ManifestVerifyTest::theKeysOfTheJson() {
    const QByteArray json =
        QJsonDocument(ctl::toJson(VerifyReport())).toJson(QJsonDocument::Compact);
    QCOMPARE(json, QByteArray(R"({"canonical_sha256":"","details":"","message":"","ok":false,)"
                              R"("sig_bytes":0})"));
}

QUORVANE_TEST_MAIN(QCoreApplication, ManifestVerifyTest)
#include "manifest_verify_test.moc"
