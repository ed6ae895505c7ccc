// The user's yes: what the flow does from the chosen items to the start of the target, with real
// workers, packages and installers; and that each end is reported once, whatever comes together.
#include "launcher/launcher_service.h"

#include "ended_future.h"
#include "installers.h"
#include "signal_log.h"
#include "support/scripted_server.h"
#include "support/unpacking.h"
#include "update_offer.h"

#include <QCoreApplication>
#include <QThreadPool>

Q_DECLARE_METATYPE(ApplyResult)
Q_DECLARE_METATYPE(UpdateSelection)

using State = LauncherService::State;
using update_offer::Offer;

namespace {

constexpr char taskCancelledText[] = "更新任务已取消。";

ApplyResult succeeded(const QString &projectPath) {
    return {true, "Project updated", projectPath, QString()};
}

ApplyResult failed(const QString &message, const QString &errorClass) {
    return {false, message, QString(), errorClass};
}

QStringList applyStarts() {
    return {"state ApplyingUpdate", "active false", "status 正在应用更新（后台执行）...",
            "progress check -1 detail:verify-manifest"};
}

QStringList applyReports(bool success) {
    return {"progress download -1 detail:download-project",
            success ? "progress verify -1 detail:verify-ok"
                    : "progress verify -1 detail:verify-fail"};
}

QStringList setupReports() {
    return {"progress setup -1 detail:setup-prepare", "progress setup -1 detail:setup-prepare"};
}

QStringList setupEnds(const QString &details) {
    return {"status 已处理所选更新内容，正在启动…", "applied " + details, "active false"};
}

QStringList launched() {
    return {"state Launch", "status 已启动 LineRunner.exe", "state Monitor",
            "status 正在监护目标进程。日志：" + AppPaths::launchLogPath()};
}

QStringList notApplied(const QString &text) {
    return {"state RepairMode", "status " + text, "not applied " + text, "active false"};
}

int endsIn(const QStringList &entries) {
    return int(std::count_if(entries.begin(), entries.end(), [](const QString &entry) {
        return entry.startsWith("applied ") || entry.startsWith("not applied ");
    }));
}

support::FileTree runnable(const QByteArray &version) {
    return update_offer::project(version);
}

// A service whose user has an offer before him.
struct Launcher {
    Offer offer{runnable("1.9")};
    QString project = update_offer::install(runnable("1.0"));
    LauncherService service;
    SignalLog log{service};

    Launcher() {
        service.projectPath = project;
        service.state = State::RepairMode;
        service.snapshot = offer.snapshot;
        service.updateAvailable = true;
        service.selection = {true, false, false, false, false};
    }

    void offerOnline(support::ScriptedServer &server) {
        offer.putOnline(server.url("/p/").toString(), "line.zip");
        service.snapshot = offer.snapshot;
    }

    void chooseRuntime() {
        support::writeTree(offer.place.path(), {{"setup.exe", installers::named("runtime")}});
        service.selection.runtime = true;
        service.snapshot.runtimeEntry = {{"version", "2.0"}, {"setupUrl", "setup.exe"}};
    }

    [[nodiscard]] QString installerNote() const {
        return "Runtime 安装包已自动启动：" + offer.place.filePath("setup.exe") +
               "（组件版本将在安装程序完成后写入本地配置）";
    }

    void waitForEnd() { QTRY_VERIFY_WITH_TIMEOUT(endsIn(log.entries()) > 0, 20000); }
};

// The log without what time and chance decide.
QStringList logLines() {
    QStringList lines;
    for (QString line : installation::takeLog()) {
        line.replace(QRegularExpression("(apply|setup)_[0-9a-f]{8}"), "\\1_ID");
        line.replace(QRegularExpression("in \\d+ ms"), "in N ms");
        line.replace(QRegularExpression("_\\d{8}_\\d{6}"), "_TIME");
        lines.append(line);
    }
    return lines;
}

QString successText() {
    return "Project updated to 2.0.0 in N ms. Backup: " + AppPaths::updateBackupDirectory() +
           "/line_TIME";
}

} // namespace

class UpdateApplyTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void aRequestIsRefused_data();
    void aRequestIsRefused();
    void aRequestDuringATaskIsAnsweredByTheStatus();
    void theProjectAndAComponent();
    void aSetupAlone();
    void anyChoiceIsOne_data();
    void anyChoiceIsOne();
    void theTargetIsToldOnceToReloadItsModels();
    void theFlowGoesOnWithTheNewProjectFile();
    void aFailureWithAClass();
    void aFailureWithoutAClass();
    void aFailureIsToldWhenAllIsDone_data();
    void aFailureIsToldWhenAllIsDone();
    void aCancelDuringTheDownload();
    void theApplyEnds_data();
    void theApplyEnds();
    void aCancelDuringTheSetup();
    void aProjectSelectedDuringAnUpdateStays_data();
    void aProjectSelectedDuringAnUpdateStays();
    void aProjectSelectedDuringAnEarlierUpdateIsAsAnyOther();
    void aRequestBeforeTheEndIsToldIsRefused_data();
    void aRequestBeforeTheEndIsToldIsRefused();
    void twoEndsInOneTurnAreEachTold();
    void theEndIsReportedOnce_data();
    void theEndIsReportedOnce();
    void aWindowThatClosesEndsTheWorkerAndReportsNothing();
};

void UpdateApplyTest::initTestCase() {
    support::provideUnpacking();
}

void UpdateApplyTest::init() {
    installation::reset();
    installers::forget();
    QVERIFY(update_offer::trust());
    QVERIFY(installation::addTarget("wait"));
    (void)installation::takeLog();
}

// --- The request ----------------------------------------------------------------------------

void UpdateApplyTest::aRequestIsRefused_data() {
    QTest::addColumn<bool>("available");
    QTest::addColumn<bool>("anything");
    QTest::addColumn<QString>("version");
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing is on offer") << false << false << "2.0.0"
                                         << "当前没有可应用的已验证更新。";
    QTest::newRow("nothing was ticked") << true << false << "2.0.0"
                                        << "未选择任何更新内容。";
    QTest::newRow("the project is up to date")
        << true << true << "1.0"
        << "项目更新不可用：当前项目版本 1.0 已不低于更新版本 1.0。";
}

void UpdateApplyTest::aRequestIsRefused() {
    QFETCH(bool, available);
    QFETCH(bool, anything);
    QFETCH(QString, version);
    QFETCH(QString, text);
    Launcher launcher;
    launcher.service.updateAvailable = available;
    launcher.service.selection.project = anything;
    launcher.service.snapshot.projectEntry["version"] = version;
    launcher.service.applyChosenUpdate();
    QCOMPARE(launcher.log.take(), QStringList("not applied " + text));
    QCOMPARE(launcher.service.state, State::RepairMode);
    QCOMPARE(launcher.service.taskId, QString());
}

void UpdateApplyTest::aRequestDuringATaskIsAnsweredByTheStatus() {
    Launcher launcher;
    launcher.service.checkInFlight = true;
    launcher.service.cancelFlag = 1;
    launcher.service.applyChosenUpdate();
    QCOMPARE(launcher.log.take(), QStringList("status 更新任务正在进行中..."));
    QCOMPARE(launcher.service.cancelFlag.load(), 1);
}

// --- The whole road -------------------------------------------------------------------------

void UpdateApplyTest::theProjectAndAComponent() {
    Launcher launcher;
    launcher.chooseRuntime();
    launcher.service.applyChosenUpdate();
    QCOMPARE(launcher.log.take(), applyStarts());
    QVERIFY(launcher.service.isUpdateTaskActive());
    QVERIFY(launcher.service.taskId.startsWith("apply_"));
    launcher.waitForEnd();
    const QString details = "项目更新已完成。\n" + launcher.installerNote();
    QCOMPARE(launcher.log.take(),
             applyReports(true) + setupReports() + setupEnds(details) + launched());
    // Apply and setup are one task.
    QCOMPARE(logLines().mid(0, 7),
             QStringList({"Project version check: local=1.0 remote=2.0.0 compare=-1 path=" +
                              launcher.project,
                          "[task apply_ID] started kind=apply",
                          "[task apply_ID] phase=apply elapsedMs=0 " + successText(),
                          launcher.installerNote(), "项目更新已完成。", launcher.installerNote(),
                          "[task apply_ID] phase=setup elapsedMs=0"}));
}

