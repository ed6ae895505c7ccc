// The flow without updates: the countdown, the start flow, F8, the status texts, and every pair of a
// state and a public operation.
#include "installation.h"
#include "launcher/launcher_service.h"
#include "signal_log.h"
#include "support/platform.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QEventLoop>

#include <functional>

using State = LauncherService::State;

namespace {

QString prechecking() {
    return "status 正在执行项目预检...";
}

QString repairText() {
    return "status 修复模式：选择 yslib、查看日志或手动启动。";
}

QString noTargetText() {
    return QString("LineRunner.exe not found in %1.\nProduction layout requires Runtime (R2). "
                   "Install Runtime beside Launcher.")
        .arg(QCoreApplication::applicationDirPath());
}

QStringList noTarget() {
    return {"state Failed", "status " + noTargetText(), "launchFailed " + noTargetText()};
}

QStringList noProject(State from) {
    QStringList expected{"status 未选择 yslib 项目。", "launchFailed 未选择 yslib 项目。"};
    if (from != State::Failed)
        expected.prepend("state Failed");
    return expected;
}

QStringList entering(State from, State to) {
    return from == to ? QStringList() : QStringList("state " + SignalLog::name(to));
}

const QList<State> &allStates() {
    static const QList<State> states{State::Idle,        State::Countdown,      State::Precheck,
                                     State::UpdateCheck, State::ApplyingUpdate, State::Launch,
                                     State::Monitor,     State::RepairMode,     State::Failed};
    return states;
}

// One public operation, and all signals it gives in a state, with no target in the installation.
struct Operation {
    const char *name;
    std::function<void(LauncherService &)> run;
    std::function<QStringList(State, const LauncherService &)> expected;
};

QStringList nothing(State, const LauncherService &) {
    return {};
}

QStringList refreshed(State from, const LauncherService &service) {
    switch (from) {
    case State::Idle:
        return {"status 就绪，即将启动：" + service.projectPath};
    case State::Countdown:
        return {"countdown 5"};
    case State::Precheck:
        return {prechecking()};
    case State::UpdateCheck:
        return {"status 正在检查更新..."};
    case State::ApplyingUpdate:
        return {"status 正在应用更新..."};
    case State::Launch:
        return {"status 正在启动..."};
    case State::Monitor:
        return {"status 正在监护目标进程。日志：" + AppPaths::launchLogPath()};
    case State::RepairMode:
        return {repairText()};
    case State::Failed:
        break;
    }
    return {};
}

const QList<Operation> &operations() {
    static const QList<Operation> all{
        {"initialize", [](LauncherService &s) { s.initialize(); },
         [](State from, const LauncherService &s) {
             return entering(from, State::Idle) +
                    QStringList("status 就绪，即将启动：" + s.projectPath);
         }},
        {"start", [](LauncherService &s) { s.start(); },
         [](State from, const LauncherService &) {
             return from == State::RepairMode ? QStringList()
                                              : entering(from, State::Countdown) +
                                                    QStringList({"countdown 5", "countdown 5"});
         }},
        {"tickCountdown", [](LauncherService &s) { s.tickCountdown(); },
         [](State from, const LauncherService &) {
             return from == State::Countdown ? QStringList({"countdown 4", "countdown 4"})
                                             : QStringList();
         }},
        {"runStartFlow", [](LauncherService &s) { s.runStartFlow(); },
         [](State from, const LauncherService &) {
             return entering(from, State::Precheck) + QStringList({prechecking(), "state Launch"}) +
                    noTarget();
         }},
        {"enterRepairMode", [](LauncherService &s) { s.enterRepairMode(); },
         [](State from, const LauncherService &) {
             return entering(from, State::RepairMode) + QStringList(repairText());
         }},
        {"selectProject with the same", [](LauncherService &s) { s.selectProject(s.projectPath); },
         nothing},
        {"selectProject with another",
         [](LauncherService &s) { s.selectProject("/no/where.yslib"); },
         [](State, const LauncherService &) {
             return QStringList(
                 {"prompt None", "status 已选项目：" + support::rooted("/no/where.yslib")});
         }},
        {"setSkipCorePluginPrecheck", [](LauncherService &s) { s.setSkipCorePluginPrecheck(true); },
         nothing},
        {"setUpdateSelection", [](LauncherService &s) { s.setUpdateSelection({}); }, nothing},
        {"applyChosenUpdate", [](LauncherService &s) { s.applyChosenUpdate(); },
         [](State, const LauncherService &) {
             return QStringList("not applied 当前没有可应用的已验证更新。");
         }},
        {"skipUpdateAndLaunch", [](LauncherService &s) { s.skipUpdateAndLaunch(); },
         [](State from, const LauncherService &) {
             return entering(from, State::Launch) + noTarget();
         }},
        {"remindUpdateLater", [](LauncherService &s) { s.remindUpdateLater(); }, nothing},
        {"skipThisOnlineVersion", [](LauncherService &s) { s.skipThisOnlineVersion(); }, nothing},
        {"cancelUpdateTask", [](LauncherService &s) { s.cancelUpdateTask(); },
         [](State, const LauncherService &) {
             return QStringList("status 当前没有可取消的更新任务。");
         }},
        {"refreshStatus", [](LauncherService &s) { s.refreshStatus(); }, refreshed},
    };
    return all;
}

// Stands in for a message box: runs an event loop of its own inside the emission.
void runNestedLoop(const std::function<void()> &whileOpen) {
    QEventLoop box;
    QTimer::singleShot(0, &box, [&] {
        whileOpen();
        box.quit();
    });
    box.exec();
}

void processPosted() {
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
}

} // namespace

