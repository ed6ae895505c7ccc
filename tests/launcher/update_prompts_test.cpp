// Where the flow meets updates, with a real worker, a real manifest and a server on loopback: all
// signals of a run in one sequence.
#include "installation.h"
#include "launcher/launcher_service.h"
#include "signal_log.h"
#include "support/manifest_maker.h"
#include "support/scripted_server.h"
#include "support/staged_main.h"
#include "update/default_manifest_url.h"

#include <QCoreApplication>
#include <QFutureInterface>
#include <QJsonDocument>
#include <QSemaphore>
#include <QThreadPool>

#include <functional>

using State = LauncherService::State;
using Prompt = LauncherService::UpdatePromptMode;

namespace {

QString onlineUrl; // of this test's server

// A check waits here, on its worker, until the test lets it go: so nothing depends on who is faster.
QSemaphore gate;

constexpr char manifestPath[] = "/Quorvaner/Update/manifest.json";
constexpr char skippedKey[] = "update/online_skipped_version_fingerprint";

const support::KeyPair &publisher() {
    static const support::KeyPair key = support::KeyPair::rsa(2048);
    return key;
}

QString manifestWith(const QString &runtimeVersion) {
    const QJsonObject runtime{{"version", runtimeVersion}, {"setupUrl", "setup.exe"}};
    return support::signedManifest({{"runtime", runtime}}, publisher());
}

QString prompt(bool fromUsb = false) {
    return fromUsb ? "status 检测到离线更新包。请选择是否更新，或继续启动。"
                   : "status 发现在线更新。请选择是否更新，或继续启动。";
}

QString repairText() {
    return "status 修复模式：选择 yslib、查看日志或手动启动。";
}

QString prechecking() {
    return "status 正在执行项目预检...";
}

QStringList checkStarts() {
    return {"active false", "progress check -1 detail:fetch-manifest"};
}

QStringList started() {
    return {"state Launch", "status 已启动 LineRunner.exe", "state Monitor",
            "status 正在监护目标进程。日志：" + AppPaths::launchLogPath()};
}

QStringList fromTheCountdown() {
    return {"state Countdown", "countdown 5", "countdown 5"};
}

// A service with a runnable project and a target, whose countdown waits for the test's ticks.
struct Launcher {
    LauncherService service;
    SignalLog log{service};

    Launcher() {
        service.projectPath = installation::addRunnableProject("line", "1.0");
        service.countdownTimer.setInterval(1000 * 1000);
    }

    // What the held manifest's summary gives whenever it is built again.
    [[nodiscard]] QStringList offer(const QString &mode) const {
        return {"suggestion " + service.updateSummary, "prompt " + mode};
    }

    void waitForCheck() {
        gate.release();
        QTRY_VERIFY(!service.isUpdateTaskActive());
    }

    // As after a check that found the manifest.
    void knowUpdate(bool fromUsb = false) {
        service.updateAvailable = service.updateCheckDone = true;
        service.snapshot.manifestText = manifestWith("9.0.0");
        service.snapshot.source = "src";
        service.snapshot.baseLocation = fromUsb ? support::stageRoot() : "https://host/";
        service.snapshot.fromUsb = fromUsb;
        service.snapshot.runtimeEntry = {{"version", "9.0.0"}, {"setupUrl", "setup.exe"}};
        service.promptMode = fromUsb ? Prompt::UsbBanner : Prompt::OnlineBanner;
        service.updateSummary =
            "已验证的更新可用（来源：src）。\n当前项目版本：1.0（" + service.projectPath +
            "）\n可更新项：Runtime -> 9.0.0\n" +
            (fromUsb ? "检测到离线更新包，可在主界面选择「立即更新」或继续启动。"
                     : "发现在线更新，可在主界面选择「立即更新」「稍后提醒」"
                       "或「跳过此版本」。");
    }
};

void processPosted() {
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
}

QStringList taskLines() {
    static const QRegularExpression id("check_[0-9a-f]{8}");
    QStringList lines;
    for (QString line : installation::takeLog()) {
        if (line.startsWith("[task "))
            lines.append(line.replace(id, "check_ID"));
    }
    return lines;
}

} // namespace

QString defaultManifestUrl() {
    gate.acquire();
    return onlineUrl;
}

class UpdatePromptsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void aBannerStopsTheCountdown();
    void nothingFoundLetsTheCountdownRunOn();
    void aServerThatIsAwayLetsTheCountdownRunOn();
    void anUpdatePutAsideBeforeLetsTheCountdownRunOn();
    void anotherOfferThanTheSkippedOneStops();
    void theFlowChecksWhenNothingIsKnown_data();
    void theFlowChecksWhenNothingIsKnown();
    void theFlowLaunchesWhenItsCheckFindsNothing();
    void theFlowJoinsARunningCheck_data();
    void theFlowJoinsARunningCheck();
    void theFlowWithAKnownUpdate_data();
    void theFlowWithAKnownUpdate();
    void theFlowAfterACheckThatFoundNothing();
    void aRunningCheckIsKnownByItsWorkerToo();
    void aBadgeDoesNotStopAnAutomaticStart();
    void handledUpdatesAreNotLookedAt();
    void twoChecksNeverOverlap();
    void aCancelledCheck_data();
    void aCancelledCheck();
    void aCheckOfAnotherProject_data();
    void aCheckOfAnotherProject();
    void aCheckOfAProjectThatIsSelectedAgainCounts();
    void aCheckThatEndsWhereNothingMoves_data();
    void aCheckThatEndsWhereNothingMoves();
    void aCheckThatEndsResumesNoCountdown_data();
    void aCheckThatEndsResumesNoCountdown();
    void aBannerInACountdownThatStandsStillPausesNothing();
    void theEndOfACheckIsToldOnce_data();
    void theEndOfACheckIsToldOnce();
    void f8ChecksOnceAndReturnsToRepairMode();
    void f8AsksForACheckInEveryState_data();
    void f8AsksForACheckInEveryState();
    void f8IsRefusedWhileTheCheckRuns();
    void aSecondCheckWithinTheWindowIsThrottled_data();
    void aSecondCheckWithinTheWindowIsThrottled();
    void f8WithAKnownUpdateShowsItAgain();
    void f8ShowsAnUpdateThatWasSkippedMeanwhileAsABadge();
    void aPostedLookChecksInThreeStates_data();
    void aPostedLookChecksInThreeStates();
    void everyAnswerInEveryState_data();
    void everyAnswerInEveryState();
    void aPauseWithoutSecondsLeftIsNotResumed();
    void aPauseWithOneSecondLeftIsResumed();
    void aCheckThatEndsInTheLastSecondTellsIt();
    void skippingForGoodIsRememberedAndLogged();
    void anOfferWithoutAFingerprintIsNotRemembered();
    void answersWithoutAnUpdateDoNothing();
    void refreshStatusBuildsTheSummaryAnew_data();
    void refreshStatusBuildsTheSummaryAnew();
    void whoHearsOfAnOfferSeesTheMode();
    void theSummaryFollowsTheLanguage();
    void anUpdateThatIsInstalledMeanwhileKeepsItsSummary();
    void aSnapshotWithoutTextIsNotWeighed();
    void repairModeWithoutAPromptSaysWhatItIsFor();
    void theStartShotShowsAKnownUpdate();
    void whatWasPostedMeetsAnotherState_data();
    void whatWasPostedMeetsAnotherState();
    void theServiceWaitsForItsCheck();

