// The window by keyboard alone.
#include "support/staged_main.h"
#include "window_scene.h"

#include <QSignalSpy>

using State = LauncherService::State;
using PromptMode = LauncherService::UpdatePromptMode;

class KeyboardTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void f8LeadsToTheRepairMode_data();
    void f8LeadsToTheRepairMode();
    void f8WorksFromEveryWidget();
    void f8IsRefusedWhileATaskIsActive();
    void f8DuringTheCheckOfTheCountdownLeavesTheWindowAsItWas();
    void escClosesTheWindow();
    void enterInThePathFieldStartsNothing_data();
    void enterInThePathFieldStartsNothing();
    void theTabOrderGoesFromTopToBottom_data();
    void theTabOrderGoesFromTopToBottom();
    void spacePressesTheFocusedButton();
};

void KeyboardTest::initTestCase() {
    useLanguage(Language::Chinese);
}

namespace {

void showActive(WindowScene &scene) {
    scene.window.show();
    QApplication::setActiveWindow(&scene.window);
    QVERIFY(QTest::qWaitForWindowActive(&scene.window));
}

} // namespace

void KeyboardTest::f8LeadsToTheRepairMode_data() {
    QTest::addColumn<State>("state");
    for (const State state : allStates())
        QTest::newRow(nameOf(state)) << state;
}

void KeyboardTest::f8LeadsToTheRepairMode() {
    QFETCH(State, state);
    WindowScene scene;
    scene.put(state);
    showActive(scene);
    QSignalSpy states(&scene.service, &LauncherService::stateChanged);
    QTest::keyClick(&scene.window, Qt::Key_F8);
    QCOMPARE(scene.service.state, State::RepairMode);
    QCOMPARE(states.size(), state == State::RepairMode ? 0 : 1);
    QVERIFY(scene.parts.repairPanel->isVisible());
    QCOMPARE(scene.parts.statusLabel->text(), scene.service.statusText);
    QVERIFY(scene.window.isVisible());
}

void KeyboardTest::f8WorksFromEveryWidget() {
    WindowScene scene;
    scene.put(State::Failed);
    showActive(scene);
    for (QWidget *widget : {static_cast<QWidget *>(scene.parts.projectPathEdit),
                            static_cast<QWidget *>(scene.parts.skipPrecheckCheck),
                            static_cast<QWidget *>(scene.parts.launchButton),
                            static_cast<QWidget *>(scene.parts.languageButton)}) {
        scene.put(State::Failed);
        widget->setFocus();
        QVERIFY(widget->hasFocus());
        QTest::keyClick(widget, Qt::Key_F8);
        QCOMPARE(scene.service.state, State::RepairMode);
    }
    scene.put(State::Countdown);
    scene.parts.logView->setFocus();
    QTest::keyClick(scene.parts.logView, Qt::Key_F8);
    QCOMPARE(scene.service.state, State::RepairMode);
}

void KeyboardTest::f8IsRefusedWhileATaskIsActive() {
    WindowScene scene;
    scene.put(State::UpdateCheck);
    scene.setTaskActive(true);
    showActive(scene);
    QTest::keyClick(&scene.window, Qt::Key_F8);
    QCOMPARE(scene.service.state, State::UpdateCheck);
    QCOMPARE(scene.parts.statusLabel->text(),
             QString("更新任务进行中。请先取消任务或等待完成，再进入修复模式（F8）。"));
}

void KeyboardTest::f8DuringTheCheckOfTheCountdownLeavesTheWindowAsItWas() {
    WindowScene scene;
    scene.put(State::Countdown);
    scene.setTaskActive(true);
    showActive(scene);
    QTest::keyClick(&scene.window, Qt::Key_F8);
    QCOMPARE(scene.service.state, State::Countdown);
    QCOMPARE(scene.parts.statusLabel->text(), QString());
    QVERIFY(!scene.service.statusText.isEmpty());
    QVERIFY(scene.parts.repairPanel->isHidden());
    QVERIFY(scene.parts.countdownLabel->isVisible());
}

