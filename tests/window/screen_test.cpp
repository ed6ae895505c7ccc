// The window on the screens of line PCs, with a window manager's frame around it: CMake runs this program
// once for each screen and scale.
#include "support/staged_main.h"
#include "window_scene.h"

#include "window/text_label.h"
#include "window/window_fit.h"

#include <QAccessible>
#include <QDialogButtonBox>
#include <QScreen>
#include <QWindow>

using State = LauncherService::State;
using PromptMode = LauncherService::UpdatePromptMode;

namespace {

enum class Content { Countdown, Check, Repair, Findings, Banner, StickBanner, Badge, Task };

struct ContentName {
    Content content;
    const char *name;
};

constexpr std::array<ContentName, 8> contents = {{
    {Content::Countdown, "the countdown"},
    {Content::Check, "the countdown with the panel of a check"},
    {Content::Repair, "the repair mode"},
    {Content::Findings, "an end with twelve findings"},
    {Content::Banner, "a banner with twelve findings"},
    {Content::StickBanner, "a banner of a stick"},
    {Content::Badge, "the badge"},
    {Content::Task, "a task"},
}};

} // namespace

Q_DECLARE_METATYPE(Content)

class ScreenTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void theWindowStaysOnItsScreen_data();
    void theWindowStaysOnItsScreen();
    void theDialogShowsItsWholeNote_data();
    void theDialogShowsItsWholeNote();
    void aWindowAtTheEdgeGrowsInwards();
};

void ScreenTest::initTestCase() {
    stageTranslation();
    if (QGuiApplication::platformName() != "xcb")
        QSKIP("needs a screen with a window manager: see on_screen");
}

namespace {

QString findings() {
    QString text = "项目预检失败：";
    for (int i = 1; i <= 12; ++i)
        text += QString("\n[error] YS%1 scripts/station_%1.ys: the import does not exist").arg(i);
    return text;
}

void fill(WindowScene &scene, Content content) {
    LauncherService &service = scene.service;
    service.projectPath = "/lines/line 3/USER/projects/demo/demo.yslib";
    service.statusText =
        content == Content::Findings || content == Content::Banner ? findings() : QString("ready");
    service.updateSummary = QStringList{"A verified update is available (source: stick).",
                                        "Current project version: 2.3.1 (demo.yslib)",
                                        "Can be updated: Project -> 2.4.0", "Choose one."}
                                .join('\n');
    service.taskId = "check_12345678";
    switch (content) {
    case Content::Countdown:
        return scene.put(State::Countdown);
    case Content::Check:
    case Content::Task:
        scene.put(content == Content::Check ? State::Countdown : State::ApplyingUpdate);
        scene.setTaskActive(true);
        Q_EMIT service.updateTaskProgressChanged("check_12345678", "check", -1,
                                                 "detail:fetch-manifest");
        return;
    case Content::Repair:
        return scene.put(State::RepairMode);
    case Content::Findings:
        return scene.put(State::Failed);
    case Content::Banner:
        scene.put(State::RepairMode);
        return scene.offerUpdate(PromptMode::OnlineBanner);
    case Content::StickBanner:
        scene.put(State::RepairMode);
        return scene.offerUpdate(PromptMode::UsbBanner);
    case Content::Badge:
        scene.put(State::RepairMode);
        return scene.offerUpdate(PromptMode::BadgeOnly);
    }
}

QRect freeAreaOf(const QWidget &window) {
    return window.windowHandle()->screen()->availableGeometry();
}

// The most that the frame leaves of the screen.
QSize roomOf(const QWidget &window) {
    return freeAreaOf(window).size() - frameOf(window);
}

bool isOnScreen(const QWidget &window) {
    return freeAreaOf(window).contains(QRect(window.pos(), window.size() + frameOf(window)));
}

// At a scale that is no whole number, a frame of one pixel rounds to none and costs one all the same.
bool isAbout(const QSize &size, const QSize &expected) {
    return qAbs(size.width() - expected.width()) <= 1 &&
           qAbs(size.height() - expected.height()) <= 1;
}

// How many pixels of a widget lie within its window and all panels between.
QSize seenOf(const QWidget *widget) {
    QRect seen(QPoint(), widget->size());
    QPoint offset;
    for (const QWidget *at = widget; !at->isWindow(); at = at->parentWidget()) {
        offset += at->pos();
        seen &= QRect(-offset, at->parentWidget()->size());
    }
    return seen.size();
}

void compareWhole(const QWidget *widget) {
    QVERIFY(widget->isVisible());
    QCOMPARE(seenOf(widget), widget->size());
    QVERIFY2(widget->size().expandedTo(widget->minimumSizeHint()) == widget->size(),
             widget->metaObject()->className());
}

void compareReachable(const QWidget *widget) {
    QVERIFY(widget->isVisible());
    const QSize seen = seenOf(widget);
    QVERIFY2(seen.width() >= 40 && seen.height() >= 16,
             qPrintable(QString("%1x%2").arg(seen.width()).arg(seen.height())));
}

// What must be seen of each content, whatever gives way.
QList<QWidget *> mustBeSeen(const WindowParts &parts, Content content) {
    switch (content) {
    case Content::Countdown:
        return {parts.countdownLabel, parts.logView};
    case Content::Check:
        return {parts.countdownLabel, parts.logView, parts.taskProgressBar, parts.taskCancelButton};
    case Content::Repair:
    case Content::Findings:
        return {parts.projectPathEdit, parts.launchButton};
    case Content::Banner:
    case Content::StickBanner:
        return {parts.projectPathEdit, parts.launchButton, parts.bannerUpdateButton};
    case Content::Badge:
        return {parts.projectPathEdit, parts.launchButton, parts.hasUpdateButton};
    case Content::Task:
        return {parts.taskProgressBar, parts.taskCancelButton};
    }
    return {};
}

} // namespace