private:
    void offer(const QString &runtimeVersion);
    void answer(const QString &body);
    std::unique_ptr<support::ScriptedServer> server;
};

void UpdatePromptsTest::init() {
    installation::reset();
    QVERIFY(
        installation::write(installation::appPath("config/update.pub"), publisher().publicPem()));
    QVERIFY(installation::write(support::stageRoot() + "/setup.exe", ""));
    QVERIFY(installation::addTarget("wait"));
    (void)installation::takeLog();
    onlineUrl = QString("http://127.0.0.1:1") + manifestPath;
    QVERIFY(QThreadPool::globalInstance()->waitForDone());
    gate.acquire(gate.available());
    server = std::make_unique<support::ScriptedServer>();
}

void UpdatePromptsTest::cleanup() {
    server.reset();
}

// --- The check in the background of the countdown ---------------------------------------

void UpdatePromptsTest::aBannerStopsTheCountdown() {
    offer("9.0.0");
    Launcher launcher;
    launcher.service.start();
    QCOMPARE(launcher.log.take(), fromTheCountdown());
    processPosted();
    QCOMPARE(launcher.log.take(), checkStarts());
    QVERIFY(launcher.service.isUpdateTaskActive());
    QCOMPARE(launcher.service.state, State::Countdown);
    launcher.waitForCheck();
    QCOMPARE(launcher.log.take(), launcher.offer("OnlineBanner") +
                                      QStringList({"state RepairMode", prompt(), "active false"}));
    QVERIFY(!launcher.service.countdownTimer.isActive());
    QVERIFY(launcher.service.countdownPaused);
    QVERIFY(launcher.service.isOnlineUpdatePending());
    QCOMPARE(taskLines(), QStringList({"[task check_ID] started kind=check",
                                       "[task check_ID] phase=check elapsedMs=0 found"}));
}

void UpdatePromptsTest::nothingFoundLetsTheCountdownRunOn() {
    offer("0.0.1");
    QVERIFY(installation::write(installation::appPath("config/release_version.json"),
                                R"({"runtimePackageVersion": "1.0"})"));
    Launcher launcher;
    launcher.service.start();
    processPosted();
    (void)launcher.log.take();
    launcher.waitForCheck();
    const QString summary = launcher.service.statusText;
    QVERIFY(summary.startsWith("未检测到高于当前版本的可用更新。\n"));
    QCOMPARE(launcher.log.take(),
             QStringList({"status " + summary, "countdown 5", "countdown 5", "active false"}));
    QVERIFY(launcher.service.countdownTimer.isActive());
    QVERIFY(launcher.service.updateCheckDone && !launcher.service.updateAvailable);
    QCOMPARE(taskLines().last(), QString("[task check_ID] phase=check elapsedMs=0 none"));
}

void UpdatePromptsTest::aServerThatIsAwayLetsTheCountdownRunOn() {
    Launcher launcher;
    launcher.service.start();
    processPosted();
    launcher.waitForCheck();
    QVERIFY(launcher.service.statusText.startsWith("在线更新不可用（"));
    QCOMPARE(launcher.service.state, State::Countdown);
    QVERIFY(launcher.service.updateCheckDone);
}

void UpdatePromptsTest::anUpdatePutAsideBeforeLetsTheCountdownRunOn() {
    offer("9.0.0");
    SettingsStore::instance().setValue(skippedKey, "runtime:9.0.0");
    Launcher launcher;
    launcher.service.start();
    processPosted();
    (void)launcher.log.take();
    launcher.waitForCheck();
    QCOMPARE(launcher.log.take(), launcher.offer("BadgeOnly") + QStringList("countdown 5") +
                                      launcher.offer("BadgeOnly") +
                                      QStringList({"countdown 5", "active false"}));
    QCOMPARE(launcher.service.state, State::Countdown);
    for (int i = 0; i < 5; ++i)
        launcher.service.tickCountdown();
    QCOMPARE(launcher.service.state, State::Monitor);
    QVERIFY(launcher.service.updateAvailable);
}

void UpdatePromptsTest::anotherOfferThanTheSkippedOneStops() {
    offer("9.0.1");
    SettingsStore::instance().setValue(skippedKey, "runtime:9.0.0");
    Launcher launcher;
    launcher.service.start();
    processPosted();
    launcher.waitForCheck();
    QCOMPARE(launcher.service.promptMode, Prompt::OnlineBanner);
    QCOMPARE(launcher.service.state, State::RepairMode);
}

// --- The start flow -------------------------------------------------------------------------

void UpdatePromptsTest::theFlowChecksWhenNothingIsKnown_data() {
    QTest::addColumn<bool>("manual");
    QTest::newRow("automatic") << false;
    QTest::newRow("manual: a banner that was not known before stops it") << true;
}

