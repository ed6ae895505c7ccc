// The window by keyboard alone.
#include "support/staged_main.h"
#include "window_scene.h"

#include "window/focus_guide.h"

#include <QAbstractButton>
#include <QElapsedTimer>
#include <QKeySequence>
#include <QRegularExpression>
#include <QSignalSpy>

#include <algorithm>

using State = LauncherService::State;
using PromptMode = LauncherService::UpdatePromptMode;

class KeyboardTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
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
    void theFocusGoesToTheLikeliestButton_data();
    void theFocusGoesToTheLikeliestButton();
    void enterPressesNoButtonThatHasTheFocus();
    void theFocusMovesOnce();
    void theFocusIsNeverTakenFromThePathField();
    void aDisabledButtonIsWaitedForOnItsPanel();
    void aTaskTakesTheFocusFromTheOfferToThePanelOfTheStart();
    void whoMovedOnIsNotCalledBack();
    void anOpenBoxKeepsTheFocusAndGivesItBack();
    void spacePressesTheButtonUnlessItComesTooEarly();
    void aSecondSpacePressesNothingOnceTheButtonHasGone();
    void everyButtonHasALetterOfItsOwn_data();
    void everyButtonHasALetterOfItsOwn();
    void theDialogsLettersAreTheirOwnToo();
};

void KeyboardTest::initTestCase() {
    stageTranslation();
}

void KeyboardTest::init() {
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
    // From the last one on: the language is rarely what one wants.
    scene.parts.languageButton->setFocus();
    QList<QWidget *> visited;
    QPoint last(-1, -1);
    do {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QWidget *focus = QApplication::focusWidget();
        QVERIFY(focus);
        QVERIFY(!visited.contains(focus));
        visited.append(focus);
        if (focus == scene.parts.languageButton)
            break;
        const QPoint place = focus->mapTo(&scene.window, QPoint());
        QVERIFY2(place.y() > last.y() || place.x() > last.x(), focus->metaObject()->className());
        last = place;
    } while (true);

    // The ring begins at the window: what comes first there has the focus when nothing else has.
    QWidget *end = nullptr;
    for (QWidget *at = scene.window.nextInFocusChain(); at != &scene.window;
         at = at->nextInFocusChain())
        if (visited.contains(at))
            end = at;
    QCOMPARE(end, scene.parts.languageButton);

    QSet<QWidget *> expected;
    const auto widgets = scene.window.findChildren<QWidget *>();
    for (QWidget *widget : widgets)
        if (widget->isVisible() && widget->isEnabled() && (widget->focusPolicy() & Qt::TabFocus) &&
            !widget->focusProxy())
            expected.insert(widget);
    QCOMPARE(QSet<QWidget *>(visited.begin(), visited.end()), expected);

    const WindowParts &parts = scene.parts;
    QList<QWidget *> order = {parts.taskCancelButton,
                              parts.bannerUpdateButton,
                              parts.bannerRemindButton,
                              parts.bannerSkipButton,
                              parts.logView,
                              parts.projectPathEdit,
                              parts.skipPrecheckCheck,
                              parts.hasUpdateButton,
                              parts.browseButton,
                              parts.openLogButton,
                              parts.openDumpsButton,
                              parts.launchButton,
                              parts.applyButton,
                              parts.skipButton,
                              parts.languageButton};
    order.erase(std::remove_if(order.begin(), order.end(),
                               [&](QWidget *widget) { return !expected.contains(widget); }),
                order.end());
    QCOMPARE(visited, order);
}

// --- The focus ---------------------------------------------------------------------------------

void KeyboardTest::theFocusGoesToTheLikeliestButton_data() {
    QTest::addColumn<State>("state");
    QTest::addColumn<PromptMode>("mode");
    QTest::addColumn<QString>("button");
    QTest::newRow("the repair mode") << State::RepairMode << PromptMode::None << "立即启动";
    QTest::newRow("an end") << State::Failed << PromptMode::None << "立即启动";
    QTest::newRow("the badge") << State::RepairMode << PromptMode::BadgeOnly << "立即启动";
    QTest::newRow("a banner") << State::RepairMode << PromptMode::OnlineBanner << "立即更新";
    QTest::newRow("a banner of a stick")
        << State::RepairMode << PromptMode::UsbBanner << "立即更新";
    QTest::newRow("a banner over a running target")
        << State::Monitor << PromptMode::OnlineBanner << "立即更新";
}

