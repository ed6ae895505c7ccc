// A release into a site that somebody has written to: what is above what is on offer, what goes on beside it,
// and that a site that is refused is as it was.
#include "quorvanectl/release/site_release.h"

#include "quorvanectl/manifest/manifest_attach.h"
#include "quorvanectl/release/site_lock.h"
#include "support/file_tree.h"
#include "support/library_file.h"
#include "support/staged_main.h"
#include "update/canonical_manifest.h"

#include "publisher.h"
#include "small_project.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSysInfo>
#include <QTemporaryDir>

using ctl::ReleaseResult;
using support::FileTree;

namespace {

const QString zip12 = "packages/产线三-1.2.0.zip";

QByteArray signedText(const QByteArray &manifest) {
    const QByteArray bytes = canonicalManifestText(manifest).toUtf8();
    return ctl::withSignature(manifest, support::publisher::sign(bytes)).toUtf8();
}

} // namespace

class SiteReleaseTest : public QObject {
    Q_OBJECT

private:
    QScopedPointer<QTemporaryDir> folder;
    ctl::SigningKey key;

    QString path(const QString &name) const { return folder->filePath(name); }
    FileTree site() const { return support::readTree(path("site")); }
    ctl::ReleaseWish wish() const;
    ReleaseResult release() const { return ctl::releaseProject(wish(), key); }

private Q_SLOTS:
    void initTestCase();
    void init();
    void whatIsOnOffer_data();
    void whatIsOnOffer();
    void whatIsRefusedLeavesTheSite_data();
    void whatIsRefusedLeavesTheSite();
    void aSiteThatWasMadeForNothingGoes_data();
    void aSiteThatWasMadeForNothingGoes();
    void aTrialMakesNoSite();
    void thePackageOfOneThatWasBrokenOff();
    void whatIsCarriedOverIsTold();
    void oneAtATime();
};

void SiteReleaseTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
    QString error;
    key = ctl::SigningKey::fromPem(
        support::publisher::privatePem(), "private.pem",
        [](ctl::Passphrase &, QString *) { return false; }, &error);
    QVERIFY2(key.isValid(), qPrintable(error));
}

void SiteReleaseTest::init() {
    folder.reset(new QTemporaryDir);
    support::writeTree(path("line3"), support::smallProject());
}

ctl::ReleaseWish SiteReleaseTest::wish() const {
    return {path("site"), path("line3"), "1.2.0", {}, false};
}

void SiteReleaseTest::whatIsOnOffer_data() {
    QTest::addColumn<QByteArray>("record"); // of the published manifest
    QTest::addColumn<QString>("offered");   // empty: the release is above it
    const auto row = [](const char *name, const QByteArray &project, const QByteArray &version,
                        const QString &offered) {
        QTest::newRow(name) << R"({"name": ")" + project + R"(", "version": ")" + version +
                                   R"(", "zipUrl": "p.zip", "zipSha256": ")" + QByteArray(64, '0') +
                                   "\"}"
                            << offered;
    };
    row("the version before", "产线三", "1.1.9", "");
    row("a lower one of four numbers", "产线三", "1.1.9.9", "");
    row("none", "产线三", "", "");
    row("a word", "产线三", "newest", "");
    row("the same", "产线三", "1.2.0", "1.2.0");
    row("the same with a v", "产线三", "v1.2.0", "1.2.0");
    row("the same in two numbers", "产线三", "1.2", "1.2");
    row("the same with a fourth number", "产线三", "1.2.0.0", "1.2.0.0");
    row("a higher one of four numbers", "产线三", "1.2.0.1", "1.2.0.1");
    row("a higher one whose letters come before", "产线三", "1.10.0", "1.10.0");
    row("of another project", "产线四", "9.0.0", "");
}