void UpdatePromptsTest::theFlowChecksWhenNothingIsKnown() {
    QFETCH(bool, manual);
    offer("9.0.0");
    Launcher launcher;
    launcher.service.state = manual ? State::RepairMode : State::Countdown;
    launcher.service.runStartFlow();
    QCOMPARE(launcher.log.take(),
             QStringList({"state Precheck", prechecking(), "active false", "state UpdateCheck",
                          "progress check -1 detail:fetch-manifest"}));
    launcher.waitForCheck();
    QCOMPARE(launcher.log.take(), launcher.offer("OnlineBanner") +
                                      QStringList({"state RepairMode", prompt(), "active false"}));
    QVERIFY(!launcher.service.countdownPaused);
    QVERIFY(!launcher.service.countdownTimer.isActive());
    QVERIFY(!launcher.service.launchAfterCheck);
}

void UpdatePromptsTest::theFlowLaunchesWhenItsCheckFindsNothing() {
    Launcher launcher;
    launcher.service.runStartFlow();
    (void)launcher.log.take();
    launcher.waitForCheck();
    QTRY_COMPARE(launcher.service.state, State::Monitor);
    const QStringList sequence = launcher.log.take();
    QVERIFY(sequence.first().startsWith("status 在线更新不可用（"));
    QCOMPARE(sequence.mid(1), started() + QStringList("active false"));
}

void UpdatePromptsTest::theFlowJoinsARunningCheck_data() {
    QTest::addColumn<bool>("finds");
    QTest::newRow("that finds nothing: launch") << false;
    QTest::newRow("that finds an update: stop, with the timer off") << true;
}

void UpdatePromptsTest::theFlowJoinsARunningCheck() {
    QFETCH(bool, finds);
    answer(finds ? manifestWith("9.0.0") : QString("no manifest"));
    Launcher launcher;
    launcher.service.start();
    processPosted();
    for (int i = 0; i < 4; ++i)
        launcher.service.tickCountdown();
    (void)launcher.log.take();
    launcher.service.tickCountdown();
    QCOMPARE(launcher.log.take(), QStringList({"countdown 0", "state Precheck", prechecking(),
                                               "status 正在检查更新，请稍候…"}));
    QVERIFY(launcher.service.launchAfterCheck);
    launcher.waitForCheck();
    QTRY_COMPARE(launcher.service.state, finds ? State::RepairMode : State::Monitor);
    const QStringList sequence = launcher.log.take();
    QCOMPARE(sequence.mid(finds ? 0 : 1),
             (finds ? launcher.offer("OnlineBanner") + QStringList({"state RepairMode", prompt()})
                    : started()) +
                 QStringList("active false"));
    QVERIFY(!launcher.service.countdownTimer.isActive());
    QVERIFY(!launcher.service.countdownPaused);
}

void UpdatePromptsTest::theFlowWithAKnownUpdate_data() {
    QTest::addColumn<State>("from");
    QTest::addColumn<bool>("fromUsb");
    QTest::addColumn<bool>("launches");
    for (const bool usb : {false, true}) {
        const char *kind = usb ? "stick" : "online";
        QTest::addRow("%s: an automatic start stops", kind) << State::Countdown << usb << false;
        QTest::addRow("%s: a manual start from RepairMode passes by", kind)
            << State::RepairMode << usb << true;
        QTest::addRow("%s: a manual start from Failed passes by", kind)
            << State::Failed << usb << true;
    }
}

void UpdatePromptsTest::theFlowWithAKnownUpdate() {
    QFETCH(State, from);
    QFETCH(bool, fromUsb);
    QFETCH(bool, launches);
    Launcher launcher;
    launcher.knowUpdate(fromUsb);
    launcher.service.state = from;
    launcher.service.runStartFlow();
    const QString mode = fromUsb ? "prompt UsbBanner" : "prompt OnlineBanner";
    const QStringList head{"state Precheck", prechecking(), mode};
    QCOMPARE(launcher.log.take().mid(0, launches ? 7 : 5),
             head + (launches ? QStringList({"state Launch", "status 已启动 LineRunner.exe",
                                             "state Monitor", launcher.offer("").first()})
                              : QStringList({"state RepairMode", prompt(fromUsb)})));
}

void UpdatePromptsTest::theFlowAfterACheckThatFoundNothing() {
    Launcher launcher;
    launcher.service.updateCheckDone = true;
    launcher.service.runStartFlow();
    QCOMPARE(launcher.log.take(),
             QStringList({"state Precheck", prechecking(), "prompt None"}) + started());
}

void UpdatePromptsTest::aRunningCheckIsKnownByItsWorkerToo() {
    Launcher launcher;
    QFutureInterface<UpdateCheckResult> check;
    check.reportStarted();
    launcher.service.checkWatcher.setFuture(check.future());
    launcher.service.start();
    (void)launcher.log.take();
    processPosted();
    QCOMPARE(launcher.log.take(), QStringList()); // no second one begins
    launcher.service.runStartFlow();
    QCOMPARE(launcher.log.take(),
             QStringList({"state Precheck", prechecking(), "status 正在检查更新，请稍候…"}));
    QVERIFY(launcher.service.launchAfterCheck);
    check.reportFinished();
}

void UpdatePromptsTest::aBadgeDoesNotStopAnAutomaticStart() {
    Launcher launcher;
    launcher.knowUpdate();
    launcher.service.remindLater = true;
    launcher.service.state = State::Countdown;
    launcher.service.runStartFlow();
    QCOMPARE(launcher.service.state, State::Monitor);
    QCOMPARE(launcher.log.take().value(2), QString("prompt BadgeOnly"));
}

void UpdatePromptsTest::handledUpdatesAreNotLookedAt() {
    Launcher launcher;
    launcher.knowUpdate();
    launcher.service.updatesHandled = true;
    launcher.service.snapshot.manifestText.clear();
    launcher.service.runStartFlow();
    QCOMPARE(launcher.log.take(), QStringList({"state Precheck", prechecking()}) + started());
}

void UpdatePromptsTest::twoChecksNeverOverlap() {
    answer("no manifest");
    Launcher launcher;
    launcher.service.start();
    processPosted();
    const QString task = launcher.service.taskId;
    // The worker has ended, but its end has not been taken yet.
    gate.release();
    QVERIFY(QThreadPool::globalInstance()->waitForDone());
    QVERIFY(!launcher.service.checkWatcher.isRunning());
    QVERIFY(launcher.service.checkInFlight);
    launcher.service.runStartFlow();
    QCOMPARE(launcher.service.taskId, task);
    QCOMPARE(launcher.service.state, State::Precheck);
    QTRY_COMPARE(launcher.service.state, State::Monitor);
    QCOMPARE(server->requests().size(), 1);
}

