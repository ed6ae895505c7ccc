// What the window shows for what the service says.
#include "support/staged_main.h"
#include "window_scene.h"

using State = LauncherService::State;
using PromptMode = LauncherService::UpdatePromptMode;

class RefreshTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void panelsByState_data();
    void panelsByState();
    void panelsByStateWithATask_data();
    void panelsByStateWithATask();
    void promptsByModeAndState_data();
    void promptsByModeAndState();
    void theProjectStandsInLabelFieldAndToolTip();
    void aTypedPathIsReplacedAtAnyRefresh();
    void theStatusIsEmptyDuringTheCountdown();
    void theStatusOfEveryOtherStateIsShown_data();
    void theStatusOfEveryOtherStateIsShown();
    void theCountdownLabelTakesTheSecondsLeft();
    void theBusyBarMoves();
    void theActionRowStaysHidden();
    void theApplyButtonIsOffWhileAnUpdateIsApplied();
    void aWaitingUpdateShowsTheRepairPanel_data();
    void aWaitingUpdateShowsTheRepairPanel();
    void theTaskSwitchesTheButtonsOff();
    void theBadgeNeedsAnOnlineUpdate();
    void aPercentSignInAPathStaysWhatItIs();
};

void RefreshTest::initTestCase() {
    useLanguage(Language::Chinese);
}

namespace {

enum Panel { Repair = 1, Countdown = 2, Log = 4, Busy = 8, Task = 16, Banner = 32, Badge = 64 };

int visiblePanels(const WindowScene &scene) {
    const WindowParts &parts = scene.parts;
    int panels = 0;
    const auto add = [&](const QWidget *widget, Panel panel) {
        if (!widget->isHidden())
            panels |= panel;
    };
    add(parts.repairPanel, Repair);
    add(parts.countdownLabel, Countdown);
    add(parts.logView, Log);
    add(parts.busyBar, Busy);
    add(parts.taskPanel, Task);
    add(parts.bannerPanel, Banner);
    add(parts.hasUpdateButton, Badge);
    return panels;
}

int panelsOf(State state) {
    switch (state) {
    case State::Countdown:
        return Countdown | Log;
    case State::UpdateCheck:
    case State::ApplyingUpdate:
        return Busy;
    case State::RepairMode:
    case State::Failed:
        return Repair;
    default:
        return 0;
    }
}

bool isRepair(State state) {
    return state == State::RepairMode || state == State::Failed;
}

} // namespace

void RefreshTest::panelsByState_data() {
    QTest::addColumn<State>("state");
    const auto states = allStates();
    QCOMPARE(states.size(), 9);
    for (const State state : states)
        QTest::newRow(nameOf(state)) << state;
}

void RefreshTest::panelsByState() {
    QFETCH(State, state);
    WindowScene scene;
    scene.window.show();
    scene.put(state);
    QCOMPARE(visiblePanels(scene), panelsOf(state));
}

void RefreshTest::panelsByStateWithATask_data() {
    panelsByState_data();
}

void RefreshTest::panelsByStateWithATask() {
    QFETCH(State, state);
    WindowScene scene;
    scene.window.show();
    scene.service.state = state;
    scene.setTaskActive(true);
    QCOMPARE(visiblePanels(scene), (panelsOf(state) & ~Busy) | Task);
    scene.setTaskActive(false);
    QCOMPARE(visiblePanels(scene), panelsOf(state));
}

// The banner shows in any state, the badge only beside the repair panel; a waiting update brings the
// panel up in Precheck and UpdateCheck as well, without the badge.
void RefreshTest::promptsByModeAndState_data() {
    QTest::addColumn<State>("state");
    QTest::addColumn<PromptMode>("mode");
    QTest::addColumn<bool>("task");
    const auto modes = QMetaEnum::fromType<PromptMode>();
    for (const State state : allStates())
        for (int i = 0; i < modes.keyCount(); ++i)
            for (const bool task : {false, true})
                QTest::newRow(nameOf(state) + " with " + modes.key(i) + (task ? " and a task" : ""))
                    << state << static_cast<PromptMode>(modes.value(i)) << task;
}

void RefreshTest::promptsByModeAndState() {
    QFETCH(State, state);
    QFETCH(PromptMode, mode);
    QFETCH(bool, task);
    WindowScene scene;
    scene.window.show();
    scene.service.state = state;
    scene.service.checkInFlight = task;
    scene.offerUpdate(mode);

    int expected = panelsOf(state);
    if (task)
        expected = (expected & ~Busy) | Task;
    if (mode != PromptMode::None && (state == State::Precheck || state == State::UpdateCheck))
        expected |= Repair;
    if (!task && (mode == PromptMode::UsbBanner || mode == PromptMode::OnlineBanner))
        expected |= Banner;
    if (mode == PromptMode::BadgeOnly && isRepair(state))
        expected |= Badge;
    QCOMPARE(visiblePanels(scene), expected);
}

void RefreshTest::theProjectStandsInLabelFieldAndToolTip() {
    WindowScene scene;
    scene.service.projectPath.clear();
    scene.refresh();
    QCOMPARE(scene.parts.projectLabel->text(), QString("项目：（无）"));
    QCOMPARE(scene.parts.projectPathEdit->text(), QString());
    scene.service.projectPath = "/lines/a/a.yslib";
    scene.refresh();
    QCOMPARE(scene.parts.projectLabel->text(), QString("项目：/lines/a/a.yslib"));
    QCOMPARE(scene.parts.projectLabel->toolTip(), QString("/lines/a/a.yslib"));
    QCOMPARE(scene.parts.projectPathEdit->text(), QString("/lines/a/a.yslib"));
    QCOMPARE(scene.parts.versionLabel->text(), scene.service.versionSummary());
}

