// The table of the flow: each row is driven with a real service from each of its states, and printed.
#include "ended_future.h"
#include "installation.h"
#include "launcher/launcher_service.h"
#include "launcher/transitions.h"
#include "signal_log.h"
#include "support/staged_main.h"
#include "update/default_manifest_url.h"

#include <QCoreApplication>
#include <QThreadPool>

#include <functional>

using State = LauncherService::State;
using Reach = Transition::Reach;

// Nobody listens there.
QString defaultManifestUrl() {
    return "http://127.0.0.1:1/manifest.json";
}

namespace {

const QList<State> &allStates() {
    static const QList<State> states{State::Idle,        State::Countdown,      State::Precheck,
                                     State::UpdateCheck, State::ApplyingUpdate, State::Launch,
                                     State::Monitor,     State::RepairMode,     State::Failed};
    return states;
}

// What brings a row about, in a service that is in the row's first state already, with a project that
// can run and no target. The end of a worker is told at once, by the watcher's own signal.
using Drive = std::function<void(LauncherService &)>;

void withoutProject(LauncherService &service) {
    service.projectPath.clear();
}

void lastTick(LauncherService &service) {
    service.countdownSeconds = 1;
    service.tickCountdown();
}

void knowStickUpdate(LauncherService &service) {
    service.updateAvailable = service.updateCheckDone = true;
    service.snapshot.fromUsb = true;
}

void knowOnlineUpdate(LauncherService &service) {
    knowStickUpdate(service);
    service.snapshot.fromUsb = false;
    service.snapshot.runtimeEntry = {{"version", "9.0.0"}, {"setupUrl", "setup.exe"}};
}

void pause(LauncherService &service) {
    service.countdownPaused = true;
    service.countdownSeconds = 3;
}

void endTarget(LauncherService &service) {
    QVERIFY(installation::addTarget("wait exit 7"));
    service.targetProcess.start(installation::appPath("LineRunner.exe"), QStringList());
    QVERIFY(service.targetProcess.waitForStarted());
    installation::release();
    QVERIFY(service.targetProcess.waitForFinished());
}

void endCheck(LauncherService &service, bool finds) {
    UpdateCheckResult result;
    result.found = result.snapshot.fromUsb = finds;
    result.projectPath = service.projectPath;
    service.checkWatcher.setFuture(ended(result));
    Q_EMIT service.checkWatcher.finished();
}

void endApply(LauncherService &service, bool success) {
    ApplyResult result;
    result.success = success;
    service.applyWatcher.setFuture(ended(result));
    Q_EMIT service.applyWatcher.finished();
}

void endSetup(LauncherService &service, bool cancelled) {
    ComponentSetupResult result;
    result.cancelled = cancelled;
    service.setupWatcher.setFuture(ended(result));
    Q_EMIT service.setupWatcher.finished();
}

// The check that start() and F8 ask for begins with the next event.
void startCheck(LauncherService &service) {
    const State from = service.state;
    service.updatesHandled = false;
    if (from == State::Countdown)
        service.start();
    else
        service.state = State::RepairMode;
    if (from != State::Countdown)
        service.enterRepairMode();
    service.state = from;
    QCoreApplication::processEvents();
    QVERIFY(service.taskId.startsWith("check"));
}

void startFlow(LauncherService &service) {
    service.runStartFlow();
}

const QMap<QString, Drive> &drives() {
    static const QMap<QString, Drive> all{
        {"initialize", [](LauncherService &s) { s.initialize(); }},
        {"start", [](LauncherService &s) { s.start(); }},
        {"tick reaches 0, no project",
         [](LauncherService &s) {
             withoutProject(s);
             lastTick(s);
         }},
        {"tick reaches 0, project set", lastTick},
        {"manual start, no project",
         [](LauncherService &s) {
             withoutProject(s);
             s.runStartFlow();
         }},
        {"manual start, project set", startFlow},
        {"precheck fails",
         [](LauncherService &s) {
             s.projectPath = "/gone.yslib";
             s.runStartFlow();
         }},
        {"check needed",
         [](LauncherService &s) {
             s.updatesHandled = false;
             s.runStartFlow();
         }},
        {"check running",
         [](LauncherService &s) {
             s.updatesHandled = false;
             s.checkInFlight = true;
             s.runStartFlow();
             QVERIFY(s.launchAfterCheck);
         }},
        {"banner, automatic start",
         [](LauncherService &s) {
             s.updatesHandled = false;
             knowStickUpdate(s);
             s.runStartFlow();
         }},
        {"nothing to ask", startFlow},
        {"no target or start failed", [](LauncherService &s) { s.skipUpdateAndLaunch(); }},
        {"target started",
         [](LauncherService &s) {
             QVERIFY(installation::addTarget("wait"));
             s.skipUpdateAndLaunch();
         }},
        {"F8, no task", [](LauncherService &s) { s.enterRepairMode(); }},
        {"target ended", endTarget},
        {"check started", startCheck},
        {"check found, banner", [](LauncherService &s) { endCheck(s, true); }},
        {"check found, banner, timer paused",
         [](LauncherService &s) {
             s.countdownTimer.start();
             endCheck(s, true);
             QVERIFY(s.countdownPaused && !s.countdownTimer.isActive());
         }},
        {"check found, banner, the target runs", [](LauncherService &s) { endCheck(s, true); }},
        {"check ended, no banner, not to launch", [](LauncherService &s) { endCheck(s, false); }},
        {"check ended, no banner, to launch",
         [](LauncherService &s) {
             s.launchAfterCheck = true;
             endCheck(s, false);
         }},
        {"check ended, no banner, begun in the countdown, seconds left",
         [](LauncherService &s) {
             s.resumeCountdownAfterCheck = true;
             endCheck(s, false);
         }},
        {"remind later",
         [](LauncherService &s) {
             knowOnlineUpdate(s);
             s.remindUpdateLater();
         }},
        {"remind later, paused, seconds left",
         [](LauncherService &s) {
             knowOnlineUpdate(s);
             pause(s);
             s.remindUpdateLater();
         }},
        {"skip version",
         [](LauncherService &s) {
             knowOnlineUpdate(s);
             s.skipThisOnlineVersion();
         }},
        {"skip version, paused, seconds left",
         [](LauncherService &s) {
             knowOnlineUpdate(s);
             pause(s);
             s.skipThisOnlineVersion();
         }},
        {"skip and launch", [](LauncherService &s) { s.skipUpdateAndLaunch(); }},
        {"skip and launch, paused, seconds left",
         [](LauncherService &s) {
             pause(s);
             s.skipUpdateAndLaunch();
         }},
        {"apply accepted",
         [](LauncherService &s) {
             s.updateAvailable = true;
             s.selection.project = false;
             s.applyChosenUpdate();
         }},
        {"apply cancelled or failed", [](LauncherService &s) { endApply(s, false); }},
        {"apply succeeded, setup follows",
         [](LauncherService &s) {
             endApply(s, true);
             QVERIFY(s.setupWatcher.future().isStarted());
         }},
        {"setup cancelled", [](LauncherService &s) { endSetup(s, true); }},
        {"setup ended, to launch",
         [](LauncherService &s) {
             s.launchAfterSetup = true;
             endSetup(s, false);
         }},
        {"setup ended, another project selected",
         [](LauncherService &s) {
             s.launchAfterSetup = true;
             s.setupWatcher.setFuture(ended(ComponentSetupResult()));
             s.selectProject(installation::addRunnableProject("other"));
             Q_EMIT s.setupWatcher.finished();
         }},
        {"setup ended, not to launch", [](LauncherService &s) { endSetup(s, false); }},
    };
    return all;
}

QString eventOf(const Transition &row) {
    return *row.condition == '\0' ? QString(row.trigger)
                                  : QStringLiteral("%1, %2").arg(row.trigger, row.condition);
}

QString reachOf(const Transition &row) {
    switch (row.reach) {
    case Reach::Window:
        break;
    case Reach::Callers:
        return " (by callers alone)";
    case Reach::Nobody:
        return " (by nobody today)";
    }
    return QString();
}

QString textOf(const Transition &row) {
    QStringList from;
    for (const State state : allStates()) {
        if (holds(row.from, state))
            from.append(SignalLog::name(state));
    }
    return from.join(", ") + ": " + eventOf(row) + " -> " + SignalLog::name(row.to) + reachOf(row);
}

} // namespace