// --- Cancelling ---------------------------------------------------------------------------------

void UpdatePromptsTest::aCancelledCheck_data() {
    QTest::addColumn<bool>("launch");
    QTest::newRow("lets the countdown run on") << false;
    QTest::newRow("still launches when the flow waits for it") << true;
}

void UpdatePromptsTest::aCancelledCheck() {
    QFETCH(bool, launch);
    answer(manifestWith("9.0.0"));
    Launcher launcher;
    launcher.service.start();
    processPosted();
    if (launch)
        launcher.service.runStartFlow();
    (void)launcher.log.take();
    launcher.service.cancelUpdateTask();
    QCOMPARE(launcher.log.take(), QStringList("status 正在取消更新任务…"));
    launcher.waitForCheck();
    QTRY_COMPARE(launcher.service.state, launch ? State::Monitor : State::Countdown);
    QCOMPARE(launcher.log.take(),
             QStringList("status 更新检查已取消。") +
                 (launch ? started() : QStringList({"countdown 5", "countdown 5"})) +
                 QStringList("active false"));
    QVERIFY(!launcher.service.updateCheckDone && !launcher.service.updateAvailable);
    QCOMPARE(taskLines().value(1), QString("[task check_ID] cancel requested by user"));
}

void UpdatePromptsTest::aCheckOfAnotherProject_data() {
    QTest::addColumn<State>("waitsIn");
    QTest::addColumn<QString>("other");
    QTest::addColumn<QStringList>("end");
    const QStringList countsOn{"countdown 5", "countdown 5"};
    QTest::newRow("in the countdown, which runs on") << State::Countdown << "other" << countsOn;
    QTest::newRow("of another letter case") << State::Countdown << "LINE" << countsOn;
    QTest::newRow("after a precheck that failed") << State::RepairMode << "other" << QStringList();
    QTest::newRow("after F8") << State::UpdateCheck << "other" << QStringList("state RepairMode");
    QTest::newRow("that the flow waits for: it launches")
        << State::Precheck << "other" << started();
}

// What was found out about the project before is no offer for the one that is selected now: its
// folder would be replaced by the other's package.
void UpdatePromptsTest::aCheckOfAnotherProject() {
    QFETCH(State, waitsIn);
    QFETCH(QString, other);
    QFETCH(QStringList, end);
    offer("9.0.0");
    Launcher launcher;
    LauncherService &service = launcher.service;
    const QString selected = installation::addRunnableProject(other, "1.0");
    if (waitsIn == State::UpdateCheck)
        service.enterRepairMode();
    else
        service.start();
    processPosted();
    if (waitsIn == State::RepairMode)
        QVERIFY(QFile::remove(service.projectPath));
    if (waitsIn == State::RepairMode || waitsIn == State::Precheck)
        service.runStartFlow();
    QCOMPARE(service.state, waitsIn);
    service.selectProject(selected);
    (void)launcher.log.take();
    launcher.waitForCheck();
    QCOMPARE(launcher.log.take(),
             QStringList("status 更新检查已取消。") + end + QStringList("active false"));
    QCOMPARE(service.projectPath, selected);
    QVERIFY(!service.updateCheckDone && !service.updateAvailable);
    QVERIFY(service.snapshot.manifestText.isEmpty() && service.updateSummary.isEmpty());
    QCOMPARE(service.promptMode, Prompt::None);
    QCOMPARE(taskLines().value(1), QString("[task check_ID] phase=check elapsedMs=0 found"));
    service.applyChosenUpdate();
    QCOMPARE(launcher.log.take(), QStringList("not applied 当前没有可应用的已验证更新。"));
    // The next flow looks for this project's updates.
    service.runStartFlow();
    launcher.waitForCheck();
    QVERIFY(service.updateCheckDone && service.updateAvailable);
    QVERIFY(service.updateSummary.contains(selected));
}

void UpdatePromptsTest::aCheckOfAProjectThatIsSelectedAgainCounts() {
    offer("9.0.0");
    Launcher launcher;
    const QString project = launcher.service.projectPath;
    launcher.service.start();
    processPosted();
    launcher.service.selectProject(installation::addRunnableProject("other"));
    launcher.service.selectProject(project);
    launcher.waitForCheck();
    QVERIFY(launcher.service.updateCheckDone && launcher.service.updateAvailable);
    QCOMPARE(launcher.service.promptMode, Prompt::OnlineBanner);
}

void UpdatePromptsTest::aCheckThatEndsWhereNothingMoves_data() {
    QTest::addColumn<State>("state");
    QTest::addColumn<bool>("finds");
    QTest::newRow("a banner while the target runs") << State::Monitor << true;
    QTest::newRow("a banner after the run failed") << State::Failed << true;
    QTest::newRow("a banner in repair mode") << State::RepairMode << true;
    QTest::newRow("nothing after the run failed") << State::Failed << false;
    QTest::newRow("nothing in repair mode") << State::RepairMode << false;
}

// The check began in the countdown, whose seconds are not used up. The state is not the check's any
// more: neither a banner nor the seconds that are left take it.
void UpdatePromptsTest::aCheckThatEndsWhereNothingMoves() {
    QFETCH(State, state);
    QFETCH(bool, finds);
    answer(finds ? manifestWith("9.0.0") : QString("no manifest"));
    Launcher launcher;
    LauncherService &service = launcher.service;
    service.start();
    processPosted();
    QVERIFY(service.resumeCountdownAfterCheck);
    service.countdownTimer.stop();
    service.state = state;
    (void)launcher.log.take();
    launcher.waitForCheck();
    const QStringList none("status " + service.statusText);
    QCOMPARE(launcher.log.take(),
             (finds ? launcher.offer("OnlineBanner") + QStringList(prompt()) : none) +
                 QStringList("active false"));
    QCOMPARE(service.state, state);
    QVERIFY(!service.countdownTimer.isActive() && !service.countdownPaused);
    QVERIFY(!service.resumeCountdownAfterCheck);
}