void UpdateApplyTest::aSetupAlone() {
    Launcher launcher;
    launcher.chooseRuntime();
    launcher.service.selection.project = false;
    launcher.service.applyChosenUpdate();
    QCOMPARE(launcher.log.take(), QStringList({"active false", "state ApplyingUpdate",
                                               "progress setup -1 detail:setup-prepare"}));
    QVERIFY(launcher.service.taskId.startsWith("setup_"));
    launcher.waitForEnd();
    QCOMPARE(launcher.log.take(), QStringList("progress setup -1 detail:setup-prepare") +
                                      setupEnds("已跳过项目更新。\n" + launcher.installerNote()) +
                                      launched());
    QVERIFY(!launcher.service.reloadModelsOnLaunch);
    QVERIFY(!installation::targetSaw().contains("--reload-models"));
    QTRY_COMPARE(installers::ran(), QStringList("runtime 0"));
}

void UpdateApplyTest::anyChoiceIsOne_data() {
    QTest::addColumn<UpdateSelection>("selection");
    QTest::newRow("the runtime") << UpdateSelection{false, true, false, false, false};
    QTest::newRow("the launcher") << UpdateSelection{false, false, true, false, false};
    QTest::newRow("the editor") << UpdateSelection{false, false, false, true, false};
    QTest::newRow("the Python tools") << UpdateSelection{false, false, false, false, true};
}

void UpdateApplyTest::anyChoiceIsOne() {
    QFETCH(UpdateSelection, selection);
    Launcher launcher;
    launcher.service.selection = selection;
    launcher.service.applyChosenUpdate();
    QCOMPARE(launcher.log.take(), QStringList({"active false", "state ApplyingUpdate",
                                               "progress setup -1 detail:setup-prepare"}));
    launcher.waitForEnd();
}

void UpdateApplyTest::theTargetIsToldOnceToReloadItsModels() {
    Launcher launcher;
    launcher.service.applyChosenUpdate();
    launcher.waitForEnd();
    QTRY_VERIFY(installation::targetSaw().contains("--reload-models"));
    QVERIFY(!launcher.service.reloadModelsOnLaunch);
    QCOMPARE(SettingsStore::instance().defaultProject(), launcher.project);
    QVERIFY(launcher.service.updatesHandled && !launcher.service.updateAvailable);
    installation::release();
    QTRY_COMPARE(launcher.service.state, State::Failed);
    QVERIFY(installation::addTarget("wait"));
    launcher.service.skipUpdateAndLaunch();
    QTRY_VERIFY(!installation::targetSaw().isEmpty());
    QVERIFY(!installation::targetSaw().contains("--reload-models"));
}

void UpdateApplyTest::theFlowGoesOnWithTheNewProjectFile() {
    support::FileTree package = runnable("1.9");
    package.insert("new.yslib", package.take("demo.yslib"));
    Launcher launcher;
    const Offer other(package);
    launcher.service.snapshot = other.snapshot;
    launcher.service.applyChosenUpdate();
    launcher.waitForEnd();
    const QString renamed = update_offer::projectFolder() + "/new.yslib";
    QCOMPARE(launcher.service.projectPath, renamed);
    QCOMPARE(SettingsStore::instance().defaultProject(), renamed);
}

// --- Failure and cancel of the apply --------------------------------------------------------

void UpdateApplyTest::aFailureWithAClass() {
    Launcher launcher;
    launcher.service.snapshot.projectEntry["zipSha256"] = "00";
    launcher.service.applyChosenUpdate();
    (void)launcher.log.take();
    launcher.waitForEnd();
    const QString text = launcher.service.statusText;
    QVERIFY2(text.startsWith("[hash] Update zip hash failed: SHA256 mismatch for "),
             qPrintable(text));
    QCOMPARE(launcher.log.take(), applyReports(false) + notApplied(text));
    QCOMPARE(logLines().last(), text);
    QVERIFY(launcher.service.updateAvailable); // may be tried again
    QCOMPARE(support::readTree(update_offer::projectFolder()), runnable("1.0"));
}

