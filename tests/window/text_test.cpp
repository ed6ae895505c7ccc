// The texts of the window in both languages, and the change of language in every state.
#include "support/staged_main.h"
#include "window_scene.h"

#include <QIcon>

#include "frame/locale_manager.h"

using State = LauncherService::State;
using PromptMode = LauncherService::UpdatePromptMode;

class TextTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void everyTextInItsLanguage_data();
    void everyTextInItsLanguage();
    void theLanguageButtonShowsTheLanguageAndTheWayOut_data();
    void theLanguageButtonShowsTheLanguageAndTheWayOut();
    void theIconIsSharpOnADenseScreen();
    void theLanguageButtonTogglesInEveryState_data();
    void theLanguageButtonTogglesInEveryState();
    void severalLanguageChangesEndAlike();
    void theButtonStaysWhereTheTranslationIsGone();
    void aStatusOfTheFlowFollowsTheLanguage();
    void theTaskPanelTurnsBusyUntilTheNextReport();
    void aTaskWithoutAReportKeepsItsTitle();
};

void TextTest::initTestCase() {
    stageTranslation();
}

void TextTest::init() {
    useLanguage(Language::Chinese);
}

namespace {

struct Text {
    const char *part;
    QString shown;
    const char *chinese;
    const char *english;
};

QList<Text> textsOf(const WindowScene &scene) {
    const WindowParts &parts = scene.parts;
    return {
        {"window title", scene.window.windowTitle(), "Quorvane 启动器", "Quorvane Launcher"},
        {"title", parts.titleLabel->text(), "Quorvane 启动器", "Quorvane Launcher"},
        {"project", parts.projectLabel->text(), "项目：/p/a.yslib", "Project: /p/a.yslib"},
        {"skip precheck", parts.skipPrecheckCheck->text(), "跳过核心插件预检（有风险）",
         "Start without checking the core plug-in (risky)"},
        {"browse", parts.browseButton->text(), "浏览 yslib…", "Choose project…"},
        {"open log", parts.openLogButton->text(), "打开启动日志", "Open log"},
        {"open dumps", parts.openDumpsButton->text(), "打开 dump 目录", "Open crash reports"},
        {"launch", parts.launchButton->text(), "立即启动", "Start now"},
        {"apply", parts.applyButton->text(), "应用更新", "Install update"},
        {"skip", parts.skipButton->text(), "跳过并启动当前版本",
         "Skip and start what is installed"},
        {"update now", parts.bannerUpdateButton->text(), "立即更新", "Update now"},
        {"remind", parts.bannerRemindButton->text(), "稍后提醒", "Remind me later"},
        {"skip version", parts.bannerSkipButton->text(), "跳过此版本", "Skip this version"},
        {"badge", parts.hasUpdateButton->text(), "有更新", "Update available"},
        {"cancel", parts.taskCancelButton->text(), "取消更新任务", "Cancel update"},
        {"task", parts.taskTitleLabel->text(), "更新任务", "Update"},
        {"log", parts.logView->placeholderText(), "启动日志（本次会话）", "Log of this start"},
        {"countdown", parts.countdownLabel->text(), "将在 5 秒后自动启动（F8 = 修复模式）",
         "The line starts by itself in 5 s (F8 = stop, repair mode)"},
    };
}

// Which letters they are is the keyboard's test.
QString withoutMnemonic(QString text) {
    return text.remove('&');
}

void compareTexts(const WindowScene &scene, Language language) {
    const auto texts = textsOf(scene);
    for (const Text &text : texts) {
        const QString wanted = language == Language::English ? text.english : text.chinese;
        QVERIFY2(withoutMnemonic(text.shown) == wanted, text.part);
    }
    QCOMPARE(scene.parts.versionLabel->text(), scene.service.versionSummary());
}

} // namespace

void TextTest::everyTextInItsLanguage_data() {
    addLanguageRows();
}

void TextTest::everyTextInItsLanguage() {
    QFETCH(Language, language);
    useLanguage(language);
    WindowScene scene;
    scene.service.projectPath = "/p/a.yslib";
    scene.put(State::Countdown);
    compareTexts(scene, language);
}

void TextTest::theLanguageButtonShowsTheLanguageAndTheWayOut_data() {
    QTest::addColumn<Language>("language");
    QTest::addColumn<QString>("icon");
    QTest::addColumn<QString>("tip");
    QTest::newRow("Chinese") << Language::Chinese << ":/CH.png"
                             << "Switch to English";
    QTest::newRow("English") << Language::English << ":/EN.png"
                             << "切换到中文";
}