Q_DECLARE_METATYPE(const Transition *)

class TransitionsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void aRowIsTrue_data();
    void aRowIsTrue();
    void everyDriveBelongsToARow();
    void noOtherMoveIsInTheTable();
    void print();
};

void TransitionsTest::init() {
    installation::reset();
    QVERIFY(QThreadPool::globalInstance()->waitForDone());
}

void TransitionsTest::aRowIsTrue_data() {
    QTest::addColumn<const Transition *>("row");
    QTest::addColumn<State>("from");
    for (const Transition &row : transitions) {
        for (const State from : allStates()) {
            if (holds(row.from, from))
                QTest::addRow("%s: %s -> %s%s", qPrintable(SignalLog::name(from)),
                              qPrintable(eventOf(row)), qPrintable(SignalLog::name(row.to)),
                              qPrintable(reachOf(row)))
                    << &row << from;
        }
    }
}

void TransitionsTest::aRowIsTrue() {
    QFETCH(const Transition *, row);
    QFETCH(State, from);
    QVERIFY(drives().contains(eventOf(*row)));
    QList<State> states; // the service tells of a target that it ends when it goes
    LauncherService service;
    service.projectPath = installation::addRunnableProject("line", "1.0");
    service.countdownTimer.setInterval(1000 * 1000);
    service.updatesHandled = true;
    service.state = from;
    connect(&service, &LauncherService::stateChanged, this,
            [&states](State state) { states << state; });
    drives().value(eventOf(*row))(service);
    QCOMPARE(states.value(0, from), row->to);
    QVERIFY(from != row->to || states.isEmpty());
}

void TransitionsTest::everyDriveBelongsToARow() {
    QStringList events;
    for (const Transition &row : transitions)
        events.append(eventOf(row));
    for (const QString &driven : drives().keys())
        QVERIFY2(events.contains(driven), qPrintable(driven));
}

// What the table forbids: a check begins where the flow waits for nothing else, and the target is
// watched after its start alone.
void TransitionsTest::noOtherMoveIsInTheTable() {
    QStringList missing;
    for (const State from : allStates()) {
        for (const State to : allStates()) {
            if (from != to && !isTransition(from, to))
                missing.append(SignalLog::name(from) + " " + SignalLog::name(to));
        }
    }
    QCOMPARE(missing,
             QStringList({"Idle Monitor", "Countdown UpdateCheck", "Countdown Monitor",
                          "Precheck Monitor", "UpdateCheck Monitor", "ApplyingUpdate UpdateCheck",
                          "ApplyingUpdate Monitor", "Launch UpdateCheck", "Monitor UpdateCheck",
                          "RepairMode Monitor", "Failed UpdateCheck", "Failed Monitor"}));
}

void TransitionsTest::print() {
    for (const Transition &row : transitions)
        qInfo("%s", qPrintable(textOf(row)));
}

QUORVANE_TEST_MAIN(QCoreApplication, TransitionsTest)
#include "transitions_test.moc"