void RefreshTest::aTypedPathIsReplacedAtAnyRefresh() {
    WindowScene scene;
    scene.service.projectPath = "/lines/a/a.yslib";
    scene.put(State::RepairMode);
    scene.parts.projectPathEdit->setText("/half/typ");
    Q_EMIT scene.service.statusChanged("x");
    QCOMPARE(scene.parts.projectPathEdit->text(), QString("/lines/a/a.yslib"));
}

void RefreshTest::theStatusIsEmptyDuringTheCountdown() {
    WindowScene scene;
    scene.service.statusText = "kept by the service";
    scene.put(State::Countdown);
    QCOMPARE(scene.parts.statusLabel->text(), QString());
    Q_EMIT scene.service.statusChanged("told during the countdown");
    QCOMPARE(scene.parts.statusLabel->text(), QString());
    QCOMPARE(scene.parts.countdownLabel->text(), QString("将在 5 秒后自动启动（F8 = 修复模式）"));
}

void RefreshTest::theStatusOfEveryOtherStateIsShown_data() {
    panelsByState_data();
}

void RefreshTest::theStatusOfEveryOtherStateIsShown() {
    QFETCH(State, state);
    if (state == State::Countdown)
        return;
    WindowScene scene;
    scene.service.statusText = "the status";
    scene.put(state);
    QCOMPARE(scene.parts.statusLabel->text(), QString("the status"));
}

void RefreshTest::theCountdownLabelTakesTheSecondsLeft() {
    WindowScene scene;
    scene.service.countdownSeconds = 3;
    scene.put(State::Countdown);
    QCOMPARE(scene.parts.countdownLabel->text(), QString("将在 3 秒后自动启动（F8 = 修复模式）"));
}

void RefreshTest::theBusyBarMoves() {
    WindowScene scene;
    QVERIFY(scene.parts.busyBar->isHidden());
    for (const State state : {State::UpdateCheck, State::ApplyingUpdate}) {
        scene.parts.busyBar->setRange(0, 100);
        scene.put(state);
        QCOMPARE(scene.parts.busyBar->minimum(), 0);
        QCOMPARE(scene.parts.busyBar->maximum(), 0);
    }
}

void RefreshTest::theActionRowStaysHidden() {
    WindowScene scene;
    scene.window.show();
    for (const State state : allStates()) {
        scene.parts.actionRow->show();
        scene.put(state);
        QVERIFY2(scene.parts.actionRow->isHidden(), nameOf(state));
    }
}

void RefreshTest::theApplyButtonIsOffWhileAnUpdateIsApplied() {
    WindowScene scene;
    for (const State state : allStates()) {
        scene.put(state);
        QCOMPARE(scene.parts.applyButton->isEnabled(), state != State::ApplyingUpdate);
    }
}

void RefreshTest::aWaitingUpdateShowsTheRepairPanel_data() {
    QTest::addColumn<State>("state");
    QTest::newRow("the flow waits for a running check") << State::Precheck;
    QTest::newRow("a check owns the flow") << State::UpdateCheck;
}

void RefreshTest::aWaitingUpdateShowsTheRepairPanel() {
    QFETCH(State, state);
    WindowScene scene;
    scene.service.updateAvailable = true;
    scene.put(state);
    QVERIFY(!scene.parts.repairPanel->isHidden());
    scene.service.updateAvailable = false;
    scene.put(state);
    QVERIFY(scene.parts.repairPanel->isHidden());
}

void RefreshTest::theTaskSwitchesTheButtonsOff() {
    WindowScene scene;
    const WindowParts &parts = scene.parts;
    const QList<QPushButton *> switched = {parts.bannerUpdateButton, parts.bannerRemindButton,
                                           parts.bannerSkipButton, parts.hasUpdateButton,
                                           parts.launchButton};
    const QList<QPushButton *> free = {parts.browseButton, parts.openLogButton,
                                       parts.openDumpsButton, parts.taskCancelButton};
    for (const bool active : {true, false}) {
        scene.setTaskActive(active);
        for (const QPushButton *button : switched)
            QCOMPARE(button->isEnabled(), !active);
        for (const QPushButton *button : free)
            QVERIFY(button->isEnabled());
    }
}

void RefreshTest::theBadgeNeedsAnOnlineUpdate() {
    WindowScene scene;
    scene.service.state = State::RepairMode;
    scene.offerUpdate(PromptMode::BadgeOnly);
    QVERIFY(!scene.parts.hasUpdateButton->isHidden());
    scene.service.snapshot.fromUsb = true;
    scene.refresh();
    QVERIFY(scene.parts.hasUpdateButton->isHidden());
}

void RefreshTest::aPercentSignInAPathStaysWhatItIs() {
    WindowScene scene;
    scene.service.projectPath = "/lines/%1 %2/a.yslib";
    scene.refresh();
    QCOMPARE(scene.parts.projectLabel->text(), QString("项目：/lines/%1 %2/a.yslib"));
}

QUORVANE_TEST_MAIN(QApplication, RefreshTest)
#include "refresh_test.moc"
