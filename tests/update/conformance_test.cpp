// The launcher held to the vectors of tests/data/update, which another implementation wrote.
#include "support/platform.h"
#include "support/staged_main.h"
#include "update/canonical_manifest.h"
#include "update/manifest_signature.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

class ConformanceTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir folder;
    QJsonObject kit;

    QString keyPath(const QString &name) const;

private Q_SLOTS:
    void initTestCase();
    void vectors_data();
    void vectors();
};

QString ConformanceTest::keyPath(const QString &name) const {
    return folder.filePath(name);
}

void ConformanceTest::initTestCase() {
    QFile file(QStringLiteral(UPDATE_DATA "/vectors.json"));
    QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.fileName()));
    kit = QJsonDocument::fromJson(file.readAll()).object();
    const QJsonObject keys = kit.value("keys").toObject();
    for (auto key = keys.begin(); key != keys.end(); ++key) {
        QFile keyFile(keyPath(key.key()));
        QVERIFY(keyFile.open(QIODevice::WriteOnly));
        keyFile.write(key.value().toString().toUtf8());
    }
}

void ConformanceTest::vectors_data() {
    QTest::addColumn<QJsonObject>("vector");
    const QJsonArray vectors = kit.value("vectors").toArray();
    QVERIFY(vectors.size() >= 100);
    for (const QJsonValue &vector : vectors)
        QTest::newRow(qPrintable(vector["name"].toString())) << vector.toObject();
}

void ConformanceTest::vectors() {
    QFETCH(QJsonObject, vector);
    const QString manifest = vector.value("manifest").toString();
    const QString path = keyPath(vector.value("key").toString());
    const QString canonical = canonicalManifestText(manifest);
    QCOMPARE(canonical.isNull(), vector.value("canonical").isNull());
    QCOMPARE(canonical.toUtf8(), vector.value("canonical").toString().toUtf8());

    const VerifyResult result =
        vector.contains("signature")
            ? verifyManifestSignature(manifest, vector.value("signature").toString(), path)
            : verifyManifest(manifest, path);
    QCOMPARE(support::withWindowsNumbers(result.message),
             vector.value("message").toString().replace("{key}", path));
    QCOMPARE(result.ok, vector.value("ok").toBool());
}

QUORVANE_TEST_MAIN(QCoreApplication, ConformanceTest)
#include "conformance_test.moc"
