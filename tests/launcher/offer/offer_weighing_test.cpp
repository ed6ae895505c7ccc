// One weighing of an offer: its record, the views of it, and what it logs.
#include "installation.h"
#include "launcher/launcher_service.h"
#include "launcher/offer/offer_weighing.h"
#include "support/staged_main.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

QJsonObject component(const QString &version) {
    return {{"version", version}, {"setupUrl", "setup.exe"}};
}

QJsonObject project(const QString &version, const QString &name = "line") {
    return {{"name", name}, {"version", version}, {"zipUrl", "a.zip"}, {"zipSha256", "00"}};
}

QJsonObject manifest() {
    return {{"projects", QJsonArray{project("2.0")}},
            {"runtime", component("1.1.0")},
            {"launcher", component("1.2.0")},
            {"editor", component("1.3.0")},
            {"pythonTools", component("1.4.0")}};
}

bool writeRelease(const QString &text) {
    return installation::write(installation::appPath("config/release_version.json"), text);
}

// The lines that compare the project's versions.
int comparisons() {
    return installation::takeLog().filter("Project version check: ").size();
}

} // namespace

class OfferWeighingTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void theRecordTellsEachItem();
    void whatIsInstalledAloneOffersNothing();
    void aViewKeepsWhatWasWeighedAndTheNextWeighingReadsAnew();
    void aCheckAndItsSummaryReadAnewEachTime();
    void theComparisonIsLoggedAsOftenAsItIsMade();
    void aRefreshAndASkipLogTheComparisonTwice();

private:
    static QString told(const WeighedItem &item);
    UpdateContext context;
};

void OfferWeighingTest::init() {
    installation::reset();
    QDir(AppPaths::installRoot() + "/python").removeRecursively();
    context = UpdateContext();
    context.projectPath =
        installation::addProject("folder", R"({"project": {"name": "line", "version": "v1.5"}})");
    context.snapshot.baseLocation = "https://host/";
    (void)installation::takeLog();
}

void OfferWeighingTest::theRecordTellsEachItem() {
    QVERIFY(writeRelease(R"({"runtimePackageVersion": "v1.0", "editorMinVersion": "1.3.0"})"));
    context.snapshot.projectEntry = project(" v2.0 ");
    context.snapshot.runtimeEntry = component("1.1.0");
    context.snapshot.launcherEntry = QJsonObject{{"setupUrl", "setup_1.2.0.exe"}};
    context.snapshot.editorEntry = component("1.3.0");
    const OfferWeighing offer = context.weigh();
    QCOMPARE(told(offer.project), "yes |  v2.0  | 1.5 | 可更新到 2.0。");
    QCOMPARE(told(offer.runtime), "yes | 1.1.0 | v1.0 | 可从 v1.0 更新到 1.1.0。");
    QCOMPARE(told(offer.launcher), "yes | 1.2.0 |  | 可从 未知版本 更新到 1.2.0。");
    QCOMPARE(told(offer.editor), "no | 1.3.0 | 1.3.0 | 目标版本 1.3.0 不高于当前版本 1.3.0。");
    QCOMPARE(told(offer.pythonTools), "no |  |  | Python 工具 未提供 setupUrl。");
    QCOMPARE(offer.projectName, QString("line"));
}

void OfferWeighingTest::whatIsInstalledAloneOffersNothing() {
    QVERIFY(writeRelease(R"({"runtimePackageVersion": "1.0"})"));
    const OfferWeighing offer = installedNow("1.5");
    QCOMPARE(told(offer.project), "no |  | 1.5 | ");
    QCOMPARE(told(offer.runtime), "no |  | 1.0 | ");
    QCOMPARE(told(offer.launcher), "no |  |  | ");
    QCOMPARE(offerFingerprint(offer), QString());
    QCOMPARE(offerItems(offer), QString());
}

void OfferWeighingTest::aViewKeepsWhatWasWeighedAndTheNextWeighingReadsAnew() {
    QVERIFY(writeRelease(R"({"launcherPackageVersion": "1.0"})"));
    context.snapshot.runtimeEntry = component("1.1.0");
    context.snapshot.launcherEntry = component("1.2.0");
    const OfferWeighing before = context.weigh();
    QVERIFY(writeRelease(R"({"launcherPackageVersion": "1.2.0"})")); // an installer is done
    QCOMPARE(offerFingerprint(before), QString("launcher:1.2.0|runtime:1.1.0"));
    QCOMPARE(offerItems(before), QString("runtime:1.1.0, launcher:1.2.0"));
    QVERIFY(offerChoices(before).launcher.available);
    QCOMPARE(context.onlineUpdateFingerprint(), QString("runtime:1.1.0"));
    QCOMPARE(context.onlineUpdateItems(), QString("runtime:1.1.0"));
    QVERIFY(!context.choices().launcher.available);
}

void OfferWeighingTest::aCheckAndItsSummaryReadAnewEachTime() {
    QString summary;
    QVERIFY(context.evaluateManifest({{"launcher", component("1.2.0")}}, &summary));
    QVERIFY(writeRelease(R"({"launcherPackageVersion": "1.2.0"})"));
    QVERIFY(!context.evaluateManifest({{"launcher", component("1.2.0")}}, &summary));
    QVERIFY(summary.contains("目标版本 1.2.0 不高于当前版本 1.2.0。"));
}

// Each of these compares the project's versions for itself and says so.
void OfferWeighingTest::theComparisonIsLoggedAsOftenAsItIsMade() {
    QString summary;
    QVERIFY(context.evaluateManifest(manifest(), &summary));
    QCOMPARE(comparisons(), 1);
    (void)context.onlineUpdateFingerprint();
    QCOMPARE(comparisons(), 1);
    (void)context.onlineUpdateItems();
    QCOMPARE(comparisons(), 1);
    (void)context.choices();
    QCOMPARE(comparisons(), 1);
    (void)context.isProjectEligible();
    QCOMPARE(comparisons(), 1);
    context.snapshot.projectEntry = project("");
    (void)context.choices(); // nothing to compare with
    QCOMPARE(comparisons(), 0);
}

void OfferWeighingTest::aRefreshAndASkipLogTheComparisonTwice() {
    LauncherService service;
    service.projectPath = context.projectPath;
    service.snapshot.manifestText = QString::fromUtf8(QJsonDocument(manifest()).toJson());
    service.updateAvailable = true;
    service.refreshStatus(); // for the summary, and for the fingerprint of the prompt
    QCOMPARE(comparisons(), 2);
    service.skipThisOnlineVersion(); // for the fingerprint and for the items
    const QStringList log = installation::takeLog();
    QCOMPARE(log.size(), 3);
    QCOMPARE(log[0],
             "Project version check: local=1.5 remote=2.0 compare=-1 path=" + context.projectPath);
    QCOMPARE(log[1], log[0]);
    QVERIFY(log[2].startsWith("Online update skipped fingerprint="));
}

QString OfferWeighingTest::told(const WeighedItem &item) {
    return QStringList{item.available ? "yes" : "no", item.told, item.installed, item.reason}.join(
        " | ");
}

QUORVANE_TEST_MAIN(QCoreApplication, OfferWeighingTest)
#include "offer_weighing_test.moc"
