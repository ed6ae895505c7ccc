// How often the files of an installation are opened for one weighing of an offer. The kernel counts the
// texts; the version of an executable is read by a function that stands here in the product's place.
#include "installation.h"
#include "launcher/launcher_service.h"
#include "launcher/offer/update_context.h"
#include "support/open_counter.h"
#include "support/staged_main.h"
#include "update/files/file_version.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

QStringList executables; // whose versions were asked for, in order

QJsonObject component(const QString &version) {
    return {{"version", version}, {"setupUrl", "setup.exe"}};
}

QJsonObject manifest() {
    const QJsonObject project{
        {"name", "line"}, {"version", "2.0"}, {"zipUrl", "a.zip"}, {"zipSha256", "00"}};
    return {{"projects", QJsonArray{project}},
            {"runtime", component("1.1.0")},
            {"launcher", component("1.2.0")},
            {"editor", component("1.3.0")},
            {"pythonTools", component("1.4.0")}};
}

} // namespace

QString fileVersionText(const QString &path) {
    executables.append(QFileInfo(path).fileName());
    return QString();
}

class OfferReadsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void eachFileIsOpenedOnce_data();
    void eachFileIsOpenedOnce();
    void aProjectWithoutARecordIsNotRead();
    void aSkipReadsTheProjectOnce();

private:
    // Of the files that were opened since the last call, and how often; executables among them.
    QStringList opened();

    UpdateContext context;
    std::unique_ptr<support::OpenCounter> counter;
};

void OfferReadsTest::init() {
    installation::reset();
    const QString python = AppPaths::installRoot() + "/python";
    QVERIFY(QDir().mkpath(python));
    QVERIFY(installation::write(python + "/.quorvane_python_manifest.json", "{}"));
    QVERIFY(installation::write(installation::appPath("config/release_version.json"), "{}"));
    context = UpdateContext();
    context.projectPath =
        installation::addProject("folder", R"({"project": {"name": "line", "version": "v1.5"}})");
    context.snapshot.baseLocation = "https://host/";
    counter = std::make_unique<support::OpenCounter>(QStringList{
        QFileInfo(context.projectPath).path(), python, installation::appPath("config")});
}

QStringList OfferReadsTest::opened() {
    QStringList all = executables;
    executables.clear();
    const support::Opens texts = counter->take();
    for (auto text = texts.cbegin(); text != texts.cend(); ++text) {
        for (int i = 0; i < text.value(); ++i)
            all.append(QFileInfo(text.key()).fileName());
    }
    all.sort();
    return all;
}

void OfferReadsTest::eachFileIsOpenedOnce_data() {
    QTest::addColumn<QString>("project");
    QTest::addColumn<QString>("release");
    QTest::addColumn<QStringList>("expected");
    const QString release = "release_version.json";
    const QString launcher = QFileInfo(AppPaths::applicationFile()).fileName();
    QTest::newRow("all versions told")
        << R"({"project": {"name": "line", "version": "1.5"}})"
        << R"({"runtimePackageVersion": "1", "launcherPackageVersion": "1",
               "editorMinVersion": "1", "pythonToolsMinVersion": "1"})"
        << QStringList{"demo.yslib", release};
    QTest::newRow("no version told") << R"({"project": {"name": "line"}})"
                                     << "{}" << QStringList{"demo.yslib",
                                                            ".quorvane-installed-version",
                                                            release,
                                                            "LineRunner.exe",
                                                            launcher,
                                                            "LineStudio.exe",
                                                            ".quorvane_python_manifest.json"};
}

void OfferReadsTest::eachFileIsOpenedOnce() {
    QFETCH(QString, project);
    QFETCH(QString, release);
    QFETCH(QStringList, expected);
    expected.sort();
    QVERIFY(installation::write(context.projectPath, project));
    QVERIFY(installation::write(
        QFileInfo(context.projectPath).path() + "/.quorvane-installed-version", "1.0\n"));
    QVERIFY(installation::write(installation::appPath("config/release_version.json"), release));
    (void)opened();
    QString summary;
    QVERIFY(context.evaluateManifest(manifest(), &summary));
    QCOMPARE(opened(), expected);
    QVERIFY(!context.onlineUpdateFingerprint().isEmpty());
    QCOMPARE(opened(), expected);
    QVERIFY(!context.onlineUpdateItems().isEmpty());
    QCOMPARE(opened(), expected);
    QVERIFY(context.choices().project.available);
    QCOMPARE(opened(), expected);
}

void OfferReadsTest::aProjectWithoutARecordIsNotRead() {
    context.snapshot.runtimeEntry = component("1.1.0");
    (void)opened();
    QCOMPARE(context.onlineUpdateFingerprint(), QString("runtime:1.1.0"));
    QVERIFY(!opened().contains("demo.yslib"));
}

void OfferReadsTest::aSkipReadsTheProjectOnce() {
    LauncherService service;
    service.projectPath = context.projectPath;
    service.snapshot.manifestText = QString::fromUtf8(QJsonDocument(manifest()).toJson());
    service.updateAvailable = true;
    service.refreshStatus();
    (void)opened();
    service.skipThisOnlineVersion(); // for the fingerprint and for the items
    QCOMPARE(opened().count("demo.yslib"), 1);
}

QUORVANE_TEST_MAIN(QCoreApplication, OfferReadsTest)
#include "offer_reads_test.moc"