void UpdateApplyTest::aFailureWithoutAClass() {
    Launcher launcher;
    const Offer other(support::FileTree{{"readme.txt", "no project"}});
    launcher.service.snapshot = other.snapshot;
    launcher.service.applyChosenUpdate();
    (void)launcher.log.take();
    launcher.waitForEnd();
    QCOMPARE(launcher.log.take(),
             applyReports(false) + notApplied("No yslib found in extracted package."));
}

void UpdateApplyTest::aFailureIsToldWhenAllIsDone_data() {
    QTest::addColumn<ApplyResult>("result");
    QTest::addColumn<QString>("text");
    QTest::newRow("a failure") << failed("why", "hash") << "[hash] why";
    QTest::newRow("a cancel") << failed("cancelled", "") << QString(taskCancelledText);
}

// Whoever shows the end in a box reads what stands behind it.
void UpdateApplyTest::aFailureIsToldWhenAllIsDone() {
    QFETCH(ApplyResult, result);
    QFETCH(QString, text);
    Launcher launcher;
    LauncherService &service = launcher.service;
    service.state = State::ApplyingUpdate;
    bool told = false;
    connect(&service, &LauncherService::statusChanged, this,
            [] { QCOMPARE(logLines(), QStringList()); });
    connect(&service, &LauncherService::applyUpdateFinished, this, [&] {
        told = true;
        QCOMPARE(logLines(), QStringList(text));
        QCOMPARE(service.statusText, text);
        QCOMPARE(service.state, State::RepairMode);
        QVERIFY(!service.isUpdateTaskActive());
    });
    service.applyWatcher.setFuture(ended(result));
    QTRY_VERIFY(told);
}

void UpdateApplyTest::aCancelDuringTheDownload() {
    support::ScriptedServer server;
    server.on("/p/line.zip", {support::stall()});
    Launcher launcher;
    launcher.offerOnline(server);
    launcher.service.applyChosenUpdate();
    (void)launcher.log.take();
    QTRY_COMPARE(server.paths().size(), 1);
    launcher.service.enterRepairMode(); // F8 is refused meanwhile
    launcher.service.cancelUpdateTask();
    launcher.waitForEnd();
    QCOMPARE(launcher.log.take(),
             QStringList({applyReports(false).first(),
                          "status 更新任务进行中。请先取消任务或等待完成，再进入修复模式（F8）。",
                          "status 正在取消更新任务…", applyReports(false).last()}) +
                 notApplied(taskCancelledText));
    QCOMPARE(logLines().mid(1),
             QStringList({"[task apply_ID] started kind=apply",
                          "[task apply_ID] cancel requested by user", taskCancelledText}));
    QCOMPARE(support::readTree(update_offer::projectFolder()), runnable("1.0"));
}

void UpdateApplyTest::theApplyEnds_data() {
    QTest::addColumn<ApplyResult>("result");
    QTest::addColumn<bool>("flag");
    QTest::addColumn<QString>("text"); // null: goes on to the setup
    const QString text = taskCancelledText;
    QTest::newRow("success") << succeeded("/p/new.yslib") << false << QString();
    QTest::newRow("success without a path") << succeeded("") << false << QString();
    QTest::newRow("a cancel that came too late counts, although the project was replaced")
        << succeeded("/p/new.yslib") << true << text;
    QTest::newRow("failure with the flag up") << failed("why", "hash") << true << text;
    QTest::newRow("the class cancelled") << failed("why", "cancelled") << false << text;
    QTest::newRow("the class in capitals is a class like another")
        << failed("why", "Cancelled") << false << "[Cancelled] why";
    QTest::newRow("the message cancelled, in any case") << failed("CANCELLED", "") << false << text;
    QTest::newRow("a message that only holds the word")
        << failed("was cancelled", "") << false << "was cancelled";
    QTest::newRow("a class") << failed("why", "network") << false << "[network] why";
    QTest::newRow("a message with a place mark")
        << failed("%1 %2", "hash") << false << "[hash] %1 %2";
    QTest::newRow("no class") << failed("why", "") << false << "why";
}