void UpdatePromptsTest::aCheckThatEndsResumesNoCountdown_data() {
    QTest::addColumn<Prompt>("promptMode");
    QTest::addColumn<bool>("paused");
    QTest::addColumn<int>("seconds");
    QTest::newRow("that a banner stops") << Prompt::OnlineBanner << false << 3;
    QTest::newRow("that is paused") << Prompt::None << true << 3;
    QTest::newRow("that has no seconds left") << Prompt::None << false << 0;
}

void UpdatePromptsTest::aCheckThatEndsResumesNoCountdown() {
    QFETCH(Prompt, promptMode);
    QFETCH(bool, paused);
    QFETCH(int, seconds);
    answer("no manifest");
    Launcher launcher;
    LauncherService &service = launcher.service;
    service.start();
    processPosted();
    service.countdownTimer.stop();
    service.promptMode = promptMode;
    service.countdownPaused = paused;
    service.countdownSeconds = seconds;
    (void)launcher.log.take();
    launcher.waitForCheck();
    QCOMPARE(launcher.log.take(), QStringList({"status " + service.statusText, "active false"}));
    QVERIFY(!service.countdownTimer.isActive());
}

void UpdatePromptsTest::aBannerInACountdownThatStandsStillPausesNothing() {
    offer("9.0.0");
    Launcher launcher;
    launcher.service.start();
    processPosted();
    launcher.service.countdownTimer.stop();
    (void)launcher.log.take();
    launcher.waitForCheck();
    QCOMPARE(launcher.log.take(), launcher.offer("OnlineBanner") +
                                      QStringList({"state RepairMode", prompt(), "active false"}));
    QVERIFY(!launcher.service.countdownPaused);
}

// Whatever comes together, a check that was started is told to have ended exactly once.
void UpdatePromptsTest::theEndOfACheckIsToldOnce_data() {
    QTest::addColumn<bool>("finds");
    QTest::addColumn<bool>("cancels");
    QTest::addColumn<bool>("targetEnds");
    QTest::addColumn<bool>("joins");
    for (int i = 0; i < 16; ++i) {
        const bool finds = i & 1;
        const bool cancels = i & 2;
        const bool targetEnds = i & 4;
        const bool joins = i & 8;
        QTest::addRow("%s%s%s%s", finds ? "found" : "none", cancels ? ", cancelled" : "",
                      targetEnds ? ", the target ends" : "", joins ? ", the flow waits" : "")
            << finds << cancels << targetEnds << joins;
    }
}

void UpdatePromptsTest::theEndOfACheckIsToldOnce() {
    QFETCH(bool, finds);
    QFETCH(bool, cancels);
    QFETCH(bool, targetEnds);
    QFETCH(bool, joins);
    answer(finds ? manifestWith("9.0.0") : QString("no manifest"));
    Launcher launcher;
    LauncherService &service = launcher.service;
    if (targetEnds) {
        QVERIFY(installation::addTarget("exit 7"));
        service.targetProcess.start(installation::appPath("LineRunner.exe"), QStringList());
        QVERIFY(service.targetProcess.waitForStarted());
    }
    service.start();
    processPosted();
    if (joins)
        service.runStartFlow();
    if (cancels) {
        service.cancelUpdateTask();
        service.cancelUpdateTask();
    }
    service.enterRepairMode();
    launcher.waitForCheck();
    if (targetEnds)
        QTRY_VERIFY(!launcher.log.entries().filter("exited 7 ").isEmpty());
    processPosted();
    QCOMPARE(launcher.log.entries().count("active false"), 2); // at the start and at the end
    QCOMPARE(launcher.log.entries().count("active true"), 0);
    const QStringList ends = taskLines().filter("phase=check");
    QCOMPARE(ends, QStringList(QString("[task check_ID] phase=check elapsedMs=0 ") +
                               (finds && !cancels ? "found" : "none")));
    QCOMPARE(service.updateCheckDone, !cancels);
    QCOMPARE(service.updateAvailable, finds && !cancels);
    QVERIFY(!service.launchAfterCheck);
}

// --- Repair mode ----------------------------------------------------------------------------------

void UpdatePromptsTest::f8ChecksOnceAndReturnsToRepairMode() {
    Launcher launcher;
    launcher.service.enterRepairMode();
    QCOMPARE(launcher.log.take(), QStringList({"state RepairMode", repairText()}));
    processPosted();
    QCOMPARE(launcher.log.take(), QStringList({"active false", "state UpdateCheck",
                                               "progress check -1 detail:fetch-manifest"}));
    launcher.waitForCheck();
    QTRY_COMPARE(launcher.service.state, State::RepairMode);
    QCOMPARE(launcher.log.take().mid(1), QStringList({"state RepairMode", "active false"}));
    launcher.service.enterRepairMode();
    processPosted();
    QCOMPARE(launcher.log.take(), QStringList(repairText()));
    QVERIFY(!launcher.service.isUpdateTaskActive());
}

void UpdatePromptsTest::f8AsksForACheckInEveryState_data() {
    QTest::addColumn<State>("from");
    QTest::addColumn<bool>("throttled");
    for (const State from :
         {State::Idle, State::Countdown, State::Monitor, State::RepairMode, State::Failed}) {
        const QString name = SignalLog::name(from);
        QTest::addRow("%s: it begins", qPrintable(name)) << from << false;
        QTest::addRow("%s: it is throttled", qPrintable(name)) << from << true;
    }
}

void UpdatePromptsTest::f8AsksForACheckInEveryState() {
    QFETCH(State, from);
    QFETCH(bool, throttled);
    Launcher launcher;
    launcher.service.state = from;
    if (throttled)
        launcher.service.lastCheckStartMs = QDateTime::currentMSecsSinceEpoch();
    launcher.service.enterRepairMode();
    QCOMPARE(launcher.log.take(),
             (from == State::RepairMode ? QStringList() : QStringList("state RepairMode")) +
                 QStringList(repairText()));
    processPosted();
    if (throttled) {
        QCOMPARE(launcher.log.take(), QStringList());
        QCOMPARE(installation::takeLog(),
                 QStringList("修复模式下更新检查命中节流窗口（30 秒），跳过重复请求。"));
        return;
    }
    QCOMPARE(launcher.log.take(), QStringList({"active false", "state UpdateCheck",
                                               "progress check -1 detail:fetch-manifest"}));
    launcher.waitForCheck();
    QCOMPARE(launcher.service.state, State::RepairMode);
}