// A project that is on offer is replaced where it stands, whatever became of its package.
void SiteReleaseTest::whatIsOnOffer() {
    QFETCH(QByteArray, record);
    QFETCH(QString, offered);
    support::writeTree(
        path("site"),
        {{"manifest.json", signedText("{\"projects\": [" + record + "]}")}, {"p.zip", ""}});
    const FileTree before = site();
    const ReleaseResult result = release();
    if (!offered.isEmpty()) {
        QCOMPARE(result.error, "--version 1.2.0: is not above " + offered + ", which " +
                                   path("site/manifest.json") + " offers");
        QCOMPARE(site(), before);
    } else if (record.contains("产线四")) { // its own package is a mistake, and is told
        QCOMPARE(result.error, QString());
        QVERIFY(!result.ok && ctl::hasErrors(result.lint));
        QCOMPARE(site(), before);
    } else {
        QVERIFY2(result.ok, qPrintable(result.error));
        const QJsonArray projects =
            QJsonDocument::fromJson(site().value("manifest.json")).object()["projects"].toArray();
        QCOMPARE(projects.size(), 1);
        QCOMPARE(projects[0].toObject()["version"].toString(), QString("1.2.0"));
    }
}

void SiteReleaseTest::whatIsRefusedLeavesTheSite_data() {
    QTest::addColumn<FileTree>("there");
    QTest::addColumn<QString>("error"); // "@" stands for the site
    QTest::addColumn<QString>("fault");
    const QByteArray ours = signedText("{}");
    const QString notOurs = "@/manifest.json: is not signed with this key; nothing is carried over";
    const QString other = ": lies there with other bytes; a package that has its name never "
                          "changes: take another version";
    QTest::newRow("a manifest without a signature")
        << FileTree{{"manifest.json", "{}"}} << "" << notOurs;
    QTest::newRow("a manifest that was changed since")
        << FileTree{{"manifest.json", QByteArray(ours).replace("{", "{\"plugins\":[{}],")}} << ""
        << notOurs;
    QTest::newRow("a manifest with what no signature covers")
        << FileTree{{"manifest.json", QByteArray(ours).replace("{", "{\"hint\": \"a\",")}} << ""
        << "@/manifest.json: holds what no signature covers and nobody reads: hint; take it out "
           "there, which leaves the signature valid, and release again";
    QTest::newRow("a manifest that is a list")
        << FileTree{{"manifest.json", "[]"}} << "@/manifest.json: is no JSON object"
        << "";
    QTest::newRow("a folder in the manifest's place")
        << FileTree{{"manifest.json/", ""}} << "@/manifest.json: is a folder"
        << "";
    QTest::newRow("a package of that name with other bytes")
        << FileTree{{zip12, "other"}} << "@/" + zip12 + other << "";
    QTest::newRow("a package of that name that is empty")
        << FileTree{{zip12, ""}} << "@/" + zip12 + other << "";
    QTest::newRow("a folder in the package's place")
        << FileTree{{zip12 + "/", ""}} << "@/" + zip12 + other << "";
    QTest::newRow("a file in the place of the packages")
        << FileTree{{"packages", "x"}} << "@/packages: cannot be made"
        << "";
    QTest::newRow("a file in the place of the work folder")
        << FileTree{{".quorvanectl-release", "x"}} << "@: cannot write there"
        << "";
}

void SiteReleaseTest::whatIsRefusedLeavesTheSite() {
    QFETCH(FileTree, there);
    QFETCH(QString, error);
    QFETCH(QString, fault);
    support::writeTree(path("site"), there);
    const FileTree before = site();
    const ReleaseResult result = release();
    QVERIFY(!result.ok);
    QCOMPARE(result.error, error.replace("@", path("site")));
    QCOMPARE(result.fault, fault.replace("@", path("site")));
    QCOMPARE(site(), before);
}

void SiteReleaseTest::aSiteThatWasMadeForNothingGoes_data() {
    QTest::addColumn<FileTree>("change"); // of the project
    QTest::addColumn<QString>("base");
    QTest::newRow("a project that a line PC would refuse") << FileTree{{"line3.yslib", "{}"}} << "";
    QTest::newRow("a second project file") << FileTree{{"copy.yslib", "{}"}} << "";
    QTest::newRow("an address that no launcher fetches") << FileTree() << "http://cdn.example";
}

