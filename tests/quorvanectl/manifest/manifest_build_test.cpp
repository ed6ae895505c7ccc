// A manifest made from packages says where they lie and what they are.
#include "quorvanectl/manifest/manifest_build.h"
#include "quorvanectl/package/project_package.h"
#include "support/library_file.h"
#include "support/platform.h"
#include "support/staged_main.h"
#include "update/http_fetch.h"

#include "published_update.h"

#include <QCryptographicHash>
#include <QJsonArray>

using ctl::buildManifest;
using ctl::ManifestWish;

class ManifestBuildTest : public QObject {
    Q_OBJECT

private:
    QScopedPointer<support::PublishedUpdate> update;

    ManifestWish wish() const;
    QString zip() const;
    static QString sum(const QString &file);

private Q_SLOTS:
    void initTestCase();
    void oneRecordEach();
    void aBaseMakesUrls_data();
    void aBaseMakesUrls();
    void refusals_data();
    void aPackageThatNoLauncherCanHold();
    void refusals();
    void aFileThatIsNoPackage();
    void aPlugInThatIsNone();
};

ManifestWish ManifestBuildTest::wish() const {
    ManifestWish wanted;
    wanted.folder = update->site();
    wanted.publishedAt = "2026-11-20T06:00:00Z";
    wanted.projects = QStringList{zip()};
    return wanted;
}

QString ManifestBuildTest::zip() const {
    return update->path("site/packages/产线三-1.2.0.zip");
}

QString ManifestBuildTest::sum(const QString &file) {
    QByteArray text;
    if (support::onWindows) { // there is no openssl
        text = QCryptographicHash::hash(support::bytesOf(file), QCryptographicHash::Sha256);
        return QString::fromLatin1(text.toHex());
    }
    return support::openssl({"dgst", "-sha256", "-r", file}, &text)
               ? QString::fromLatin1(text.left(64))
               : QString();
}

void ManifestBuildTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
    update.reset(new support::PublishedUpdate);
}

void ManifestBuildTest::oneRecordEach() {
    const QJsonObject expected{
        {"schemaVersion", 1},
        {"publishedAt", "2026-11-20T06:00:00Z"},
        {"runtime",
         QJsonObject{{"version", "1.3.0"},
                     {"minVersion", "1.0.0"},
                     {"setupUrl", "packages/runtime-setup-1.3.0.exe"},
                     {"setupSha256", sum(update->path("site/packages/runtime-setup-1.3.0.exe"))}}},
        {"launcher",
         QJsonObject{{"version", "1.4.0"},
                     {"setupUrl", "packages/launcher-setup-1.4.0.exe"},
                     {"setupSha256", sum(update->path("site/packages/launcher-setup-1.4.0.exe"))}}},
        {"plugins",
         QJsonArray{QJsonObject{
             {"id", "camera"}, {"minVersion", "1.1.0"}, {"path", "plugins/camera.dll"}}}},
        {"projects", QJsonArray{QJsonObject{{"name", "产线三"},
                                            {"version", "1.2.0"},
                                            {"zipUrl", "packages/产线三-1.2.0.zip"},
                                            {"zipSha256", sum(zip())}}}}};
    QCOMPARE(update->manifest, expected);
}

void ManifestBuildTest::aBaseMakesUrls_data() {
    QTest::addColumn<QString>("base");
    QTest::newRow("with a slash") << "https://cdn.example/quorvaner/";
    QTest::newRow("without") << "https://cdn.example/quorvaner";
}

void ManifestBuildTest::aBaseMakesUrls() {
    QFETCH(QString, base);
    ManifestWish wanted = wish();
    wanted.base = base;
    QString error;
    const QJsonObject manifest = buildManifest(wanted, &error);
    QCOMPARE(manifest["projects"].toArray()[0].toObject()["zipUrl"].toString(),
             QString("https://cdn.example/quorvaner/packages/产线三-1.2.0.zip"));
}

void ManifestBuildTest::refusals_data() {
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("component"); // empty: a project
    QTest::addColumn<QString>("reason");
    QTest::newRow("a package that is not there") << "site/none.zip" << QByteArray() << ""
                                                 << "no such file";
    QTest::newRow("an installer that is not there")
        << "site/none-1.2.0.exe" << QByteArray() << "editor"
        << "no such file";
    QTest::newRow("a package outside") << "other.zip" << QByteArray("x") << ""
                                       << "lies outside the manifest's folder";
    QTest::newRow("an installer without a version in its name")
        << "site/setup.exe" << QByteArray("x") << "editor"
        << "its name holds no version, as in setup-1.2.0.exe";
    QTest::newRow("an installer with two numbers in its name")
        << "site/setup-1.2.exe" << QByteArray("x") << "editor"
        << "its name holds no version, as in setup-1.2.0.exe";
    QTest::newRow("an empty installer") << "site/setup-1.2.0.exe" << QByteArray("") << "editor"
                                        << "is empty, and a launcher takes no empty download";
}

void ManifestBuildTest::aPackageThatNoLauncherCanHold() {
    ManifestWish wanted = wish();
    const QString path = update->path("site/large.zip");
    QFile large(path);
    QVERIFY(large.open(QIODevice::WriteOnly) && large.resize(largestDownload + 1));
    wanted.projects = QStringList{path};
    QString error;
    QVERIFY(buildManifest(wanted, &error).isEmpty());
    QCOMPARE(error, path + ": is larger than 2 GiB: a launcher holds a download whole in memory, "
                           "and none larger");
    QVERIFY(ctl::sizeFault(largestDownload).isEmpty());
}

void ManifestBuildTest::refusals() {
    QFETCH(QString, file);
    QFETCH(QByteArray, content);
    QFETCH(QString, component);
    QFETCH(QString, reason);
    const QString path = update->path(file);
    if (!content.isNull())
        support::writeBytes(path, content);
    ManifestWish wanted = wish();
    if (component.isEmpty())
        wanted.projects = QStringList{path};
    else
        wanted.installers = {{component, path}};
    QString error;
    QVERIFY(buildManifest(wanted, &error).isEmpty());
    QCOMPARE(error, path + ": " + reason);
}

void ManifestBuildTest::aFileThatIsNoPackage() {
    ManifestWish wanted = wish();
    wanted.projects = QStringList{update->path("site/packages/runtime-setup-1.3.0.exe")};
    QString error;
    QVERIFY(buildManifest(wanted, &error).isEmpty());
    QVERIFY2(error.startsWith(wanted.projects.first() + ": "), qPrintable(error));
}

void ManifestBuildTest::aPlugInThatIsNone() {
    ManifestWish wanted = wish();
    wanted.plugins = QStringList{"camera,1.1.0"};
    QString error;
    QVERIFY(buildManifest(wanted, &error).isEmpty());
    QCOMPARE(error, QString("camera,1.1.0: a plug-in is given as id,minVersion,path"));
}

QUORVANE_TEST_MAIN(QCoreApplication, ManifestBuildTest)
#include "manifest_build_test.moc"