void UpdateApplyTest::theApplyEnds() {
    QFETCH(ApplyResult, result);
    QFETCH(bool, flag);
    QFETCH(QString, text);
    Launcher launcher;
    LauncherService &service = launcher.service;
    service.state = State::ApplyingUpdate;
    service.taskId = "apply_1";
    service.cancelRef = &service.cancelFlag;
    service.cancelFlag = flag ? 1 : 0;
    service.applyWatcher.setFuture(ended(result));
    launcher.waitForEnd();
    if (!text.isNull()) {
        QCOMPARE(launcher.log.take(), notApplied(text));
        QCOMPARE(logLines(), QStringList(text));
        QCOMPARE(service.projectPath, launcher.project);
        QVERIFY(!service.reloadModelsOnLaunch);
        return;
    }
    QCOMPARE(launcher.log.take().mid(0, 5), setupReports() + setupEnds("项目更新已完成。"));
    QCOMPARE(logLines().first(),
             QString("[task apply_1] phase=apply elapsedMs=0 ") + result.message);
    QCOMPARE(service.projectPath,
             result.projectPath.isEmpty() ? launcher.project : result.projectPath);
    QCOMPARE(service.taskId, QString("apply_1"));
}

void UpdateApplyTest::aCancelDuringTheSetup() {
    support::ScriptedServer server;
    server.on("/p/setup.exe", {support::stall()});
    Launcher launcher;
    launcher.chooseRuntime();
    launcher.service.selection.project = false;
    launcher.service.snapshot.fromUsb = false;
    launcher.service.snapshot.baseLocation = server.url("/p/").toString();
    QFile::remove(AppPaths::updateCacheDirectory() + "/setup.exe");
    launcher.service.applyChosenUpdate();
    QTRY_COMPARE(server.paths().size(), 1);
    (void)launcher.log.take();
    launcher.service.cancelUpdateTask();
    launcher.waitForEnd();
    const QStringList end = launcher.log.take();
    QCOMPARE(end.mid(end.size() - 4), notApplied("组件更新任务已取消。"));
    QVERIFY(end.contains("status 正在取消更新任务…"));
    QVERIFY(!launcher.service.updatesHandled);
}

// --- Another project meanwhile --------------------------------------------------------------

void UpdateApplyTest::aProjectSelectedDuringAnUpdateStays_data() {
    QTest::addColumn<bool>("withProject");
    QTest::addColumn<bool>("late"); // during the setup that follows the project
    QTest::addColumn<bool>("andBack");
    QTest::newRow("while the project is replaced") << true << false << false;
    QTest::newRow("while its components are set up") << true << true << false;
    QTest::newRow("while components alone are set up") << false << false << false;
    QTest::newRow("and the first one again: it is selected by hand too") << true << false << true;
}