Q_DECLARE_METATYPE(const Operation *)

class FlowTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void everyPairOfStateAndOperation_data();
    void everyPairOfStateAndOperation();
    void everyPairWhileACheckRuns_data();
    void everyPairWhileACheckRuns();
    void everyPairWhileAnApplyOrASetupRuns_data();
    void everyPairWhileAnApplyOrASetupRuns();
    void anAcceptedRequestInEveryState_data();
    void anAcceptedRequestInEveryState();
    void startFlowWithoutProject_data();
    void startFlowWithoutProject();
    void idleWithoutProjectPointsAtF8();
    void applyingKeepsTheStatusItHas();
    void startRunsTheTimerAndTellsFiveTwice();
    void startInRepairModeLeavesTheTimerOff();
    void theTimerDrivesTheTick();
    void countdownWithoutProjectRunsToItsEnd();
    void countdownWithProjectEndsInTheStartFlow();
    void repairModeStopsTheCountdownAndForgetsItsPause();
    void repairModeIsRefusedWhileACheckIsInFlight_data();
    void repairModeIsRefusedWhileACheckIsInFlight();
    void choicesAreStored();
    void aLaunchFailureIsLoggedAfterItsMessageBox();
    void ticksDuringAMessageBoxDoNothingAfterTheCountdownsEnd();
    void aStartDuringAPrecheckBoxIsWholeBeforeTheBoxCloses();
    void f8DuringALaunchFailureBoxIsTheLastWord();
    void postedWorkDiesWithTheService();
};

void FlowTest::init() {
    installation::reset();
}

void FlowTest::everyPairOfStateAndOperation_data() {
    QTest::addColumn<State>("from");
    QTest::addColumn<const Operation *>("operation");
    for (const Operation &operation : operations()) {
        for (const State from : allStates())
            QTest::addRow("%s in %s", operation.name, qPrintable(SignalLog::name(from)))
                << from << &operation;
    }
}

void FlowTest::everyPairOfStateAndOperation() {
    QFETCH(State, from);
    QFETCH(const Operation *, operation);
    const QString project = installation::addRunnableProject("demo");
    LauncherService service;
    service.projectPath = project;
    service.updatesHandled = true;
    service.state = from;
    const QStringList expected = operation->expected(from, service);
    SignalLog log(service);
    operation->run(service);
    service.countdownTimer.stop();
    QCOMPARE(log.take(), expected);
    processPosted();
    QCOMPARE(log.take(), QStringList());
    QVERIFY(!service.isUpdateTaskActive());
}

void FlowTest::everyPairWhileACheckRuns_data() {
    everyPairOfStateAndOperation_data();
}