void UpdatePromptsTest::f8IsRefusedWhileTheCheckRuns() {
    answer("no manifest");
    Launcher launcher;
    launcher.service.start();
    processPosted();
    (void)launcher.log.take();
    launcher.service.enterRepairMode();
    QCOMPARE(launcher.log.take(),
             QStringList("status 更新任务进行中。请先取消任务或等待完成，再进入修复模式（F8）。"));
    QVERIFY(launcher.service.countdownTimer.isActive());
    launcher.waitForCheck();
}

void UpdatePromptsTest::aSecondCheckWithinTheWindowIsThrottled_data() {
    QTest::addColumn<int>("ageMs");
    QTest::addColumn<bool>("checks");
    QTest::newRow("just after the first") << 0 << false;
    QTest::newRow("shortly before the window's end") << 25000 << false;
    QTest::newRow("at the window's end") << 30000 << true;
}

void UpdatePromptsTest::aSecondCheckWithinTheWindowIsThrottled() {
    QFETCH(int, ageMs);
    QFETCH(bool, checks);
    Launcher launcher;
    launcher.service.lastCheckStartMs = QDateTime::currentMSecsSinceEpoch() - ageMs;
    launcher.service.enterRepairMode();
    processPosted();
    QCOMPARE(launcher.service.isUpdateTaskActive(), checks);
    const QString line = "修复模式下更新检查命中节流窗口（30 秒），跳过重复请求。";
    QCOMPARE(installation::takeLog().contains(line), !checks);
    if (checks)
        launcher.waitForCheck();
}

void UpdatePromptsTest::f8WithAKnownUpdateShowsItAgain() {
    Launcher launcher;
    launcher.knowUpdate();
    launcher.service.enterRepairMode();
    QCOMPARE(launcher.log.take(), QStringList("state RepairMode") + launcher.offer("OnlineBanner") +
                                      QStringList(prompt()));
    processPosted();
    QCOMPARE(launcher.log.take(), QStringList("prompt OnlineBanner"));
}

void UpdatePromptsTest::f8ShowsAnUpdateThatWasSkippedMeanwhileAsABadge() {
    Launcher launcher;
    launcher.knowUpdate();
    launcher.service.enterRepairMode();
    (void)launcher.log.take();
    SettingsStore::instance().setValue(skippedKey, "runtime:9.0.0"); // by another launcher
    processPosted();
    QCOMPARE(launcher.log.take(), QStringList("prompt BadgeOnly"));
}

void UpdatePromptsTest::aPostedLookChecksInThreeStates_data() {
    QTest::addColumn<State>("state");
    QTest::addColumn<bool>("checks");
    const QVector<State> open{State::Idle, State::Countdown, State::RepairMode};
    for (int i = 0; i <= int(State::Failed); ++i) {
        const State state = static_cast<State>(i);
        QTest::addRow("%s", qPrintable(SignalLog::name(state))) << state << open.contains(state);
    }
}

void UpdatePromptsTest::aPostedLookChecksInThreeStates() {
    QFETCH(State, state);
    QFETCH(bool, checks);
    Launcher launcher;
    launcher.service.enterRepairMode();
    launcher.service.state = state;
    processPosted();
    QCOMPARE(launcher.service.isUpdateTaskActive(), checks);
    if (checks)
        launcher.waitForCheck();
}

// --- Answers ------------------------------------------------------------------------------------------

void UpdatePromptsTest::everyAnswerInEveryState_data() {
    QTest::addColumn<State>("from");
    QTest::addColumn<int>("answer"); // 0 remind, 1 skip for good, 2 skip and launch
    QTest::addColumn<bool>("fromUsb");
    QTest::addColumn<bool>("paused");
    const char *answers[] = {"remind later", "skip for good", "skip and launch"};
    for (int i = 0; i <= int(State::Failed); ++i) {
        const State from = static_cast<State>(i);
        for (int answer = 0; answer < 3; ++answer) {
            for (const bool usb : {false, true}) {
                for (const bool paused : {false, true})
                    QTest::addRow("%s in %s, %s%s", answers[answer],
                                  qPrintable(SignalLog::name(from)), usb ? "stick" : "online",
                                  paused ? ", paused" : "")
                        << from << answer << usb << paused;
            }
        }
    }
}

void UpdatePromptsTest::everyAnswerInEveryState() {
    QFETCH(State, from);
    QFETCH(int, answer);
    QFETCH(bool, fromUsb);
    QFETCH(bool, paused);
    Launcher launcher;
    launcher.knowUpdate(fromUsb);
    launcher.service.state = from;
    launcher.service.countdownPaused = paused;
    launcher.service.countdownSeconds = 3;
    const auto answerIt = [&] {
        if (answer == 0)
            launcher.service.remindUpdateLater();
        else if (answer == 1)
            launcher.service.skipThisOnlineVersion();
        else
            launcher.service.skipUpdateAndLaunch();
    };
    answerIt();
    const bool passedBy = answer == 1 && fromUsb; // a stick's offer is not skipped for good
    const bool resumed = paused && from == State::RepairMode && !passedBy;
    QStringList expected;
    if (answer == 0)
        expected.append({"status 已设为下次启动再提醒。本次可继续启动。", "prompt BadgeOnly"});
    if (answer == 1 && !passedBy)
        expected.append(
            {"status 已跳过此在线版本提示。可通过「有更新」再次打开更新。", "prompt BadgeOnly"});
    // On the way through refreshStatus the prompt is weighed anew: a stick's comes back.
    const QString mode = fromUsb ? "UsbBanner" : answer == 2 ? "OnlineBanner" : "BadgeOnly";
    const QStringList again =
        launcher.offer(mode) + (mode == "BadgeOnly" ? QStringList() : QStringList(prompt(fromUsb)));
    if (resumed) {
        expected.append({"state Countdown", "countdown 3"});
        expected.append(again);
        expected.append("countdown 3");
    }
    const bool settles = answer != 2 && !passedBy && !resumed && from != State::Countdown &&
                         from < State::ApplyingUpdate;
    if (settles)
        expected.append("state RepairMode");
    if (answer == 2) {
        if (from != State::Launch || resumed)
            expected.append("state Launch");
        expected.append("status 已启动 LineRunner.exe");
        expected.append("state Monitor");
        expected.append(again);
        expected.append(started().last());
        if (from == State::Launch && !resumed)
            expected.removeAll("state Launch");
    }
    QCOMPARE(launcher.log.take(), expected);
    QCOMPARE(launcher.service.countdownPaused, paused && passedBy);
    QCOMPARE(launcher.service.updatesHandled, answer == 2);
    QCOMPARE(launcher.service.remindLater, answer == 0);
    QCOMPARE(launcher.service.countdownTimer.isActive(), resumed);
}