void KeyboardTest::escClosesTheWindow() {
    WindowScene scene;
    scene.put(State::RepairMode);
    showActive(scene);
    QSignalSpy closed(&scene.window, &QDialog::rejected);
    scene.parts.projectPathEdit->setFocus();
    QTest::keyClick(scene.parts.projectPathEdit, Qt::Key_Escape);
    QVERIFY(!scene.window.isVisible());
    QCOMPARE(closed.size(), 1);
}

void KeyboardTest::enterInThePathFieldStartsNothing_data() {
    QTest::addColumn<int>("key");
    QTest::newRow("Return") << int(Qt::Key_Return);
    QTest::newRow("Enter of the number pad") << int(Qt::Key_Enter);
}

void KeyboardTest::enterInThePathFieldStartsNothing() {
    QFETCH(int, key);
    WindowScene scene;
    scene.put(State::RepairMode);
    scene.offerUpdate(PromptMode::OnlineBanner);
    showActive(scene);
    QSignalSpy states(&scene.service, &LauncherService::stateChanged);
    QSignalSpy status(&scene.service, &LauncherService::statusChanged);
    scene.parts.projectPathEdit->setFocus();
    scene.parts.projectPathEdit->setText("/typed/so/far");
    QTest::keyClick(scene.parts.projectPathEdit, Qt::Key(key));
    QCoreApplication::processEvents();
    QCOMPARE(states.size(), 0);
    QCOMPARE(status.size(), 0);
    QCOMPARE(scene.parts.projectPathEdit->text(), QString("/typed/so/far"));
    QVERIFY(scene.window.isVisible());
    QVERIFY(!QApplication::activeModalWidget());
}

void KeyboardTest::theTabOrderGoesFromTopToBottom_data() {
    QTest::addColumn<State>("state");
    QTest::addColumn<PromptMode>("mode");
    QTest::addColumn<bool>("task");
    for (const State state : allStates())
        QTest::newRow(nameOf(state)) << state << PromptMode::None << false;
    QTest::newRow("a banner over the repair panel")
        << State::RepairMode << PromptMode::OnlineBanner << false;
    QTest::newRow("a banner of a stick") << State::RepairMode << PromptMode::UsbBanner << false;
    QTest::newRow("the badge") << State::RepairMode << PromptMode::BadgeOnly << false;
    QTest::newRow("a running task") << State::ApplyingUpdate << PromptMode::OnlineBanner << true;
}

void KeyboardTest::theTabOrderGoesFromTopToBottom() {
    QFETCH(State, state);
    QFETCH(PromptMode, mode);
    QFETCH(bool, task);
    WindowScene scene;
    scene.service.state = state;
    scene.service.checkInFlight = task;
    scene.offerUpdate(mode);
    showActive(scene);
    scene.parts.languageButton->setFocus();

    QList<QWidget *> visited;
    QPoint last(-1, -1);
    do {
        QWidget *focus = QApplication::focusWidget();
        QVERIFY(focus);
        const QPoint place = focus->mapTo(&scene.window, QPoint());
        QVERIFY2(place.y() > last.y() || place.x() > last.x(), focus->metaObject()->className());
        last = place;
        visited.append(focus);
        QTest::keyClick(focus, Qt::Key_Tab);
    } while (!visited.contains(QApplication::focusWidget()));
    QCOMPARE(QApplication::focusWidget(), visited.first());

    QSet<QWidget *> expected;
    const auto widgets = scene.window.findChildren<QWidget *>();
    for (QWidget *widget : widgets)
        if (widget->isVisible() && widget->isEnabled() && (widget->focusPolicy() & Qt::TabFocus) &&
            !widget->focusProxy())
            expected.insert(widget);
    QCOMPARE(QSet<QWidget *>(visited.begin(), visited.end()), expected);
}

void KeyboardTest::spacePressesTheFocusedButton() {
    WindowScene scene;
    scene.service.projectPath.clear();
    scene.put(State::RepairMode);
    showActive(scene);
    scene.parts.launchButton->setFocus();
    QVERIFY(duringModal([&] { QTest::keyClick(scene.parts.launchButton, Qt::Key_Space); },
                        [](QWidget *box) { box->close(); }));
    QCOMPARE(scene.service.state, State::Failed);
}

QUORVANE_TEST_MAIN(QApplication, KeyboardTest)
#include "keyboard_test.moc"