void ScreenTest::theWindowStaysOnItsScreen_data() {
    QTest::addColumn<Language>("language");
    QTest::addColumn<Content>("content");
    for (const Language language : {Language::Chinese, Language::English})
        for (const ContentName &row : contents)
            QTest::addRow("%s, %s", row.name, language == Language::English ? "English" : "Chinese")
                << language << row.content;
}

void ScreenTest::theWindowStaysOnItsScreen() {
    QFETCH(Language, language);
    QFETCH(Content, content);
    useLanguage(language);
    WindowScene scene;
    showFramed(scene.window);
    fill(scene, content);
    QCoreApplication::processEvents();
    const QSize room = roomOf(scene.window);
    const QSize least = WindowFit::startSize.boundedTo(room);
    // The narrowest lacks the two pixels of its frame.
    const bool ordinary = room.width() + 2 >= 640 && room.height() >= 360;
    const auto fits = [&] {
        const QSize size = scene.window.size();
        return isOnScreen(scene.window) && isAbout(size.expandedTo(least), size);
    };
    QTRY_VERIFY_WITH_TIMEOUT(fits(), 2000);
    for (const QWidget *part : mustBeSeen(scene.parts, content))
        if (ordinary)
            compareWhole(part);
        else
            compareReachable(part);
    if (content == Content::Countdown || content == Content::Check)
        QVERIFY2(isAbout(scene.window.size(), least),
                 qPrintable(QString::number(scene.window.height())));
    if (scene.parts.logView->isVisible())
        QVERIFY(scene.parts.logView->height() >= 120);
    // What gave way is whole for a screen reader.
    if (content != Content::Countdown && content != Content::Check)
        QCOMPARE(
            QAccessible::queryAccessibleInterface(scene.parts.statusLabel)->text(QAccessible::Name),
            scene.service.statusText);
    scene.service.checkInFlight = false;
}

void ScreenTest::theDialogShowsItsWholeNote_data() {
    addLanguageRows();
}

void ScreenTest::theDialogShowsItsWholeNote() {
    QFETCH(Language, language);
    useLanguage(language);
    WindowScene scene;
    showFramed(scene.window);
    fill(scene, Content::Banner);
    QVERIFY(duringModal([&] { scene.parts.bannerUpdateButton->click(); },
                        [](QWidget *dialog) {
                            QTRY_VERIFY(frameOf(*dialog).height() > 0);
                            QTRY_VERIFY(isOnScreen(*dialog));
                            for (const auto *label : dialog->findChildren<QLabel *>()) {
                                QTRY_VERIFY(label->height() >=
                                            label->heightForWidth(label->width()));
                                QTRY_COMPARE(seenOf(label), label->size());
                            }
                            compareWhole(dialog->findChild<QDialogButtonBox *>());
                        }));
}

void ScreenTest::aWindowAtTheEdgeGrowsInwards() {
    useLanguage(Language::Chinese);
    WindowScene scene;
    showFramed(scene.window);
    const QRect area = freeAreaOf(scene.window);
    const QSize whole = scene.window.size() + frameOf(scene.window);
    const QPoint corner = area.bottomRight() - QPoint(whole.width() - 1, whole.height() - 1);
    scene.window.move(corner);
    QTRY_VERIFY((scene.window.pos() - corner).manhattanLength() <= 2);
    fill(scene, Content::Banner);
    QCoreApplication::processEvents();
    QTRY_VERIFY(isOnScreen(scene.window));
}

QUORVANE_TEST_MAIN(QApplication, ScreenTest)
#include "screen_test.moc"
