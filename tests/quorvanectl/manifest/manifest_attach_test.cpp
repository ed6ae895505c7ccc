// A signature goes into a manifest, and what is signed stays what it was.
#include "quorvanectl/manifest/manifest_attach.h"
#include "support/manifest_maker.h"
#include "support/staged_main.h"
#include "update/canonical_manifest.h"

#include <QJsonDocument>
#include <QTextCodec>

class ManifestAttachTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void signaturesInFiles_data();
    void signaturesInFiles();
    void theSignedFormStays_data();
    void theSignedFormStays();
    void noManifestNoText();
};

void ManifestAttachTest::signaturesInFiles_data() {
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QByteArray>("signature");
    const QByteArray raw = QByteArray::fromHex("00ff10802a0a");
    QTest::newRow("raw bytes") << raw << raw;
    QTest::newRow("base64") << raw.toBase64() << raw;
    QTest::newRow("base64 with a line end") << raw.toBase64() + "\r\n" << raw;
    QTest::newRow("base64 in lines") << QByteArray("AP8Q\ngCoK\n") << raw;
    const QString text = QString::fromLatin1(raw.toBase64()) + "\r\n";
    const auto in = [](const char *encoding, const QString &words) {
        return QTextCodec::codecForName(encoding)->fromUnicode(words);
    };
    QTest::newRow("base64 in UTF-16, as some shells write") << in("UTF-16", text) << raw;
    QTest::newRow("the same with its bytes the other way round") << in("UTF-16BE", text) << raw;
    QTest::newRow("base64 in UTF-8 behind a byte-order mark")
        << "\xef\xbb\xbf" + raw.toBase64() << raw;
    QTest::newRow("raw bytes that begin as UTF-16 does")
        << QByteArray("\xff\xfe\x01\x02\xff") << QByteArray("\xff\xfe\x01\x02\xff");
    QTest::newRow("nothing") << QByteArray() << QByteArray();
    QTest::newRow("a manifest") << QByteArray("{\"publishedAt\": \"产线\"}\n") << QByteArray();
    QTest::newRow("a key") << QByteArray("-----BEGIN PUBLIC KEY-----\nAP8Q\n") << QByteArray();
    QTest::newRow("bytes that are no text") << QByteArray("\xff{}") << QByteArray("\xff{}");
    QTest::newRow("blank lines") << QByteArray("\n \n") << QByteArray();
}

void ManifestAttachTest::signaturesInFiles() {
    QFETCH(QByteArray, file);
    QFETCH(QByteArray, signature);
    QCOMPARE(ctl::signatureIn(file), signature);
}

void ManifestAttachTest::theSignedFormStays_data() {
    QTest::addColumn<QString>("manifest");
    QTest::newRow("a full manifest") << support::jsonText(support::fullManifest());
    QTest::newRow("a signed one") << R"({"signature": "old", "projects": []})";
    QTest::newRow("numbers of all kinds") << R"({"schemaVersion": 2.0000000001})";
    QTest::newRow("a fraction") << R"({"schemaVersion": 2.5})";
    QTest::newRow("a large number") << R"({"schemaVersion": 1e300})";
    QTest::newRow("characters that are escaped")
        << support::jsonText({{"publishedAt", "a\"b\\c/d\x01\n产线"}});
    QTest::newRow("a value of a wrong type") << R"({"runtime": [1], "projects": {"a": null}})";
    QTest::newRow("an empty manifest") << "{}";
}

void ManifestAttachTest::theSignedFormStays() {
    QFETCH(QString, manifest);
    const QString done = ctl::withSignature(manifest, "0123456789");
    QCOMPARE(canonicalManifestText(done), canonicalManifestText(manifest));
    const QJsonObject root = QJsonDocument::fromJson(done.toUtf8()).object();
    QCOMPARE(root.value("signature").toString(), QString("MDEyMzQ1Njc4OQ=="));
    QVERIFY(done.endsWith("}\n"));
}

void ManifestAttachTest::noManifestNoText() {
    QVERIFY(ctl::withSignature("[]", "x").isNull());
    QVERIFY(ctl::withSignature("{", "x").isNull());
}

QUORVANE_TEST_MAIN(QCoreApplication, ManifestAttachTest)
#include "manifest_attach_test.moc"
