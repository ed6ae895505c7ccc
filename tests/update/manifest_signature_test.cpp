// The whole check of a manifest and of a package, with real keys and exact texts.
#include "frame/app_paths.h"
#include "support/manifest_maker.h"
#include "support/platform.h"
#include "support/staged_main.h"
#include "update/canonical_manifest.h"
#include "update/manifest_signature.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <algorithm>
#include <functional>

using support::KeyPair;

namespace {

const QString verified = QStringLiteral("signature verified");
const QString allFailed =
    QStringLiteral("BCryptVerifySignature direct=0xFFFFFFFFC000A000 reversed=0xFFFFFFFFC000A000; "
                   "CryptVerifySignature direct=2148073478 reversed=2148073478");

QString sha256Hex(const QByteArray &bytes) {
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

QJsonObject objectOf(const QString &json) {
    return QJsonDocument::fromJson(json.toUtf8()).object();
}

// All places of a manifest: the path of keys and indexes to each value, the root's own included.
void collectPlaces(const QJsonValue &value, const QString &path, QStringList *places) {
    if (!path.isEmpty())
        *places += path;
    if (value.isObject()) {
        const QJsonObject object = value.toObject();
        for (auto it = object.begin(); it != object.end(); ++it)
            collectPlaces(it.value(), path + "/" + it.key(), places);
    } else if (value.isArray()) {
        const QJsonArray array = value.toArray();
        for (int i = 0; i < array.size(); ++i)
            collectPlaces(array.at(i), path + "/" + QString::number(i), places);
    }
}

QJsonValue replacedAt(const QJsonValue &value, QStringList path, const QJsonValue &with) {
    if (path.isEmpty())
        return with;
    const QString step = path.takeFirst();
    if (value.isArray()) {
        QJsonArray array = value.toArray();
        array.replace(step.toInt(), replacedAt(array.at(step.toInt()), path, with));
        return array;
    }
    QJsonObject object = value.toObject();
    object.insert(step, replacedAt(object.value(step), path, with));
    return object;
}

QJsonObject replaced(const QJsonObject &manifest, const QString &place, const QJsonValue &with) {
    return replacedAt(manifest, place.mid(1).split('/'), with).toObject();
}

QStringList placesOf(const QJsonObject &manifest) {
    QStringList places;
    collectPlaces(manifest, QString(), &places);
    return places;
}

} // namespace

class ManifestSignatureTest : public QObject {
    Q_OBJECT

private:
    const KeyPair signer = KeyPair::rsa(2048);
    QTemporaryDir keyFolder;
    QString publicKeyPath;