// The update is carried out, but the operator's choice stands, and only he starts it.
void UpdateApplyTest::aProjectSelectedDuringAnUpdateStays() {
    QFETCH(bool, withProject);
    QFETCH(bool, late);
    QFETCH(bool, andBack);
    support::FileTree package = runnable("1.9");
    package.insert("new.yslib", package.take("demo.yslib"));
    const Offer renaming(package);
    Launcher launcher;
    LauncherService &service = launcher.service;
    service.snapshot = renaming.snapshot;
    if (!withProject)
        launcher.chooseRuntime();
    service.selection.project = withProject;
    const QString before = installation::addRunnableProject("before");
    const QString other = andBack ? launcher.project : installation::addRunnableProject("other");
    SettingsStore::instance().setDefaultProject(before);
    const auto select = [&] {
        if (andBack)
            service.selectProject(before);
        service.selectProject(other);
    };
    int setups = 0; // the worker's report is the second one
    connect(&service, &LauncherService::updateTaskProgressChanged, this,
            [&](const QString &, const QString &phase) {
                if (late && phase == "setup" && ++setups == 2)
                    select();
            });
    service.applyChosenUpdate();
    if (!late)
        select();
    launcher.waitForEnd();
    QCoreApplication::processEvents();
    const QStringList told = launcher.log.take();
    const QStringList end{"status 已处理所选更新内容，正在启动…", "active false",
                          "state RepairMode"};
    QCOMPARE(told.mid(told.size() - 4).filter(QRegularExpression("^(status|active|state) ")), end);
    QCOMPARE(endsIn(told), 1);
    QVERIFY(told.value(told.size() - 3)
                .startsWith(withProject ? "applied 项目更新已完成。" : "applied 已跳过项目更新。"));
    QCOMPARE(service.state, State::RepairMode);
    QCOMPARE(service.projectPath, other);
    QCOMPARE(SettingsStore::instance().defaultProject(), before);
    QVERIFY(service.updatesHandled && !service.updateAvailable);
    QCOMPARE(support::readTree(update_offer::projectFolder()).contains("new.yslib"), withProject);
    QVERIFY(logLines().filter("Launching ").isEmpty());
    QCOMPARE(installation::targetSaw(), QStringList());
}

// The one before failed meanwhile, so nothing of it is left.
void UpdateApplyTest::aProjectSelectedDuringAnEarlierUpdateIsAsAnyOther() {
    Launcher launcher;
    LauncherService &service = launcher.service;
    service.projectPath = installation::addRunnableProject("before", "1.0");
    service.snapshot.projectEntry["zipSha256"] = "00";
    service.applyChosenUpdate();
    service.selectProject(launcher.project);
    launcher.waitForEnd();
    QCOMPARE(service.state, State::RepairMode);
    QCOMPARE(launcher.log.take().last(), QString("active false"));
    service.snapshot = launcher.offer.snapshot;
    service.updateAvailable = true;
    service.applyChosenUpdate();
    launcher.waitForEnd();
    QCOMPARE(service.state, State::Monitor);
    QCOMPARE(SettingsStore::instance().defaultProject(), launcher.project);
}

// --- Whatever comes together ----------------------------------------------------------------

void UpdateApplyTest::aRequestBeforeTheEndIsToldIsRefused_data() {
    QTest::addColumn<bool>("withProject");
    QTest::newRow("of a project") << true;
    QTest::newRow("of components") << false;
}

// The worker has ended and its end waits in the queue.
void UpdateApplyTest::aRequestBeforeTheEndIsToldIsRefused() {
    QFETCH(bool, withProject);
    Launcher launcher;
    LauncherService &service = launcher.service;
    launcher.chooseRuntime();
    service.selection.project = withProject;
    service.applyChosenUpdate();
    QVERIFY(QThreadPool::globalInstance()->waitForDone());
    const QString task = service.taskId;
    (void)launcher.log.take();
    QVERIFY(service.isUpdateTaskActive());
    service.applyChosenUpdate();
    service.enterRepairMode();
    QCOMPARE(
        launcher.log.take(),
        QStringList({"status 更新任务正在进行中...",
                     "status 更新任务进行中。请先取消任务或等待完成，再进入修复模式（F8）。"}));
    QCOMPARE(service.taskId, task);
    launcher.waitForEnd();
    QCoreApplication::processEvents();
    QCOMPARE(endsIn(launcher.log.entries()), 1);
    QVERIFY(!service.isUpdateTaskActive());
    QTRY_COMPARE(installers::ran(), QStringList("runtime 0"));
}

void UpdateApplyTest::twoEndsInOneTurnAreEachTold() {
    Launcher launcher;
    LauncherService &service = launcher.service;
    service.updateAvailable = false;
    UpdateCheckResult nothing;
    nothing.projectPath = service.projectPath;
    nothing.summary = "nothing";
    service.checkWatcher.setFuture(ended(nothing));
    service.applyWatcher.setFuture(ended(failed("why", "")));
    launcher.waitForEnd();
    QCOMPARE(launcher.log.take(), QStringList({"status nothing", "active true", "status why",
                                               "not applied why", "active false"}));
}