void UpdatePromptsTest::aPauseWithoutSecondsLeftIsNotResumed() {
    Launcher launcher;
    launcher.knowUpdate();
    launcher.service.state = State::RepairMode;
    launcher.service.countdownPaused = true;
    launcher.service.countdownSeconds = 0;
    launcher.service.remindUpdateLater();
    QCOMPARE(launcher.log.take(),
             QStringList({"status 已设为下次启动再提醒。本次可继续启动。", "prompt BadgeOnly"}));
    QVERIFY(!launcher.service.countdownPaused);
    QCOMPARE(launcher.service.state, State::RepairMode);
}

void UpdatePromptsTest::aPauseWithOneSecondLeftIsResumed() {
    Launcher launcher;
    launcher.knowUpdate();
    launcher.service.state = State::RepairMode;
    launcher.service.countdownPaused = true;
    launcher.service.countdownSeconds = 1;
    launcher.service.remindUpdateLater();
    QCOMPARE(launcher.log.take(),
             QStringList({"status 已设为下次启动再提醒。本次可继续启动。", "prompt BadgeOnly",
                          "state Countdown", "countdown 1"}) +
                 launcher.offer("BadgeOnly") + QStringList("countdown 1"));
    QVERIFY(launcher.service.countdownTimer.isActive());
}

void UpdatePromptsTest::aCheckThatEndsInTheLastSecondTellsIt() {
    answer("no manifest");
    Launcher launcher;
    launcher.service.start();
    processPosted();
    for (int i = 0; i < 4; ++i)
        launcher.service.tickCountdown();
    launcher.service.countdownTimer.stop();
    (void)launcher.log.take();
    launcher.waitForCheck();
    QCOMPARE(launcher.log.take().mid(1),
             QStringList({"countdown 1", "countdown 1", "active false"}));
    QVERIFY(launcher.service.countdownTimer.isActive());
}

void UpdatePromptsTest::skippingForGoodIsRememberedAndLogged() {
    Launcher launcher;
    launcher.knowUpdate();
    launcher.service.snapshot.launcherEntry = {{"version", "9.1.0"}, {"setupUrl", "l.exe"}};
    launcher.service.state = State::RepairMode;
    const QDateTime before = QDateTime::currentDateTimeUtc();
    launcher.service.skipThisOnlineVersion();
    SettingsStore &settings = SettingsStore::instance();
    QCOMPARE(settings.value(skippedKey, ""), QString("launcher:9.1.0|runtime:9.0.0"));
    const QDateTime at =
        QDateTime::fromString(settings.value("update/online_skipped_at", ""), Qt::ISODate);
    QCOMPARE(at.timeSpec(), Qt::UTC);
    QVERIFY(qAbs(before.secsTo(at)) <= 5);
    QCOMPARE(installation::takeLog(),
             QStringList("Online update skipped fingerprint=launcher:9.1.0|runtime:9.0.0 "
                         "components=[runtime:9.0.0, launcher:9.1.0] source=src"));
}

void UpdatePromptsTest::anOfferWithoutAFingerprintIsNotRemembered() {
    Launcher launcher;
    launcher.knowUpdate();
    launcher.service.snapshot.runtimeEntry = QJsonObject();
    launcher.service.state = State::RepairMode;
    launcher.service.skipThisOnlineVersion();
    QCOMPARE(SettingsStore::instance().value(skippedKey, ""), QString());
    QCOMPARE(launcher.service.promptMode, Prompt::BadgeOnly);
    QCOMPARE(installation::takeLog(),
             QStringList("Online update skipped fingerprint= components=[] source=src"));
    // Nor is it taken for one that was.
    launcher.service.snapshot.manifestText.clear();
    launcher.service.start();
    processPosted();
    launcher.service.enterRepairMode();
    processPosted();
    QCOMPARE(launcher.service.promptMode, Prompt::OnlineBanner);
}

void UpdatePromptsTest::answersWithoutAnUpdateDoNothing() {
    Launcher launcher;
    launcher.service.remindUpdateLater();
    launcher.service.skipThisOnlineVersion();
    QCOMPARE(launcher.log.take(), QStringList());
}

// --- The summary ----------------------------------------------------------------------------------

void UpdatePromptsTest::refreshStatusBuildsTheSummaryAnew_data() {
    QTest::addColumn<State>("state");
    for (int i = 0; i <= int(State::Failed); ++i) {
        const State state = static_cast<State>(i);
        QTest::addRow("in %s", qPrintable(SignalLog::name(state))) << state;
    }
}

void UpdatePromptsTest::refreshStatusBuildsTheSummaryAnew() {
    QFETCH(State, state);
    Launcher launcher;
    launcher.knowUpdate();
    const QString summary = launcher.service.updateSummary;
    launcher.service.updateSummary = "old";
    launcher.service.state = state;
    launcher.service.refreshStatus();
    const QStringList sequence = launcher.log.take();
    QCOMPARE(sequence.mid(0, 3),
             QStringList({"suggestion " + summary, "prompt OnlineBanner", prompt()}));
    const QStringList quiet{"UpdateCheck", "ApplyingUpdate", "RepairMode", "Failed"};
    QCOMPARE(sequence.size(), quiet.contains(SignalLog::name(state)) ? 3 : 4);
    QCOMPARE(launcher.service.updateSummary, summary);
}

