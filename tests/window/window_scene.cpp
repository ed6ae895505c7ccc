#include "window_scene.h"

#include "frame/locale_manager.h"
#include "support/staged_main.h"

#include <QApplication>
#include <QPointer>
#include <QTimer>
#include <QWindow>

using State = LauncherService::State;
using PromptMode = LauncherService::UpdatePromptMode;

WindowScene::WindowScene()
    : window((service.initialize(), &service))
    , parts(window) {}

void WindowScene::put(State state) {
    service.state = state;
    refresh();
}

void WindowScene::setTaskActive(bool active) {
    service.checkInFlight = active;
    refresh();
}

void WindowScene::offerUpdate(PromptMode mode) {
    service.updateAvailable = mode != PromptMode::None;
    service.promptMode = mode;
    service.snapshot.fromUsb = mode == PromptMode::UsbBanner;
    refresh();
}

void WindowScene::refresh() {
    QVERIFY(QMetaObject::invokeMethod(&window, "refreshUi", Qt::DirectConnection));
}

void showFramed(QWidget &window) {
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QTRY_VERIFY(frameOf(window).height() > 0);
    QCoreApplication::processEvents();
}

QSize frameOf(const QWidget &window) {
    const QMargins frame = window.windowHandle()->frameMargins();
    return {frame.left() + frame.right(), frame.top() + frame.bottom()};
}

namespace {

QString stagedTranslation() {
    return support::stageRoot() + "/app/translations/quorvane_en.qm";
}

} // namespace

void stageTranslation() {
    const QString staged = stagedTranslation();
    QVERIFY(QDir().mkpath(QFileInfo(staged).path()));
    if (!QFile::exists(staged))
        QVERIFY(QFile::copy(QUORVANE_TRANSLATION, staged));
}

void removeTranslation() {
    QVERIFY(QFile::remove(stagedTranslation()));
}

void useLanguage(Language language) {
    const QString wanted = language == Language::English ? "en" : "zh_CN";
    LocaleManager::instance().setLocale(wanted);
    QCOMPARE(LocaleManager::instance().currentLocale(), wanted);
}

void addLanguageRows() {
    QTest::addColumn<Language>("language");
    QTest::newRow("Chinese") << Language::Chinese;
    QTest::newRow("English") << Language::English;
}

QList<State> allStates() {
    const QMetaEnum states = QMetaEnum::fromType<State>();
    QList<State> all;
    for (int i = 0; i < states.keyCount(); ++i)
        all.append(static_cast<State>(states.value(i)));
    return all;
}

QByteArray nameOf(State state) {
    return QMetaEnum::fromType<State>().valueToKey(int(state));
}

bool duringModal(const std::function<void()> &action, const std::function<void(QWidget *)> &visit) {
    bool visited = false;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &look, [&] {
        const QPointer<QWidget> modal = QApplication::activeModalWidget();
        if (!modal || visited)
            return;
        visited = true;
        visit(modal);
        // A visit that failed half-way must not leave the test waiting for ever.
        if (modal && modal->isVisible())
            modal->close();
    });
    look.start(0);
    action();
    return visited;
}