void KeyboardTest::theFocusGoesToTheLikeliestButton() {
    QFETCH(State, state);
    QFETCH(PromptMode, mode);
    QFETCH(QString, button);
    WindowScene scene;
    scene.put(State::Countdown);
    showActive(scene);
    scene.parts.languageButton->setFocus(); // moved to before there was a button to go to
    scene.service.state = state;
    scene.offerUpdate(mode);
    auto *focus = qobject_cast<QPushButton *>(QApplication::focusWidget());
    QVERIFY(focus);
    QCOMPARE(focus->text(), button);
}

void KeyboardTest::enterPressesNoButtonThatHasTheFocus() {
    WindowScene scene;
    scene.put(State::RepairMode);
    showActive(scene);
    QSignalSpy pressed(scene.parts.launchButton, &QPushButton::clicked);
    QCOMPARE(QApplication::focusWidget(), scene.parts.launchButton);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter})
        QTest::keyClick(scene.parts.launchButton, key);
    QCOMPARE(pressed.size(), 0);
    QVERIFY(scene.window.isVisible());
}

void KeyboardTest::theFocusMovesOnce() {
    WindowScene scene;
    scene.put(State::RepairMode);
    showActive(scene);
    QCOMPARE(QApplication::focusWidget(), scene.parts.launchButton);
    scene.parts.browseButton->setFocus();
    scene.refresh();
    QCOMPARE(QApplication::focusWidget(), scene.parts.browseButton);
    scene.offerUpdate(PromptMode::OnlineBanner); // the user has moved there since
    QCOMPARE(QApplication::focusWidget(), scene.parts.browseButton);
    scene.service.updateAvailable = false;
    scene.put(State::Monitor); // where that button is gone
    scene.put(State::Failed);
    QCOMPARE(QApplication::focusWidget(), scene.parts.launchButton);
}

void KeyboardTest::theFocusIsNeverTakenFromThePathField() {
    WindowScene scene;
    scene.put(State::RepairMode);
    showActive(scene);
    scene.parts.projectPathEdit->setFocus();
    scene.put(State::Failed);
    QCOMPARE(QApplication::focusWidget(), scene.parts.projectPathEdit);
    scene.offerUpdate(PromptMode::UsbBanner);
    QCOMPARE(QApplication::focusWidget(), scene.parts.projectPathEdit);
}

void KeyboardTest::aDisabledButtonIsWaitedForOnItsPanel() {
    WindowScene scene;
    scene.put(State::Countdown);
    scene.setTaskActive(true);
    showActive(scene);
    scene.put(State::Failed);
    QCOMPARE(QApplication::focusWidget(), scene.parts.repairPanel);
    QTest::keyClick(scene.parts.repairPanel, Qt::Key_Space);
    scene.setTaskActive(false);
    QCOMPARE(QApplication::focusWidget(), scene.parts.launchButton);
    scene.setTaskActive(true); // and back, when it turns grey under the hand
    QCOMPARE(QApplication::focusWidget(), scene.parts.repairPanel);
    scene.setTaskActive(false);
    QCOMPARE(QApplication::focusWidget(), scene.parts.launchButton);
}

void KeyboardTest::aTaskTakesTheFocusFromTheOfferToThePanelOfTheStart() {
    WindowScene scene;
    scene.put(State::RepairMode);
    scene.offerUpdate(PromptMode::OnlineBanner);
    showActive(scene);
    QCOMPARE(QApplication::focusWidget(), scene.parts.bannerUpdateButton);
    scene.setTaskActive(true);
    QCOMPARE(QApplication::focusWidget(), scene.parts.repairPanel);
}

void KeyboardTest::whoMovedOnIsNotCalledBack() {
    WindowScene scene;
    scene.put(State::Countdown);
    scene.setTaskActive(true);
    showActive(scene);
    scene.put(State::Failed);
    scene.parts.openLogButton->setFocus();
    scene.setTaskActive(false);
    QCOMPARE(QApplication::focusWidget(), scene.parts.openLogButton);
}

void KeyboardTest::anOpenBoxKeepsTheFocusAndGivesItBack() {
    WindowScene scene;
    scene.put(State::RepairMode);
    showActive(scene);
    scene.parts.openLogButton->setFocus();
    QVERIFY(duringModal([&] { Q_EMIT scene.service.launchFailed("why"); },
                        [](QWidget *box) { box->close(); }));
    QApplication::setActiveWindow(&scene.window); // off screen nobody else does it
    QTRY_COMPARE(QApplication::focusWidget(), scene.parts.openLogButton);

    scene.put(State::Monitor);
    QVERIFY(duringModal([&] { Q_EMIT scene.service.targetExited(1, "why"); },
                        [&](QWidget *box) {
                            QApplication::setActiveWindow(box);
                            scene.put(State::Failed);
                            QVERIFY(box->isAncestorOf(QApplication::focusWidget()));
                        }));
    QApplication::setActiveWindow(&scene.window);
    QTRY_COMPARE(QApplication::focusWidget(), scene.parts.launchButton);
}