// A check whose end is not taken yet: the flow waits for it, F8 is refused, it can be
// cancelled, and all else is as ever.
void FlowTest::everyPairWhileACheckRuns() {
    QFETCH(State, from);
    QFETCH(const Operation *, operation);
    const QString project = installation::addRunnableProject("demo");
    LauncherService service;
    service.projectPath = project;
    service.checkInFlight = true;
    service.state = from;
    const QString name = operation->name;
    QStringList expected = operation->expected(from, service);
    if (name == "runStartFlow")
        expected = entering(from, State::Precheck) +
                   QStringList({prechecking(), "status 正在检查更新，请稍候…"});
    else if (name == "enterRepairMode")
        expected =
            QStringList("status 更新任务进行中。请先取消任务或等待完成，再进入修复模式（F8）。");
    else if (name == "cancelUpdateTask")
        expected = QStringList("status 正在取消更新任务…");
    SignalLog log(service);
    operation->run(service);
    service.countdownTimer.stop();
    QCOMPARE(log.take(), expected);
    processPosted();
    QCOMPARE(log.take(), QStringList());
    QVERIFY(service.isUpdateTaskActive());
    QCOMPARE(service.launchAfterCheck, name == "runStartFlow");
    QCOMPARE(service.cancelFlag.load(), name == "cancelUpdateTask" ? 1 : 0);
}

void FlowTest::everyPairWhileAnApplyOrASetupRuns_data() {
    QTest::addColumn<State>("from");
    QTest::addColumn<const Operation *>("operation");
    QTest::addColumn<bool>("applies");
    for (const Operation &operation : operations()) {
        for (const State from : allStates()) {
            for (const bool applies : {true, false})
                QTest::addRow("%s in %s, %s", operation.name, qPrintable(SignalLog::name(from)),
                              applies ? "apply" : "setup")
                    << from << &operation << applies;
        }
    }
}

// F8 is refused, the task can be cancelled, a request is answered by the status, and all else is
// as ever.
void FlowTest::everyPairWhileAnApplyOrASetupRuns() {
    QFETCH(State, from);
    QFETCH(const Operation *, operation);
    QFETCH(bool, applies);
    const QString project = installation::addRunnableProject("demo");
    LauncherService service;
    QFutureInterface<ApplyResult> apply;
    QFutureInterface<ComponentSetupResult> setup;
    apply.reportStarted();
    setup.reportStarted();
    if (applies)
        service.applyWatcher.setFuture(apply.future());
    else
        service.setupWatcher.setFuture(setup.future());
    service.projectPath = project;
    service.updatesHandled = true;
    service.state = from;
    const QString name = operation->name;
    QStringList expected = operation->expected(from, service);
    if (name == "enterRepairMode")
        expected =
            QStringList("status 更新任务进行中。请先取消任务或等待完成，再进入修复模式（F8）。");
    else if (name == "cancelUpdateTask")
        expected = QStringList("status 正在取消更新任务…");
    else if (name == "applyChosenUpdate")
        expected = QStringList("status 更新任务正在进行中...");
    service.updateAvailable = name == "applyChosenUpdate";
    SignalLog log(service);
    operation->run(service);
    service.countdownTimer.stop();
    QCOMPARE(log.take(), expected);
    QVERIFY(service.isUpdateTaskActive());
    QCOMPARE(service.cancelFlag.load(), name == "cancelUpdateTask" ? 1 : 0);
    apply.reportFinished();
    setup.reportFinished();
}

void FlowTest::anAcceptedRequestInEveryState_data() {
    startFlowWithoutProject_data();
}

// The gates are the offer and the task, not the state.
void FlowTest::anAcceptedRequestInEveryState() {
    QFETCH(State, from);
    LauncherService service;
    service.projectPath = installation::addRunnableProject("demo");
    service.updateAvailable = true;
    service.selection = {false, true, false, false, false};
    service.state = from;
    SignalLog log(service);
    service.applyChosenUpdate();
    const QString report = "progress setup -1 detail:setup-prepare";
    QCOMPARE(log.take(), QStringList("active false") + entering(from, State::ApplyingUpdate) +
                             QStringList(report));
    QTRY_COMPARE(service.state, State::Failed);
    QCOMPARE(log.take(), QStringList({report, "status 已处理所选更新内容，正在启动…",
                                      "applied 已跳过项目更新。", "active false", "state Launch"}) +
                             noTarget());
}

