// The key that a publisher or a support engineer names: whatever else lies in the same folder is told from it.
#include "quorvanectl/manifest/public_key.h"

#include "support/file_tree.h"
#include "support/key_maker.h"
#include "support/manifest_maker.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <algorithm>

using support::KeyPair;

class PublicKeyTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir folder;
    const KeyPair key = KeyPair::rsa(2048);

    QString write(const QByteArray &bytes) const;

private Q_SLOTS:
    void keys_data();
    void keys();
    void noFile_data();
    void noFile();
    void aFingerprintIsOfTheKeyAndNotOfItsFile_data();
    void aFingerprintIsOfTheKeyAndNotOfItsFile();
    void whoseSignatureItIs_data();
    void whoseSignatureItIs();
};

QString PublicKeyTest::write(const QByteArray &bytes) const {
    support::writeTree(folder.path(), {{"key", bytes}});
    return folder.filePath("key");
}

void PublicKeyTest::keys_data() {
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("is");
    const QByteArray pem = key.publicPem().toUtf8();
    const QByteArray other = KeyPair::rsa(1024).publicPem().toUtf8();
    QTest::newRow("as it was made") << pem << true;
    QTest::newRow("with the line ends of Windows") << QByteArray(pem).replace("\n", "\r\n") << true;
    QTest::newRow("in one line") << pem.simplified() << true;
    QTest::newRow("in a letter") << "Here it is:\n" + pem + "Regards\n" << true;
    QTest::newRow("before another one") << pem + other << true;
    QTest::newRow("its binary form") << key.publicDer() << false;
    QTest::newRow("its middle without the lines around it") << key.publicDer().toBase64() << false;
    QTest::newRow("without its last line") << pem.left(pem.lastIndexOf("-----END")) << false;
    QTest::newRow("without its first line") << pem.mid(pem.indexOf('\n') + 1) << false;
    QTest::newRow("cut off in its middle") << pem.left(200) + "\n-----END PUBLIC KEY-----\n"
                                           << false;
    QTest::newRow("quoted in a mail") << "> " + QByteArray(pem).replace("\n", "\n> ") << false;
    QTest::newRow("for curves") << KeyPair::ellipticCurve().publicPem().toUtf8() << false;
    QTest::newRow("nothing between its lines")
        << QByteArray("-----BEGIN PUBLIC KEY-----\n-----END PUBLIC KEY-----\n") << false;
    QTest::newRow("empty") << QByteArray("") << false;
    QTest::newRow("a manifest") << QByteArray("{\"signature\": \"AAECAw==\"}") << false;
}

void PublicKeyTest::keys() {
    QFETCH(QByteArray, content);
    QFETCH(bool, is);
    const QString path = write(content);
    QString error;
    QCOMPARE(ctl::isPublicKey(path, &error), is);
    QCOMPARE(error, is ? QString() : path + ": holds no RSA public key in PEM form");
}

void PublicKeyTest::noFile_data() {
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("error");
    QTest::newRow("not given") << ""
                               << "no key given; --key names the file";
    QTest::newRow("missing") << "@/none.pub"
                             << "@/none.pub: no such file";
    QTest::newRow("its folder") << "@"
                                << "@: is a folder";
    QTest::newRow("below a file") << "@/wall/update.pub"
                                  << "@/wall/update.pub: no such file";
}

void PublicKeyTest::noFile() {
    QFETCH(QString, path);
    QFETCH(QString, error);
    support::writeTree(folder.path(), {{"wall", ""}});
    QString reason;
    QVERIFY(!ctl::isPublicKey(path.replace("@", folder.path()), &reason));
    QCOMPARE(reason, error.replace("@", folder.path()));
}

void PublicKeyTest::aFingerprintIsOfTheKeyAndNotOfItsFile_data() {
    QTest::addColumn<QByteArray>("content");
    const QByteArray pem = key.publicPem().toUtf8();
    QTest::newRow("as it was made") << pem;
    QTest::newRow("with the line ends of Windows") << QByteArray(pem).replace("\n", "\r\n");
    QTest::newRow("behind a byte-order mark") << "\xEF\xBB\xBF" + pem;
    QTest::newRow("of two keys the first") << pem + KeyPair::rsa(1024).publicPem().toUtf8();
}

void PublicKeyTest::aFingerprintIsOfTheKeyAndNotOfItsFile() {
    QFETCH(QByteArray, content);
    QCOMPARE(
        ctl::fingerprintIn(write(content)),
        QString(QCryptographicHash::hash(key.publicDer(), QCryptographicHash::Sha256).toHex()));
}

void PublicKeyTest::whoseSignatureItIs_data() {
    QTest::addColumn<QString>("manifest");
    QTest::addColumn<bool>("is");
    const QString ours = support::signedManifest(support::fullManifest(), key);
    const auto with = [&](const QString &name, const QJsonValue &value) {
        QJsonObject root = QJsonDocument::fromJson(ours.toUtf8()).object();
        root.insert(name, value);
        return support::jsonText(root);
    };
    const QString signature =
        QJsonDocument::fromJson(ours.toUtf8()).object()["signature"].toString();
    QByteArray reversed = QByteArray::fromBase64(signature.toLatin1());
    std::reverse(reversed.begin(), reversed.end());
    QTest::newRow("ours") << ours << true;
    QTest::newRow("with its bytes reversed, which a launcher takes")
        << with("signature", QString(reversed.toBase64())) << true;
    QTest::newRow("with blanks around it") << with("signature", ' ' + signature + '\n') << true;
    QTest::newRow("with a key that no signature covers") << with("note", "theirs") << true;
    QTest::newRow("with a time of theirs") << with("publishedAt", "2126-01-01T00:00:00Z") << false;
    QTest::newRow("with projects of theirs") << with("projects", QJsonValue()) << false;
    QTest::newRow("none") << with("signature", QJsonValue()) << false;
    QTest::newRow("half of it") << with("signature", signature.left(100)) << false;
    QTest::newRow("another publisher's")
        << support::signedManifest(support::fullManifest(), KeyPair::rsa(2048)) << false;
    QTest::newRow("no manifest") << "[]" << false;
    QTest::newRow("nothing") << "" << false;
}

void PublicKeyTest::whoseSignatureItIs() {
    QFETCH(QString, manifest);
    QTEST(ctl::verifiesWith(manifest, key.publicPem().toUtf8()), "is");
    QVERIFY(!ctl::verifiesWith(manifest, "no key"));
}

QUORVANE_TEST_MAIN(QCoreApplication, PublicKeyTest)
#include "public_key_test.moc"
