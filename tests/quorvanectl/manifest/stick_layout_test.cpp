// What lies on a stick afterwards, and what never gets there.
#include "quorvanectl/manifest/manifest_attach.h"
#include "quorvanectl/manifest/stick_layout.h"
#include "support/file_kinds.h"
#include "support/key_maker.h"
#include "support/library_file.h"
#include "support/staged_main.h"
#include "update/canonical_manifest.h"

#include "published_update.h"

#include <QJsonArray>

using ctl::layOutStick;
using ctl::StickResult;
using support::FileTree;

using Edit = std::function<void(QJsonObject &)>;
Q_DECLARE_METATYPE(Edit)

class StickLayoutTest : public QObject {
    Q_OBJECT

private:
    QScopedPointer<support::PublishedUpdate> update;
    const support::KeyPair key = support::KeyPair::rsa(2048);
    const std::function<void(qint64, qint64)> nobody = [](qint64, qint64) {};

    QString stick() const { return update->path("stick"); }

    void sign() const;
    StickResult layOut(bool overwrite = false, const QString &keyName = "update.pub") const;

private Q_SLOTS:
    void initTestCase();
    void init();
    void theWholeUpdateAndNothingElse();
    void aMountedFolderIsAVolume();
    void progressEndsWithAllBytes();
    void refusals_data();
    void refusals();
    void anUnsignedManifest();
    void aManifestOfAnotherKey();
    void anUpdateThatIsThereIsReplacedOnlyWhenAsked();

    // Whoever pulls the stick out before the end finds no update on it, not even the old one.
    void theManifestComesLast();

    // And whatever stands in the way beforehand leaves the old one there.
    void whatStandsInTheWayIsFoundFirst();
    void aFolderOnTheStickThatIsALink();
    void whatIsNoFolder();
};

void StickLayoutTest::sign() const {
    const QString text = QString::fromUtf8(ctl::manifestBytes(update->manifest));
    const QByteArray signature = key.sign(canonicalManifestText(text).toUtf8());
    support::writeBytes(update->path("site/manifest.json"),
                        ctl::withSignature(text, signature).toUtf8());
    support::writeBytes(update->path("update.pub"), key.publicPem().toUtf8());
}

StickResult StickLayoutTest::layOut(bool overwrite, const QString &keyName) const {
    return layOutStick(update->site(), stick(),
                       keyName.isEmpty() ? QString() : update->path(keyName), overwrite, nobody);
}

void StickLayoutTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void StickLayoutTest::init() {
    update.reset(new support::PublishedUpdate);
    QVERIFY(QDir().mkpath(stick()));
    sign();
}

void StickLayoutTest::theWholeUpdateAndNothingElse() {
    support::writeBytes(update->path("site/notes.txt"), "not for the stick");
    const StickResult result = layOut();
    QVERIFY2(result.ok, qPrintable(result.error + result.findings.join('|')));
    FileTree expected = support::readTree(update->site());
    expected.remove("notes.txt");
    QCOMPARE(support::below(support::readTree(stick()), "QuorvanerUpdate"), expected);
    QCOMPARE(support::readTree(stick()).size(), 4);
    QCOMPARE(result.manifestPath, stick() + "/QuorvanerUpdate/manifest.json");
    QCOMPARE(result.packages,
             QStringList({"packages/runtime-setup-1.3.0.exe", "packages/launcher-setup-1.4.0.exe",
                          "packages/产线三-1.2.0.zip"}));
    QVERIFY(!result.isVolume);
}

void StickLayoutTest::aMountedFolderIsAVolume() {
    QTemporaryDir inMemory("/dev/shm/stick-XXXXXX");
    if (!inMemory.isValid())
        QSKIP("no file system in memory here");
    QVERIFY(!layOutStick(update->site(), inMemory.path(), QString(), false, nobody).isVolume);
    // The root of one is not ours to write to: the test of the whole road mounts one.
}

void StickLayoutTest::progressEndsWithAllBytes() {
    qint64 last = 0;
    qint64 whole = -1;
    const StickResult result =
        layOutStick(update->site(), stick(), QString(), false, [&](qint64 done, qint64 total) {
            QVERIFY(done > last);
            last = done;
            whole = total;
        });
    QVERIFY(result.ok);
    QCOMPARE(last, whole);
}