void FlowTest::startFlowWithoutProject_data() {
    QTest::addColumn<State>("from");
    for (const State from : allStates())
        QTest::addRow("from %s", qPrintable(SignalLog::name(from))) << from;
}

void FlowTest::startFlowWithoutProject() {
    QFETCH(State, from);
    LauncherService service;
    service.state = from;
    SignalLog log(service);
    service.runStartFlow();
    QCOMPARE(log.take(), noProject(from));
    QCOMPARE(service.state, State::Failed);
    QCOMPARE(installation::takeLog(), QStringList());
}

void FlowTest::idleWithoutProjectPointsAtF8() {
    LauncherService service;
    SignalLog log(service);
    service.refreshStatus();
    QCOMPARE(log.take(), QStringList("status 未选择项目。按 F8 进入修复模式。"));
}

void FlowTest::applyingKeepsTheStatusItHas() {
    LauncherService service;
    service.state = State::ApplyingUpdate;
    service.statusText = "x";
    SignalLog log(service);
    service.refreshStatus();
    QCOMPARE(log.take(), QStringList());
}

void FlowTest::startRunsTheTimerAndTellsFiveTwice() {
    LauncherService service;
    service.updatesHandled = true;
    service.countdownSeconds = 2;
    SignalLog log(service);
    service.start();
    QCOMPARE(log.take(), QStringList({"state Countdown", "countdown 5", "countdown 5"}));
    QVERIFY(service.countdownTimer.isActive());
    QCOMPARE(service.countdownSeconds, 5);
    QCOMPARE(service.statusText, QString());
}

void FlowTest::startInRepairModeLeavesTheTimerOff() {
    LauncherService service;
    service.state = State::RepairMode;
    service.start();
    QVERIFY(!service.countdownTimer.isActive());
}

void FlowTest::theTimerDrivesTheTick() {
    LauncherService service;
    service.updatesHandled = true;
    service.countdownTimer.setInterval(0);
    SignalLog log(service);
    service.start();
    QTRY_COMPARE(service.state, State::Failed);
    QVERIFY(!service.countdownTimer.isActive());
}

void FlowTest::countdownWithoutProjectRunsToItsEnd() {
    LauncherService service;
    service.updatesHandled = true;
    service.start();
    service.countdownTimer.stop();
    SignalLog log(service);
    for (int i = 0; i < 5; ++i)
        service.tickCountdown();
    QCOMPARE(log.take(),
             QStringList({"countdown 4", "countdown 4", "countdown 3", "countdown 3", "countdown 2",
                          "countdown 2", "countdown 1", "countdown 1", "countdown 0"}) +
                 noProject(State::Countdown));
    service.tickCountdown();
    QCOMPARE(log.take(), QStringList());
}

void FlowTest::countdownWithProjectEndsInTheStartFlow() {
    const QString project = installation::addRunnableProject("demo");
    LauncherService service;
    service.projectPath = project;
    service.updatesHandled = true;
    service.start();
    service.countdownSeconds = 1;
    SignalLog log(service);
    service.tickCountdown();
    QCOMPARE(log.take(),
             QStringList({"countdown 0", "state Precheck", prechecking(), "state Launch"}) +
                 noTarget());
    QVERIFY(!service.countdownTimer.isActive());
}

void FlowTest::repairModeStopsTheCountdownAndForgetsItsPause() {
    LauncherService service;
    service.updatesHandled = true;
    service.start();
    service.countdownPaused = true;
    service.resumeCountdownAfterCheck = true;
    service.enterRepairMode();
    QVERIFY(!service.countdownTimer.isActive());
    QVERIFY(!service.countdownPaused && !service.resumeCountdownAfterCheck);
    QCOMPARE(service.state, State::RepairMode);
}

void FlowTest::repairModeIsRefusedWhileACheckIsInFlight_data() {
    startFlowWithoutProject_data();
}

void FlowTest::repairModeIsRefusedWhileACheckIsInFlight() {
    QFETCH(State, from);
    LauncherService service;
    service.state = from;
    service.countdownTimer.start();
    service.checkInFlight = true;
    service.countdownPaused = true;
    SignalLog log(service);
    service.enterRepairMode();
    processPosted();
    QCOMPARE(log.take(),
             QStringList("status 更新任务进行中。请先取消任务或等待完成，再进入修复模式（F8）。"));
    QCOMPARE(service.state, from);
    QVERIFY(service.countdownTimer.isActive());
    QVERIFY(service.countdownPaused);
}