void TextTest::theLanguageButtonShowsTheLanguageAndTheWayOut() {
    QFETCH(Language, language);
    QFETCH(QString, icon);
    QFETCH(QString, tip);
    useLanguage(language);
    const WindowScene scene;
    const QSize size(28, 28);
    QVERIFY(!QIcon(icon).isNull());
    QCOMPARE(scene.parts.languageButton->icon().pixmap(size).toImage(),
             QIcon(icon).pixmap(size).toImage());
    QCOMPARE(QImage(icon).size(), size);
    QCOMPARE(scene.parts.languageButton->toolTip(), tip);
}

void TextTest::theIconIsSharpOnADenseScreen() {
    QCOMPARE(QImage(":/CH@2x.png").size(), QSize(56, 56));
    QCOMPARE(QImage(":/EN@2x.png").size(), QSize(56, 56));
}

void TextTest::theLanguageButtonTogglesInEveryState_data() {
    QTest::addColumn<State>("state");
    for (const State state : allStates())
        QTest::newRow(nameOf(state)) << state;
}

void TextTest::theLanguageButtonTogglesInEveryState() {
    QFETCH(State, state);
    WindowScene scene;
    scene.service.projectPath = "/p/a.yslib";
    scene.put(State::Countdown); // fills the countdown's text
    scene.service.state = state;
    scene.service.statusText = "before";
    scene.refresh();
    scene.window.show();
    for (const Language language : {Language::English, Language::Chinese}) {
        QTest::mouseClick(scene.parts.languageButton, Qt::LeftButton);
        if (state == State::Countdown)
            compareTexts(scene, language);
        QCOMPARE(scene.parts.launchButton->text(),
                 QString(language == Language::English ? "&Start now" : "立即启动"));
        QCOMPARE(scene.parts.statusLabel->text(),
                 state == State::Countdown ? QString() : scene.service.statusText);
        QCOMPARE(scene.service.state, state);
    }
}

void TextTest::severalLanguageChangesEndAlike() {
    WindowScene scene;
    scene.service.projectPath = "/p/a.yslib";
    scene.put(State::Countdown);
    useLanguage(Language::English);
    for (int i = 0; i < 3; ++i) {
        QEvent change(QEvent::LanguageChange);
        QApplication::sendEvent(&scene.window, &change);
        QCoreApplication::processEvents();
        compareTexts(scene, Language::English);
    }
}

void TextTest::theButtonStaysWhereTheTranslationIsGone() {
    WindowScene scene;
    removeTranslation();
    QTest::mouseClick(scene.parts.languageButton, Qt::LeftButton);
    QCOMPARE(LocaleManager::instance().currentLocale(), QString("zh_CN"));
    QCOMPARE(scene.parts.languageButton->toolTip(), QString("Switch to English"));
    QCOMPARE(scene.parts.launchButton->text(), QString("立即启动"));
    stageTranslation();
}

void TextTest::aStatusOfTheFlowFollowsTheLanguage() {
    WindowScene scene;
    scene.put(State::RepairMode);
    scene.service.refreshStatus();
    QCOMPARE(scene.parts.statusLabel->text(),
             QString("修复模式：选择 yslib、查看日志或手动启动。"));
    useLanguage(Language::English);
    QCOMPARE(scene.parts.statusLabel->text(),
             QString("Repair mode: nothing starts by itself. Choose a project, read the log, or "
                     "start."));
}

void TextTest::theTaskPanelTurnsBusyUntilTheNextReport() {
    WindowScene scene;
    const WindowParts &parts = scene.parts;
    scene.service.taskId = "check_12345678";
    scene.service.state = State::UpdateCheck;
    scene.setTaskActive(true);
    Q_EMIT scene.service.updateTaskProgressChanged("check_12345678", "check", 30,
                                                   "detail:fetch-manifest");
    QCOMPARE(parts.taskProgressBar->value(), 30);
    useLanguage(Language::English);
    QCOMPARE(parts.taskTitleLabel->text(), QString("Update [check_12345678]: Looking for updates"));
    QCOMPARE(parts.taskDetailLabel->text(), QString("Getting and checking the update list…"));
    QCOMPARE(parts.taskProgressBar->maximum(), 0);
    QCOMPARE(parts.taskProgressBar->format(), QString("Working…"));
    Q_EMIT scene.service.updateTaskProgressChanged("check_12345678", "check", 60, "");
    QCOMPARE(parts.taskProgressBar->maximum(), 100);
    QCOMPARE(parts.taskProgressBar->value(), 60);
}

void TextTest::aTaskWithoutAReportKeepsItsTitle() {
    WindowScene scene;
    scene.service.taskId = "check_12345678";
    scene.setTaskActive(true);
    useLanguage(Language::English);
    QCOMPARE(scene.parts.taskTitleLabel->text(), QString("Update"));
}

QUORVANE_TEST_MAIN(QApplication, TextTest)
#include "text_test.moc"