    QString write(const QString &name, const QByteArray &bytes);
    QString refusal(const QString &manifest, int signatureBytes, const QString &keyPath) const;

private Q_SLOTS:
    void initTestCase();
    void aSignedManifestIsVerified();
    void aSignatureOverNothingIsVerified();
    void aReversedSignatureIsVerifiedWithoutAWord();
    void largerKeysVerify();
    void whatIsNotSignedMayChange();
    void base64MayHoldStrayCharacters();
    void anEmptyKeyPathMeansTheInstalledKey();
    void everySignedPlaceIsGuarded_data();
    void everySignedPlaceIsGuarded();
    void anotherPublishersKey();
    void aSignatureOfFewBytesReachesTheAttempts();
    void percentSignsInAPathStayAsTheyAre();
    void refusals_data();
    void refusals();
    void aManifestWithoutItsSignature_data();
    void aManifestWithoutItsSignature();
    void aProvenManifestIsHandedOnAsItWasParsed();
    void aRefusedManifestTellsItsAttempts();
    void aTextThatIsNoManifestHandsNothingOn();
    void everyWrongTypeInEveryPlaceIsAnswered();
    void invalidUtf8IsRefused();
    void aHundredThousandProjectsAreVerified();
    void aManifestOfAHundredMegabytesIsVerified();
    void keyFiles_data();
    void keyFiles();
    void onlyTheFirstBlockCounts();
    void aHugeKeyFileWithoutABlockIsAnsweredAtOnce();
    void packageHash_data();
    void packageHash();
    void aPackageThatCannotBeRead();
    void anEmptyPackageHasAHash();
};

QString ManifestSignatureTest::write(const QString &name, const QByteArray &bytes) {
    QFile file(keyFolder.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(name));
    return file.fileName();
}

QString ManifestSignatureTest::refusal(const QString &manifest, int signatureBytes,
                                       const QString &keyPath) const {
    return QStringLiteral("RSA signature verification failed (%1), key=%2, "
                          "canonical_sha256=%3, sig_bytes=%4")
        .arg(allFailed, keyPath, sha256Hex(canonicalManifestText(manifest).toUtf8()),
             QString::number(signatureBytes));
}

void ManifestSignatureTest::initTestCase() {
    publicKeyPath = write("update.pub", signer.publicPem().toUtf8());
}

// --- what passes

void ManifestSignatureTest::aSignedManifestIsVerified() {
    const VerifyResult result =
        verifyManifest(support::signedManifest(support::fullManifest(), signer), publicKeyPath);
    QCOMPARE(result.message, verified);
    QVERIFY(result.ok);
}

void ManifestSignatureTest::aSignatureOverNothingIsVerified() {
    const VerifyResult result = verifyManifest(support::signedManifest({}, signer), publicKeyPath);
    QCOMPARE(result.message, verified);
    QVERIFY(result.ok);
}

void ManifestSignatureTest::aReversedSignatureIsVerifiedWithoutAWord() {
    const QString manifest = support::jsonText(support::fullManifest());
    QByteArray signature = signer.sign(canonicalManifestText(manifest).toUtf8());
    std::reverse(signature.begin(), signature.end());
    const VerifyResult result =
        verifyManifestSignature(manifest, signature.toBase64(), publicKeyPath);
    QCOMPARE(result.message, verified);
    QVERIFY(result.ok);
}

void ManifestSignatureTest::largerKeysVerify() {
    for (const int bits : {3072, 4096}) {
        const KeyPair key = KeyPair::rsa(bits);
        const QString path = write("large.pub", key.publicPem().toUtf8());
        const QString manifest = support::signedManifest(support::fullManifest(), key);
        QVERIFY(verifyManifest(manifest, path).ok);
        QCOMPARE(support::withWindowsNumbers(verifyManifest(manifest, publicKeyPath).message),
                 refusal(manifest, bits / 8, publicKeyPath));
    }
}

void ManifestSignatureTest::whatIsNotSignedMayChange() {
    QJsonObject manifest = objectOf(support::signedManifest(support::fullManifest(), signer));
    for (const char *component : {"runtime", "launcher", "editor", "pythonTools"})
        manifest = replaced(manifest, QStringLiteral("/%1/version").arg(component), "99.0.0");
    manifest.insert("notes", "added later");
    const QString text = QString::fromUtf8(QJsonDocument(manifest).toJson());
    QCOMPARE(verifyManifest(text, publicKeyPath).message, verified);
}

void ManifestSignatureTest::base64MayHoldStrayCharacters() {
    const QString manifest = support::jsonText(support::fullManifest());
    const QByteArray base64 = signer.sign(canonicalManifestText(manifest).toUtf8()).toBase64();
    QString text = QString::fromLatin1(base64);
    text.insert(100, " \n-*\t").prepend(QStringLiteral("　 ")).append("\r\n");
    QCOMPARE(verifyManifestSignature(manifest, text, publicKeyPath).message, verified);
}

void ManifestSignatureTest::anEmptyKeyPathMeansTheInstalledKey() {
    const QString manifest = support::signedManifest(support::fullManifest(), signer);
    AppPaths::initialize();
    const QString missing = AppPaths::updatePublicKeyPath();
    QVERIFY(missing.startsWith(support::stageRoot()));
    QCOMPARE(verifyManifest(manifest).message,
             QStringLiteral("update public key not found: %1").arg(missing));
    const QDir program(QCoreApplication::applicationDirPath());
    QVERIFY(program.mkpath("config"));
    QVERIFY(QFile::copy(publicKeyPath, program.filePath("config/update.pub")));
    QCOMPARE(verifyManifest(manifest).message, verified);
}

// --- what is tampered with

void ManifestSignatureTest::everySignedPlaceIsGuarded_data() {
    QTest::addColumn<QString>("place");
    for (const QString &place : placesOf(support::fullManifest())) {
        if (!place.endsWith("/version") || place.startsWith("/projects"))
            QTest::newRow(qPrintable(place)) << place;
    }
}

void ManifestSignatureTest::everySignedPlaceIsGuarded() {
    QFETCH(QString, place);
    const QJsonObject manifest = objectOf(support::signedManifest(support::fullManifest(), signer));
    const QString tampered = support::jsonText(replaced(manifest, place, "tampered"));
    const VerifyResult result = verifyManifest(tampered, publicKeyPath);
    QVERIFY(!result.ok);
    QCOMPARE(support::withWindowsNumbers(result.message), refusal(tampered, 256, publicKeyPath));
}

void ManifestSignatureTest::anotherPublishersKey() {
    const QString manifest = support::signedManifest(support::fullManifest(), KeyPair::rsa(2048));
    const VerifyResult result = verifyManifest(manifest, publicKeyPath);
    QVERIFY(!result.ok);
    QCOMPARE(support::withWindowsNumbers(result.message), refusal(manifest, 256, publicKeyPath));
}

void ManifestSignatureTest::aSignatureOfFewBytesReachesTheAttempts() {
    const QString manifest = support::jsonText(support::fullManifest());
    const VerifyResult result = verifyManifestSignature(manifest, "!!AAAA!!", publicKeyPath);
    QVERIFY(!result.ok);
    QCOMPARE(support::withWindowsNumbers(result.message), refusal(manifest, 3, publicKeyPath));
}

// Texts from outside may look like places to fill in.
void ManifestSignatureTest::percentSignsInAPathStayAsTheyAre() {
    const QString path = write("%1%2%3%4.pub", signer.publicPem().toUtf8());
    const QString manifest = support::jsonText(support::fullManifest());
    QCOMPARE(support::withWindowsNumbers(verifyManifestSignature(manifest, "AAAA", path).message),
             refusal(manifest, 3, path));
}

// --- what ends the check early, in its order

void ManifestSignatureTest::refusals_data() {
    QTest::addColumn<QString>("manifest");
    QTest::addColumn<QString>("signature");
    QTest::addColumn<QString>("keyFile");
    QTest::addColumn<QString>("message");
    write("empty.pub", "");
    write("noblock.pub", "just text");
    const QString folder = keyFolder.path() + "/";
    QDir(folder).mkpath("folder.pub");
    QTest::newRow("no manifest") << ""
                                 << ""
                                 << "none"
                                 << "manifest JSON is empty";
    QTest::newRow("a manifest of blanks") << " \t\n"
                                          << ""
                                          << "none"
                                          << "manifest JSON is empty";
    QTest::newRow("no signature") << "["
                                  << ""
                                  << "none"
                                  << "signature is empty";
    QTest::newRow("a signature of blanks") << "["
                                           << " \n"
                                           << "none"
                                           << "signature is empty";
    QTest::newRow("no key file") << "["
                                 << "!"
                                 << "none"
                                 << "update public key not found: " + folder + "none";
    QTest::newRow("no JSON") << "{"
                             << "!"
                             << "empty.pub"
                             << "manifest JSON is invalid";
    QTest::newRow("no object") << "[]"
                               << "!"
                               << "empty.pub"
                               << "manifest JSON is invalid";
    QTest::newRow("an empty key file") << "{}"
                                       << "!"
                                       << "empty.pub"
                                       << "unable to read update public key: ";
    QTest::newRow("a folder as key file")
        << "{}"
        << "!"
        << "folder.pub"
        << "unable to read update public key: " +
               support::systemText("file to open is a directory", "Access denied.");
    QTest::newRow("no block in the key file") << "{}"
                                              << "!"
                                              << "noblock.pub"
                                              << "update public key PEM is invalid";
    QTest::newRow("nothing of the signature is base64") << "{}"
                                                        << "!?*-"
                                                        << "update.pub"
                                                        << "signature base64 is invalid";
    QTest::newRow("Chinese is no base64") << "{}" << QStringLiteral("签名") << "update.pub"
                                          << "signature base64 is invalid";
}

void ManifestSignatureTest::refusals() {
    QFETCH(QString, manifest);
    QFETCH(QString, signature);
    QFETCH(QString, keyFile);
    QFETCH(QString, message);
    const VerifyResult result =
        verifyManifestSignature(manifest, signature, keyFolder.filePath(keyFile));
    QVERIFY(!result.ok);
    QCOMPARE(result.message, message);
}

void ManifestSignatureTest::aManifestWithoutItsSignature_data() {
    QTest::addColumn<QString>("manifest");
    QTest::addColumn<QString>("message");
    const QString invalid = QStringLiteral("manifest JSON is invalid");
    const QString noSignature = QStringLiteral("signature is empty");
    QTest::newRow("no text") << "" << invalid;
    QTest::newRow("no JSON") << "MZ\x90" << invalid;
    QTest::newRow("an array") << "[]" << invalid;
    QTest::newRow("a byte-order mark left standing") << QStringLiteral("\uFEFF[]") << invalid;
    QTest::newRow("an object without a signature") << "{}" << noSignature;
    QTest::newRow("an empty signature") << R"({"signature":""})" << noSignature;
    QTest::newRow("a signature of blanks") << R"({"signature":"  "})" << noSignature;
    QTest::newRow("a signature as a number") << R"({"signature":12})" << noSignature;
    QTest::newRow("a signature as an array") << R"({"signature":["AAAA"]})" << noSignature;
    QTest::newRow("a signature as null") << R"({"signature":null})" << noSignature;
}

void ManifestSignatureTest::aManifestWithoutItsSignature() {
    QFETCH(QString, manifest);
    QFETCH(QString, message);
    const VerifyResult result = verifyManifest(manifest, publicKeyPath);
    QVERIFY(!result.ok);
    QCOMPARE(result.message, message);
}

// --- the manifest that is handed on

void ManifestSignatureTest::aProvenManifestIsHandedOnAsItWasParsed() {
    const QString text = support::signedManifest(support::fullManifest(), signer);
    const ManifestProof proof = proveManifest(text, publicKeyPath);
    QVERIFY(proof.result.ok);
    QCOMPARE(proof.result.message, verified);
    QVERIFY(proof.manifest.has_value());
    QCOMPARE(*proof.manifest, QJsonDocument::fromJson(text.toUtf8()).object());
    QCOMPARE(canonicalManifest(*proof.manifest), canonicalManifestText(text));
    QCOMPARE(proof.canonical, canonicalManifestText(text));
    QCOMPARE(proof.attempts, QString("BCryptVerifySignature direct"));
}

void ManifestSignatureTest::aRefusedManifestTellsItsAttempts() {
    QJsonObject manifest = support::fullManifest();
    const ManifestProof none = proveManifest(support::jsonText(manifest), publicKeyPath);
    QCOMPARE(none.result.message, QString("signature is empty"));
    QCOMPARE(none.attempts, QString());
    manifest.insert("signature", "AAAA");
    const ManifestProof foreign = proveManifest(support::jsonText(manifest), publicKeyPath);
    QVERIFY(foreign.attempts.startsWith("BCryptVerifySignature direct=0x"));
    QVERIFY(foreign.result.message.contains('(' + foreign.attempts + ')'));
    QCOMPARE(foreign.canonical, none.canonical);
}

void ManifestSignatureTest::aTextThatIsNoManifestHandsNothingOn() {
    for (const QString &text : {QString(), QString("{"), QString("[]"), QString("5")}) {
        const ManifestProof proof = proveManifest(text, publicKeyPath);
        QCOMPARE(proof.result.message, QString("manifest JSON is invalid"));
        QVERIFY(!proof.manifest.has_value());
        QVERIFY(proof.canonical.isNull());
    }
}

// --- hostile manifests

void ManifestSignatureTest::everyWrongTypeInEveryPlaceIsAnswered() {
    const QList<QJsonValue> values = {QJsonValue(),
                                      true,
                                      -1.5e300,
                                      "text",
                                      QJsonArray{1, QJsonArray{}},
                                      QJsonObject{{"name", QJsonObject{}}}};
    for (const QString &place : placesOf(support::fullManifest())) {
        for (const QJsonValue &value : values) {
            const QJsonObject manifest = replaced(support::fullManifest(), place, value);
            const VerifyResult result =
                verifyManifest(support::signedManifest(manifest, signer), publicKeyPath);
            QVERIFY2(result.ok, qPrintable(place));
        }
    }
}

void ManifestSignatureTest::invalidUtf8IsRefused() {
    QByteArray bytes = support::signedManifest(support::fullManifest(), signer).toUtf8();
    bytes.replace("demo", "d\xC3\x28o");
    const QString text = QString::fromUtf8(bytes);
    QCOMPARE(support::withWindowsNumbers(verifyManifest(text, publicKeyPath).message),
             refusal(text, 256, publicKeyPath));
}

void ManifestSignatureTest::aHundredThousandProjectsAreVerified() {
    const QString manifest = support::signedManifest(support::manifestOfProjects(100000), signer);
    QCOMPARE(verifyManifest(manifest, publicKeyPath).message, verified);
}

void ManifestSignatureTest::aManifestOfAHundredMegabytesIsVerified() {
    const QString manifest = support::signedManifest(support::fullManifest(), signer);
    const QString notes(100 * 1024 * 1024, 'x');
    const QString text = "{\"notes\":\"" + notes + "\"," + manifest.mid(1);
    QCOMPARE(verifyManifest(text, publicKeyPath).message, verified);
}

// --- key files

void ManifestSignatureTest::keyFiles_data() {
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("decodes");
    const QByteArray pem = signer.publicPem().toUtf8();
    const QByteArray body = signer.publicDer().toBase64();
    const QByteArray begin = "-----BEGIN PUBLIC KEY-----\n";
    const QByteArray end = "\n-----END PUBLIC KEY-----\n";
    const auto with = [&](const char *from, const char *to) {
        return QByteArray(pem).replace(from, to);
    };
    QTest::newRow("as tools write it") << pem << true;
    QTest::newRow("lines ending in CRLF") << with("\n", "\r\n") << true;
    QTest::newRow("a byte-order mark in front") << "\xEF\xBB\xBF" + pem << true;
    QTest::newRow("the body on one line") << begin + body + end << true;
    QTest::newRow("the markers on the body's line")
        << "-----BEGIN PUBLIC KEY-----" + body + "-----END PUBLIC KEY-----" << true;
    QTest::newRow("any label") << with("PUBLIC KEY", "SOMETHING ELSE") << true;
    QTest::newRow("two different labels") << with("END PUBLIC KEY", "END X") << true;
    QTest::newRow("a label over two lines") << with("PUBLIC KEY", "PUBLIC\nKEY") << true;
    QTest::newRow("text before and behind") << "Key of line 3\n" + pem + "end" << true;
    QTest::newRow("blanks and empty lines in the body")
        << begin + body.left(10) + " \t\n\n" + body.mid(10) + end << true;
    QTest::newRow("a block that does not end, then a whole one") << begin + pem << true;
    QTest::newRow("a second block behind it") << pem + begin + "AAAA" + end << true;

    QTest::newRow("no beginning") << pem.mid(5) << false;
    QTest::newRow("no end") << pem.left(pem.size() - 10) << false;
    QTest::newRow("no label") << with(" PUBLIC KEY", "") << false;
    QTest::newRow("markers in lower case") << with("BEGIN", "begin") << false;
    QTest::newRow("four dashes") << with("-----", "----") << false;
    QTest::newRow("no body") << begin + end << false;
    QTest::newRow("a body of padding alone") << begin + "====" + end << false;
    QTest::newRow("a header line in the body") << begin + "Proc-Type: 4\n" + body + end << false;
    QTest::newRow("a character outside base64") << begin + "*" + body + end << false;
    QTest::newRow("Chinese in the body")
        << begin + QStringLiteral("公钥").toUtf8() + body + end << false;
}

void ManifestSignatureTest::keyFiles() {
    QFETCH(QByteArray, content);
    QFETCH(bool, decodes);
    const QString path = write("variant.pub", content);
    const QString manifest = support::signedManifest(support::fullManifest(), signer);
    QCOMPARE(verifyManifest(manifest, path).message,
             decodes ? verified : QStringLiteral("update public key PEM is invalid"));
    if (!content.startsWith("\xEF"))
        QCOMPARE(decodePemBody(QString::fromUtf8(content)),
                 decodes ? signer.publicDer() : QByteArray());
}

void ManifestSignatureTest::onlyTheFirstBlockCounts() {
    const QString pem = QStringLiteral("-----BEGIN X-----\nAAAA\n-----END X-----\n");
    QCOMPARE(decodePemBody(pem + signer.publicPem()), QByteArray(3, '\0'));
    const QString path = write("first.pub", (pem + signer.publicPem()).toUtf8());
    const QString manifest = support::signedManifest(support::fullManifest(), signer);
    QCOMPARE(verifyManifest(manifest, path).message,
             QStringLiteral("RSA signature verification failed (CryptDecodeObjectEx failed: "
                            "2148086027), key=%1, canonical_sha256=%2, sig_bytes=256")
                 .arg(path, sha256Hex(canonicalManifestText(manifest).toUtf8())));
}

// A pattern that gives characters back would take hours here.
void ManifestSignatureTest::aHugeKeyFileWithoutABlockIsAnsweredAtOnce() {
    const QString begin = QStringLiteral("-----BEGIN X-----");
    QCOMPARE(decodePemBody(begin + QString(10000000, ' ')), QByteArray());
    QCOMPARE(decodePemBody(begin + QString(10000000, 'A') + "-----END "), QByteArray());
    QCOMPARE(decodePemBody(begin.repeated(500000)), QByteArray());
    QCOMPARE(decodePemBody(QString(10000000, '-')), QByteArray());
}

// --- packages

void ManifestSignatureTest::packageHash_data() {
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QString>("message");
    const QString path = write("package.zip", "package");
    const QString hash = sha256Hex("package");
    const QString other = sha256Hex("other");
    const QString mismatch = QStringLiteral("SHA256 mismatch for %1 (expected %2, got %3)");
    QTest::newRow("lower case") << hash << "SHA256 verified";
    QTest::newRow("upper case") << hash.toUpper() << "SHA256 verified";
    QTest::newRow("blanks around it") << " \t" + hash + "\r\n"
                                      << "SHA256 verified";
    QTest::newRow("no hash") << ""
                             << "expected SHA256 is empty";
    QTest::newRow("a hash of blanks") << " \n "
                                      << "expected SHA256 is empty";
    QTest::newRow("another hash") << other << mismatch.arg(path, other, hash);
    QTest::newRow("another hash in upper case, with blanks")
        << " " + other.toUpper() + " " << mismatch.arg(path, other.toUpper(), hash);
    QTest::newRow("a hash cut short") << hash.left(63) << mismatch.arg(path, hash.left(63), hash);
    QTest::newRow("percent signs") << "%1%2%3" << mismatch.arg(path, "%1%2%3", hash);
}

void ManifestSignatureTest::packageHash() {
    QFETCH(QString, expected);
    QFETCH(QString, message);
    const VerifyResult result = verifyFileSha256(keyFolder.filePath("package.zip"), expected);
    QCOMPARE(result.message, message);
    QCOMPARE(result.ok, message == "SHA256 verified");
}

void ManifestSignatureTest::aPackageThatCannotBeRead() {
    const VerifyResult result = verifyFileSha256(keyFolder.filePath("missing"), "ab");
    QVERIFY(!result.ok);
    QCOMPARE(result.message, support::systemText("No such file or directory", "File not found."));
}

void ManifestSignatureTest::anEmptyPackageHasAHash() {
    const QString path = write("empty.zip", "");
    QVERIFY(
        verifyFileSha256(path, "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855")
            .ok);
}

QUORVANE_TEST_MAIN(QCoreApplication, ManifestSignatureTest)
#include "manifest_signature_test.moc"