void KeyboardTest::spacePressesTheButtonUnlessItComesTooEarly() {
    WindowScene scene;
    scene.put(State::Countdown);
    showActive(scene);
    QSignalSpy pressed(scene.parts.launchButton, &QPushButton::clicked);
    QElapsedTimer sinceMove;
    sinceMove.start();
    scene.put(State::RepairMode);
    QCOMPARE(QApplication::focusWidget(), scene.parts.launchButton);
    QVERIFY(duringModal(
        [&] {
            scene.service.projectPath.clear(); // so that a start ends at once, with a box
            do {
                QTest::keyClick(scene.parts.launchButton, Qt::Key_Space);
            } while (pressed.isEmpty() && sinceMove.elapsed() < 5000);
        },
        [](QWidget *box) { box->close(); }));
    QCOMPARE(pressed.size(), 1);
    QCOMPARE(scene.service.state, State::Failed);
    QVERIFY(sinceMove.elapsed() >= FocusGuide::restAfterMove);

    // A key that is held down repeats itself, and is no press however long it lasts.
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, " ", true);
    QApplication::sendEvent(scene.parts.launchButton, &held);
    QVERIFY(!scene.parts.launchButton->isDown());
}

void KeyboardTest::aSecondSpacePressesNothingOnceTheButtonHasGone() {
    WindowScene scene;
    scene.put(State::RepairMode);
    showActive(scene);
    QTRY_COMPARE(QApplication::focusWidget(), scene.parts.launchButton);
    QSignalSpy pressed(scene.parts.languageButton, &QPushButton::clicked);
    scene.put(State::Monitor);
    QVERIFY(!scene.parts.launchButton->isVisible());
    QTest::keyClick(QApplication::focusWidget() != nullptr ? QApplication::focusWidget()
                                                           : &scene.window,
                    Qt::Key_Space);
    QCOMPARE(pressed.size(), 0);
    // Who wants to change the language still comes there.
    QTest::keyClick(&scene.window, Qt::Key_Tab);
    QVERIFY(QApplication::focusWidget() != nullptr);
}

// --- Mnemonics ---------------------------------------------------------------------------------

namespace {

// The letters of all buttons that can be seen; a question mark for one without.
QStringList lettersOf(const QWidget &window) {
    QStringList letters;
    const auto buttons = window.findChildren<QAbstractButton *>();
    for (const QAbstractButton *button : buttons) {
        if (!button->isVisibleTo(&window) || button->text().isEmpty())
            continue;
        const QKeySequence key = QKeySequence::mnemonic(button->text());
        letters.append(key.isEmpty() ? "? in " + button->text() : key.toString());
    }
    letters.sort();
    return letters;
}

QStringList withoutDoubles(QStringList letters) {
    letters.removeDuplicates();
    return letters.filter(QRegularExpression("^[^?]"));
}

} // namespace

void KeyboardTest::everyButtonHasALetterOfItsOwn_data() {
    QTest::addColumn<State>("state");
    for (const State state : allStates())
        QTest::newRow(nameOf(state)) << state;
}

void KeyboardTest::everyButtonHasALetterOfItsOwn() {
    QFETCH(State, state);
    useLanguage(Language::English);
    WindowScene scene;
    scene.service.state = state;
    for (const PromptMode mode :
         {PromptMode::None, PromptMode::UsbBanner, PromptMode::OnlineBanner, PromptMode::BadgeOnly})
        for (const bool task : {false, true}) {
            scene.service.checkInFlight = task;
            scene.service.snapshot.projectEntry = {{"name", "demo"}};
            scene.offerUpdate(mode);
            const QStringList letters = lettersOf(scene.window);
            QCOMPARE(letters, withoutDoubles(letters));
        }
    scene.service.checkInFlight = false;
}

void KeyboardTest::theDialogsLettersAreTheirOwnToo() {
    useLanguage(Language::English);
    WindowScene scene;
    scene.put(State::RepairMode);
    scene.offerUpdate(PromptMode::OnlineBanner);
    QVERIFY(duringModal([&] { scene.parts.bannerUpdateButton->click(); },
                        [](QWidget *dialog) {
                            const QStringList letters = lettersOf(*dialog);
                            QCOMPARE(letters.size(), 7);
                            QCOMPARE(letters, withoutDoubles(letters));
                        }));
}

QUORVANE_TEST_MAIN(QApplication, KeyboardTest)
#include "keyboard_test.moc"