void FlowTest::choicesAreStored() {
    LauncherService service;
    service.setSkipCorePluginPrecheck(true);
    QVERIFY(service.skipCorePluginPrecheck);
    service.setSkipCorePluginPrecheck(false);
    QVERIFY(!service.skipCorePluginPrecheck);
    UpdateSelection chosen;
    chosen.runtime = chosen.pythonTools = false;
    service.setUpdateSelection(chosen);
    QVERIFY(service.selection.project && !service.selection.runtime);
    QVERIFY(service.selection.launcher && service.selection.editor);
    QVERIFY(!service.selection.pythonTools);
}

// A message box runs an event loop inside the emission: what is behind the emission waits.
void FlowTest::aLaunchFailureIsLoggedAfterItsMessageBox() {
    const QString project = installation::addRunnableProject("demo");
    LauncherService service;
    service.projectPath = project;
    service.updatesHandled = true;
    SignalLog log(service);
    QStringList logWhileOpen{"not opened"};
    connect(&service, &LauncherService::launchFailed, this,
            [&] { runNestedLoop([&] { logWhileOpen = installation::takeLog(); }); });
    service.runStartFlow();
    QCOMPARE(log.take(),
             QStringList({"state Precheck", prechecking(), "state Launch"}) + noTarget());
    QCOMPARE(logWhileOpen, QStringList("Precheck passed for " + project));
    QCOMPARE(installation::takeLog(), noTargetText().split('\n'));
}

void FlowTest::ticksDuringAMessageBoxDoNothingAfterTheCountdownsEnd() {
    LauncherService service;
    service.updatesHandled = true;
    service.countdownTimer.setInterval(0);
    SignalLog log(service);
    int boxes = 0;
    connect(&service, &LauncherService::launchFailed, this, [&] {
        ++boxes;
        runNestedLoop([&] {
            service.tickCountdown();
            QCoreApplication::processEvents();
        });
    });
    service.start();
    QTRY_COMPARE(boxes, 1);
    processPosted();
    QCOMPARE(log.take().mid(3),
             QStringList({"countdown 4", "countdown 4", "countdown 3", "countdown 3", "countdown 2",
                          "countdown 2", "countdown 1", "countdown 1", "countdown 0"}) +
                 noProject(State::Countdown));
}

void FlowTest::aStartDuringAPrecheckBoxIsWholeBeforeTheBoxCloses() {
    const QString project = installation::addRunnableProject("demo");
    LauncherService service;
    service.projectPath = "/gone.yslib";
    service.updatesHandled = true;
    SignalLog log(service);
    connect(&service, &LauncherService::precheckFailed, this, [&] {
        runNestedLoop([&] {
            service.selectProject(project);
            service.runStartFlow();
        });
    });
    service.runStartFlow();
    const QString refusal =
        "Project file not found: /gone.yslib\nLog: " + AppPaths::launchLogPath();
    QCOMPARE(log.take(),
             QStringList({"state Precheck", prechecking(), "state RepairMode", "status " + refusal,
                          "precheckFailed " + refusal, "prompt None", "status 已选项目：" + project,
                          "state Precheck", prechecking(), "state Launch"}) +
                 noTarget());
}

void FlowTest::f8DuringALaunchFailureBoxIsTheLastWord() {
    LauncherService service;
    service.updatesHandled = true;
    SignalLog log(service);
    connect(&service, &LauncherService::launchFailed, this,
            [&] { runNestedLoop([&] { service.enterRepairMode(); }); });
    service.runStartFlow();
    processPosted();
    QCOMPARE(log.take(), noProject(State::Idle) + QStringList({"state RepairMode", repairText()}));
    QCOMPARE(service.state, State::RepairMode);
}

void FlowTest::postedWorkDiesWithTheService() {
    {
        LauncherService service;
        service.start();
        service.enterRepairMode();
    }
    processPosted();
}

QUORVANE_TEST_MAIN(QCoreApplication, FlowTest)
#include "flow_test.moc"