void StickLayoutTest::refusals_data() {
    QTest::addColumn<Edit>("change");
    QTest::addColumn<QString>("finding");
    const auto setUrl = [](const QString &url) -> Edit {
        return [url](QJsonObject &root) {
            QJsonObject runtime = root["runtime"].toObject();
            runtime["setupUrl"] = url;
            root["runtime"] = runtime;
        };
    };
    QTest::newRow("a package on a server")
        << setUrl("https://cdn.example/setup-1.3.0.exe")
        << "runtime: https://cdn.example/setup-1.3.0.exe is no path beside the manifest; on a "
           "stick nothing else is found";
    QTest::newRow("a package elsewhere on this machine")
        << setUrl("/etc/hostname")
        << "runtime: /etc/hostname is no path beside the manifest; on a stick nothing else is "
           "found";
    QTest::newRow("a package above the folder")
        << setUrl("packages/../../x.exe")
        << "runtime: packages/../../x.exe leads out of the manifest's folder";
    QTest::newRow("a package that is not there")
        << setUrl("packages/none-1.3.0.exe") << "runtime: there is no file ";
    QTest::newRow("another package than the manifest names")
        << setUrl("packages/launcher-setup-1.4.0.exe") << "runtime: SHA256 mismatch for ";
}

void StickLayoutTest::refusals() {
    QFETCH(Edit, change);
    QFETCH(QString, finding);
    change(update->manifest);
    sign();
    const StickResult result = layOut();
    QVERIFY(!result.ok);
    QCOMPARE(result.findings.join('|').left(finding.size()), finding);
    QVERIFY(support::readTree(stick()).isEmpty());
}

void StickLayoutTest::anUnsignedManifest() {
    update->writeManifest();
    QCOMPARE(layOut(false, QString()).findings, QStringList("the manifest is not signed"));
    QCOMPARE(layOut().findings, QStringList("signature is empty"));
    QVERIFY(support::readTree(stick()).isEmpty());
}

void StickLayoutTest::aManifestOfAnotherKey() {
    support::writeBytes(update->path("other.pub"),
                        support::KeyPair::rsa(2048).publicPem().toUtf8());
    const StickResult result = layOut(false, "other.pub");
    QVERIFY(result.findings.first().startsWith("RSA signature verification failed"));
}

void StickLayoutTest::anUpdateThatIsThereIsReplacedOnlyWhenAsked() {
    QVERIFY(layOut().ok);
    const FileTree first = support::readTree(stick());
    update->manifest["publishedAt"] = "2026-11-21T06:00:00Z";
    sign();
    QCOMPARE(layOut().error,
             stick() + "/QuorvanerUpdate/manifest.json: exists; --force overwrites it");
    QCOMPARE(support::readTree(stick()), first);
    QVERIFY(layOut(true).ok);
    QVERIFY(support::readTree(stick()) != first);
}

void StickLayoutTest::theManifestComesLast() {
    QVERIFY(layOut().ok);
    const QString packages = stick() + "/QuorvanerUpdate/packages";
    QVERIFY(QDir(packages).removeRecursively());
    support::writeBytes(packages, "a file in the way");
    const StickResult result = layOut(true);
    QVERIFY(!result.ok);
    QCOMPARE(result.error, "unable to create directory: " + packages);
    QVERIFY(!QFileInfo::exists(stick() + "/QuorvanerUpdate/manifest.json"));
}

void StickLayoutTest::whatStandsInTheWayIsFoundFirst() {
    QVERIFY(layOut().ok);
    const QString last = stick() + "/QuorvanerUpdate/packages/产线三-1.2.0.zip";
    QVERIFY(QFile::remove(last));
    QVERIFY(QDir().mkpath(last));
    const FileTree before = support::readTree(stick());
    QCOMPARE(layOut(true).error, last + ": is a folder");
    QCOMPARE(support::readTree(stick()), before);
}

void StickLayoutTest::aFolderOnTheStickThatIsALink() {
    const QString elsewhere = update->path("elsewhere");
    QVERIFY(QDir().mkpath(elsewhere) && QDir().mkpath(stick() + "/QuorvanerUpdate"));
    const QString link = stick() + "/QuorvanerUpdate/packages";
    if (!support::makeLink(elsewhere, link))
        QSKIP("no links on this system");
    for (const bool overwrite : {false, true}) {
        const StickResult result = layOut(overwrite);
        QVERIFY(!result.ok);
        QCOMPARE(result.error, link + ": is a link; what it leads to is not written over");
        QVERIFY(QDir(elsewhere).isEmpty());
    }
}

void StickLayoutTest::whatIsNoFolder() {
    const QString none = update->path("none");
    QCOMPARE(layOutStick(update->site(), none, QString(), false, nobody).error,
             none + ": is no folder");
    QCOMPARE(layOutStick(none, stick(), QString(), false, nobody).error,
             none + "/manifest.json: no such file");
    support::writeBytes(update->path("site/manifest.json"), "[]");
    QCOMPARE(layOutStick(update->site(), stick(), QString(), false, nobody).error,
             update->path("site/manifest.json") + ": is no JSON object");
}

QUORVANE_TEST_MAIN(QCoreApplication, StickLayoutTest)
#include "stick_layout_test.moc"