void UpdateApplyTest::theEndIsReportedOnce_data() {
    QTest::addColumn<QString>("outcome");
    QTest::addColumn<QString>("meanwhile");
    for (const char *outcome :
         {"success", "failure", "cancel", "setup", "setup with a warning", "setup cancelled"}) {
        for (const char *meanwhile :
             {"nothing", "the target exits", "a second request", "a second cancel", "F8"})
            QTest::addRow("%s, and meanwhile %s", outcome, meanwhile) << outcome << meanwhile;
    }
}

void UpdateApplyTest::theEndIsReportedOnce() {
    QFETCH(QString, outcome);
    QFETCH(QString, meanwhile);
    support::ScriptedServer server;
    Launcher launcher;
    LauncherService &service = launcher.service;
    if (meanwhile == "the target exits") {
        QVERIFY(installation::addTarget("wait"));
        service.skipUpdateAndLaunch();
        service.enterRepairMode();
        service.updateAvailable = true;
    }
    const bool cancels = outcome.startsWith("cancel") || outcome.endsWith("cancelled");
    if (outcome.startsWith("setup")) {
        launcher.chooseRuntime();
        service.selection.project = false;
        if (outcome != "setup") {
            server.on("/p/setup.exe", cancels ? support::ServerScript{support::stall()}
                                              : support::answer(404, "gone"));
            QFile::remove(AppPaths::updateCacheDirectory() + "/setup.exe");
            service.snapshot.fromUsb = false;
            service.snapshot.baseLocation = server.url("/p/").toString();
        }
    } else if (cancels) {
        server.on("/p/line.zip", {support::stall()});
        launcher.offerOnline(server);
    } else if (outcome == "failure") {
        service.snapshot = launcher.offer.with("zipSha256", "00").snapshot;
    }
    (void)launcher.log.take();
    service.applyChosenUpdate();
    if (cancels) {
        QTRY_COMPARE(server.paths().size(), 1);
        service.cancelUpdateTask();
    }
    if (meanwhile == "the target exits")
        installation::release();
    else if (meanwhile == "a second request")
        service.applyChosenUpdate();
    else if (meanwhile == "a second cancel" && cancels)
        service.cancelUpdateTask();
    else if (meanwhile == "F8")
        service.enterRepairMode();
    launcher.waitForEnd();
    if (meanwhile == "the target exits")
        QTRY_VERIFY(service.targetProcess.state() == QProcess::NotRunning ||
                    service.state == State::Monitor);
    QTRY_VERIFY(!service.isUpdateTaskActive());
    QCoreApplication::processEvents();
    QCOMPARE(endsIn(launcher.log.entries()), 1);
    static const QMap<QString, QString> ends{
        {"success", "applied 项目更新已完成。"},
        {"failure", "not applied [hash] "},
        {"cancel", QString("not applied ") + taskCancelledText},
        {"setup", "applied 已跳过项目更新。\nRuntime 安装包已自动启动："},
        {"setup with a warning", "applied 已跳过项目更新。\nRuntime 安装包下载失败（"},
        {"setup cancelled", "not applied 组件更新任务已取消。"}};
    const QString seen = launcher.log.entries().filter("applied ").join('\n');
    QVERIFY2(seen.startsWith(ends.value(outcome, "?")), qPrintable(seen));
    installation::release();
}

void UpdateApplyTest::aWindowThatClosesEndsTheWorkerAndReportsNothing() {
    support::ScriptedServer server;
    server.on("/p/line.zip", {support::stall()});
    QStringList entries;
    {
        Launcher launcher;
        launcher.offerOnline(server);
        launcher.service.applyChosenUpdate();
        QTRY_COMPARE(server.paths().size(), 1);
        entries = launcher.log.take();
    }
    QVERIFY(QThreadPool::globalInstance()->waitForDone(1000));
    QCoreApplication::processEvents();
    QCOMPARE(endsIn(entries), 0);
    QCOMPARE(support::readTree(update_offer::projectFolder()), runnable("1.0"));
}

QUORVANE_TEST_MAIN(QCoreApplication, UpdateApplyTest)
#include "update_apply_test.moc"