// That of the offer at the end of a check, and the one before where an offer is told again.
void UpdatePromptsTest::whoHearsOfAnOfferSeesTheMode() {
    offer("9.0.0");
    Launcher launcher;
    LauncherService &service = launcher.service;
    QList<Prompt> modes;
    connect(&service, &LauncherService::updateSuggestionReady, this,
            [&] { modes.append(service.promptMode); });
    service.start();
    processPosted();
    launcher.waitForCheck();
    QCOMPARE(modes.value(0, Prompt::None), Prompt::OnlineBanner);
    modes.clear();
    service.promptMode = Prompt::None;
    service.refreshStatus();
    QCOMPARE(modes, QList<Prompt>{Prompt::None});
    QCOMPARE(service.promptMode, Prompt::OnlineBanner);
}

void UpdatePromptsTest::theSummaryFollowsTheLanguage() {
    Launcher launcher;
    launcher.knowUpdate();
    launcher.service.state = State::RepairMode;
    const QString before = launcher.service.updateSummary;
    {
        const installation::MarkingTranslator translator;
        launcher.service.refreshStatus();
        QVERIFY2(launcher.service.updateSummary.startsWith("<已验证的更新可用（来源：src）。>\n"),
                 qPrintable(launcher.service.updateSummary));
        QCOMPARE(launcher.service.statusText,
                 QString("<发现在线更新。请选择是否更新，或继续启动。>"));
    }
    launcher.service.refreshStatus();
    QCOMPARE(launcher.service.updateSummary, before);
}

void UpdatePromptsTest::anUpdateThatIsInstalledMeanwhileKeepsItsSummary() {
    Launcher launcher;
    launcher.knowUpdate();
    QVERIFY(installation::write(installation::appPath("config/release_version.json"),
                                R"({"runtimePackageVersion": "9.0.0"})"));
    launcher.service.state = State::Failed;
    launcher.service.refreshStatus();
    QCOMPARE(launcher.log.take(), QStringList());
    QVERIFY(launcher.service.updateAvailable);
}

void UpdatePromptsTest::aSnapshotWithoutTextIsNotWeighed() {
    Launcher launcher;
    launcher.knowUpdate();
    launcher.service.state = State::Failed;
    for (const char *text : {"", "no JSON", "[]"}) {
        launcher.service.snapshot.manifestText = text;
        launcher.service.refreshStatus();
        QCOMPARE(launcher.log.take(), QStringList());
    }
}

void UpdatePromptsTest::repairModeWithoutAPromptSaysWhatItIsFor() {
    Launcher launcher;
    launcher.knowUpdate();
    launcher.service.snapshot.manifestText.clear();
    launcher.service.promptMode = Prompt::None;
    launcher.service.state = State::RepairMode;
    launcher.service.refreshStatus();
    QCOMPARE(launcher.log.take(), QStringList(repairText()));
}

void UpdatePromptsTest::theStartShotShowsAKnownUpdate() {
    Launcher launcher;
    launcher.knowUpdate();
    launcher.service.snapshot.manifestText.clear();
    launcher.service.start();
    (void)launcher.log.take();
    processPosted();
    QCOMPARE(launcher.log.take(), QStringList("prompt OnlineBanner"));
}

// The flow posts a look for updates at the start and at F8, and may have moved on by then.
void UpdatePromptsTest::whatWasPostedMeetsAnotherState_data() {
    QTest::addColumn<bool>("known"); // an update that was put aside
    QTest::addColumn<bool>("f8First");
    QTest::addColumn<bool>("launches");
    QTest::addColumn<bool>("f8Last");
    QTest::addColumn<int>("prompts");
    const auto row = [](const char *name, bool known, bool f8First, bool launches, bool f8Last,
                        int prompts) {
        QTest::newRow(name) << known << f8First << launches << f8Last << prompts;
    };
    row("the start: nothing was found before", false, false, false, false, 0);
    row("the start: the target runs", true, false, true, false, 0);
    row("the start and F8: both look", true, false, false, true, 2);
    row("F8: nothing was found before", false, true, false, false, 0);
    row("F8: the target runs", true, true, true, false, 0);
    row("F8: the target runs and F8 comes again", true, true, true, true, 2);
}

void UpdatePromptsTest::whatWasPostedMeetsAnotherState() {
    QFETCH(bool, known);
    QFETCH(bool, f8First);
    QFETCH(bool, launches);
    QFETCH(bool, f8Last);
    QFETCH(int, prompts);
    Launcher launcher;
    LauncherService &service = launcher.service;
    if (known)
        launcher.knowUpdate();
    service.snapshot.manifestText.clear();
    service.updateCheckDone = true;
    service.remindLater = true;
    if (f8First)
        service.enterRepairMode();
    else
        service.start();
    if (launches)
        service.runStartFlow();
    QCOMPARE(service.state == State::Monitor, launches);
    if (f8Last)
        service.enterRepairMode();
    (void)launcher.log.take();
    processPosted();
    const QStringList signalsSeen = launcher.log.take();
    const bool checks = service.isUpdateTaskActive();
    if (checks)
        launcher.waitForCheck(); // none is to run on
    QVERIFY(!checks);
    QStringList expected;
    for (int i = 0; i < prompts; ++i)
        expected.append("prompt BadgeOnly");
    QCOMPARE(signalsSeen, expected);
}

// --- Lifetime ---------------------------------------------------------------------------------------

void UpdatePromptsTest::theServiceWaitsForItsCheck() {
    {
        Launcher launcher;
        launcher.service.start();
        processPosted();
        QVERIFY(launcher.service.checkWatcher.isRunning());
        gate.release();
    }
    QVERIFY(QThreadPool::globalInstance()->waitForDone(0));
}

void UpdatePromptsTest::offer(const QString &runtimeVersion) {
    answer(manifestWith(runtimeVersion));
}

void UpdatePromptsTest::answer(const QString &body) {
    server->on(manifestPath, support::answer(200, body.toUtf8()));
    onlineUrl = server->url(manifestPath).toString();
}

QUORVANE_TEST_MAIN(QCoreApplication, UpdatePromptsTest)
#include "update_prompts_test.moc"