void SiteReleaseTest::aSiteThatWasMadeForNothingGoes() {
    QFETCH(FileTree, change);
    QFETCH(QString, base);
    support::writeTree(path("line3"), change);
    ctl::ReleaseWish wanted = wish();
    wanted.base = base;
    QVERIFY(!ctl::releaseProject(wanted, key).ok);
    QCOMPARE(QDir(folder->path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList("line3"));
}

void SiteReleaseTest::aTrialMakesNoSite() {
    ctl::ReleaseWish wanted = wish();
    wanted.isTrial = true;
    const ReleaseResult result = ctl::releaseProject(wanted, key);
    QVERIFY2(result.ok, qPrintable(result.error));
    QCOMPARE(result.pack.zipPath, path("site/" + zip12));
    QCOMPARE(result.manifestPath, path("site/manifest.json"));
    QVERIFY(!QFileInfo::exists(path("site")));
}

// Equal content, equal bytes: it may lie there, and is not replaced.
void SiteReleaseTest::thePackageOfOneThatWasBrokenOff() {
    QVERIFY(release().ok);
    QVERIFY(QFile::remove(path("site/manifest.json")));
    support::writeTree(path("site"), {{".quorvanectl-release/packages/half.zip", "PK"}});
    const QDateTime written = QFileInfo(path("site/" + zip12)).lastModified();
    const ReleaseResult result = release();
    QVERIFY2(result.ok, qPrintable(result.error));
    QVERIFY(result.wasThere);
    QCOMPARE(QFileInfo(path("site/" + zip12)).lastModified(), written);
    QCOMPARE(site().keys(), QStringList({"manifest.json", zip12}));
}

void SiteReleaseTest::whatIsCarriedOverIsTold() {
    support::writeTree(
        path("site"),
        {{"e-1.3.0.exe", "an editor"},
         {"manifest.json",
          signedText(R"({"editor": {"setupUrl": "e-1.3.0.exe", "version": "9.9.9", "setupSha256":
"9c29cc4ddb6b10ecbd80ff5d5dbad4b0ecfdbe07b9ba9ff6fd79a8a19e6b5fd9"}})")}});
    const ReleaseResult refused = release();
    QVERIFY(!refused.ok); // its hash is another
    QCOMPARE(refused.carriedOver, QStringList("editor 1.3.0: e-1.3.0.exe"));
    const QString sum = QCryptographicHash::hash("an editor", QCryptographicHash::Sha256).toHex();
    support::writeTree(
        path("site"),
        {{"manifest.json", signedText(R"({"editor": {"setupUrl": "e-1.3.0.exe", "setupSha256": ")" +
                                      sum.toUtf8() + "\"}}")}});
    const ReleaseResult result = release();
    QVERIFY2(result.ok, qPrintable(result.error));
    QVERIFY(!result.wasThere);
    QCOMPARE(result.carriedOver, QStringList("editor 1.3.0: e-1.3.0.exe"));
}

void SiteReleaseTest::oneAtATime() {
    support::writeTree(path("site"), {{"a", ""}});
    {
        ctl::SiteLock first(path("site"));
        QString error;
        QVERIFY2(first.take(&error), qPrintable(error));
        const ReleaseResult second = release();
        // Windows spells the name of a PC in capitals in one place and not in the other.
        const QString holder = QString(": another release is at work there: process %1 on %2")
                                   .arg(QString::number(QCoreApplication::applicationPid()),
                                        QSysInfo::machineHostName());
        QCOMPARE(second.error.toLower(), (path("site") + holder).toLower());
        ctl::ReleaseWish trial = wish();
        trial.isTrial = true; // which only reads
        QVERIFY(ctl::releaseProject(trial, key).ok);
    }
    QVERIFY(release().ok);
    QVERIFY(!QFileInfo::exists(path("site/.quorvanectl-release.lock")));
}

QUORVANE_TEST_MAIN(QCoreApplication, SiteReleaseTest)
#include "site_release_test.moc"
