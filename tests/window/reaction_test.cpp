// What the window does at the signals of the service and for the user: each reaction, the message
// boxes with what goes on behind them, and what is forwarded.
#include "launcher/signal_log.h"
#include "support/platform.h"
#include "support/staged_main.h"
#include "window/shown_part.h"
#include "window_scene.h"

#include "frame/app_paths.h"

#include <QDesktopServices>
#include <QFileDialog>
#include <QMessageBox>

using State = LauncherService::State;
using PromptMode = LauncherService::UpdatePromptMode;

class ReactionTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void everySignalOfTheServiceIsHeard();
    void aStatusIsShownAtOnce();
    void theSecondsAreShownAtOnce();
    void theSuggestionGivesWayToTheStatus();
    void boxes_data();
    void boxes();
    void aLongReportScrollsAndStaysOnTheScreen();
    void aLineBeyondAllMeasureIsReadInParts();
    void exitCodeZeroShowsNoBox();
    void theDumpFolderStandsTwice();
    void theFlowGoesOnBehindABox();
    void aBoxWithinTheCountdownLetsTheSecondsRun();
    void startingReadsThePathBeforeAnythingElse();
    void startingWithoutATypedPathKeepsTheProject();
    void startingTakesTheRiskFromTheBox();
    void theButtonsOpenLogAndDumps();
    void browsingTakesAProject();
    void browsingThatIsCancelledChangesNothing();
    void remindingLater();
    void skippingAVersion_data();
    void skippingAVersion();
    void theHiddenSkipButtonSkipsAndLaunches();
    void cancellingATask();

public Q_SLOTS:
    void takeUrl(const QUrl &url);

private:
    QList<QUrl> opened;
};

void ReactionTest::takeUrl(const QUrl &url) {
    opened.append(url);
}

void ReactionTest::initTestCase() {
    stageTranslation();
}

void ReactionTest::init() {
    useLanguage(Language::Chinese);
    opened.clear();
}

namespace {

// What a user sees of a box.
struct SeenBox {
    QString title;
    QString text;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    Qt::TextFormat format = Qt::AutoText;
    int buttons = 0;
    QMessageBox::StandardButtons standard;
    QWidget *parent = nullptr;
};

SeenBox closeBox(QWidget *widget) {
    SeenBox seen;
    auto *box = qobject_cast<QMessageBox *>(widget);
    if (box != nullptr)
        seen = {box->windowTitle(), box->text(),           box->icon(),
                box->textFormat(),  box->buttons().size(), box->standardButtons(),
                box->parentWidget()};
    widget->close();
    return seen;
}

SeenBox boxDuring(const std::function<void()> &action) {
    SeenBox seen;
    if (!duringModal(action, [&](QWidget *widget) { seen = closeBox(widget); }))
        return SeenBox();
    return seen;
}

} // namespace

void ReactionTest::everySignalOfTheServiceIsHeard() {
    WindowScene scene;
    const QMetaObject &meta = LauncherService::staticMetaObject;
    int heard = 0;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        if (method.methodType() != QMetaMethod::Signal)
            continue;
        // receivers() is protected; the number of connections is what disconnect reports.
        QVERIFY2(QObject::disconnect(&scene.service, method, &scene.window, QMetaMethod()),
                 method.methodSignature());
        ++heard;
    }
    QCOMPARE(heard, 11);
}

void ReactionTest::aStatusIsShownAtOnce() {
    WindowScene scene;
    scene.put(State::RepairMode);
    // The refresh takes the stored text, so a message that is not the stored one gives way to it.
    scene.service.statusText = "stored";
    Q_EMIT scene.service.statusChanged("told");
    QCOMPARE(scene.parts.statusLabel->text(), QString("stored"));
}

void ReactionTest::theSecondsAreShownAtOnce() {
    WindowScene scene;
    scene.put(State::Countdown);
    Q_EMIT scene.service.countdownChanged(2);
    QCOMPARE(scene.parts.countdownLabel->text(), QString("将在 2 秒后自动启动（F8 = 修复模式）"));
    Q_EMIT scene.service.countdownChanged(2);
    QCOMPARE(scene.parts.countdownLabel->text(), QString("将在 2 秒后自动启动（F8 = 修复模式）"));
}

void ReactionTest::theSuggestionGivesWayToTheStatus() {
    WindowScene scene;
    scene.service.statusText = "the status";
    scene.put(State::RepairMode);
    Q_EMIT scene.service.updateSuggestionReady("a summary");
    QCOMPARE(scene.parts.statusLabel->text(), QString("the status"));
}

// --- Boxes -------------------------------------------------------------------------------------

void ReactionTest::boxes_data() {
    QTest::addColumn<QString>("signal");
    QTest::addColumn<int>("icon");
    QTest::addColumn<QString>("chineseTitle");
    QTest::addColumn<QString>("englishTitle");
    QTest::newRow("the precheck failed") << "precheck" << int(QMessageBox::Warning) << "预检失败"
                                         << "The project cannot run";
    QTest::newRow("the launch failed") << "launch" << int(QMessageBox::Critical) << "启动失败"
                                       << "The line could not be started";
    QTest::newRow("the target ended with a code")
        << "exit" << int(QMessageBox::Warning) << "目标进程提前退出"
        << "The line stopped unexpectedly";
}

void ReactionTest::boxes() {
    QFETCH(QString, signal);
    QFETCH(int, icon);
    QFETCH(QString, chineseTitle);
    QFETCH(QString, englishTitle);
    const QString details = "<b>not bold</b>\nC:\\lines\\%1\\demo.yslib";
    for (const Language language : {Language::Chinese, Language::English}) {
        useLanguage(language);
        const bool english = language == Language::English;
        WindowScene scene;
        scene.parts.projectPathEdit->setText("typed");
        const SeenBox box = boxDuring([&] {
            if (signal == "precheck")
                Q_EMIT scene.service.precheckFailed(details);
            else if (signal == "launch")
                Q_EMIT scene.service.launchFailed(details);
            else
                Q_EMIT scene.service.targetExited(7, details);
        });
        QString text = details;
        if (signal == "exit")
            text += (english ? "\nCrash reports: " : "\nDump 目录：") + AppPaths::dumpsDirectory();
        QCOMPARE(box.title, english ? englishTitle : chineseTitle);
        QCOMPARE(box.text, text);
        QCOMPARE(box.icon, QMessageBox::Icon(icon));
        QCOMPARE(box.format, Qt::PlainText);
        QCOMPARE(box.buttons, 1);
        QCOMPARE(box.standard, QMessageBox::StandardButtons(QMessageBox::Ok));
        QCOMPARE(box.parent, &scene.window);
        // The refresh behind the box took the typed text away.
        QCOMPARE(scene.parts.projectPathEdit->text(), scene.service.projectPath);
    }
}

void ReactionTest::aLongReportScrollsAndStaysOnTheScreen() {
    WindowScene scene;
    const QString path = "/lines/" + QString("folder/").repeated(42) + "a.ys";
    QString findings;
    for (int i = 0; i < 30; ++i)
        findings += QString("[error] %1: finding %2\n").arg(path).arg(i);
    bool visited = duringModal([&] { Q_EMIT scene.service.precheckFailed(findings); },
                               [&](QWidget *widget) {
                                   auto *box = qobject_cast<QMessageBox *>(widget);
                                   QVERIFY(box);
                                   QCOMPARE(box->text(), findings);
                                   auto *pane = box->findChild<QPlainTextEdit *>();
                                   QVERIFY(pane);
                                   QVERIFY(pane->isVisible());
                                   QCOMPARE(pane->toPlainText(), findings);
                                   QVERIFY(pane->isReadOnly());
                                   QVERIFY(box->button(QMessageBox::Ok)->isVisible());
                                   QVERIFY(box->height() <= 720);
                                   QVERIFY(box->width() <= 1280);
                                   QTest::keyClick(box, Qt::Key_Escape);
                               });
    QVERIFY(visited);
}

// The layout of one would take seconds, during which nothing answers.
void ReactionTest::aLineBeyondAllMeasureIsReadInParts() {
    WindowScene scene;
    const QString line = QString("word ").repeated(mostShown) + "end";
    const bool visited =
        duringModal([&] { Q_EMIT scene.service.precheckFailed(line); },
                    [&](QWidget *widget) {
                        QCOMPARE(qobject_cast<QMessageBox *>(widget)->text(), line);
                        const auto *pane = widget->findChild<QPlainTextEdit *>();
                        QVERIFY(pane);
                        QCOMPARE(pane->toPlainText(), inShownParts(line));
                        QTest::keyClick(widget, Qt::Key_Escape);
                    });
    QVERIFY(visited);
}

void ReactionTest::exitCodeZeroShowsNoBox() {
    WindowScene scene;
    scene.service.statusText = "ended with 0";
    scene.service.state = State::Failed;
    QVERIFY(!duringModal([&] { Q_EMIT scene.service.targetExited(0, "ended with 0"); },
                         [](QWidget *box) { box->close(); }));
    QVERIFY(!scene.parts.repairPanel->isHidden());
    QCOMPARE(scene.parts.statusLabel->text(), QString("ended with 0"));
}

void ReactionTest::theDumpFolderStandsTwice() {
    WindowScene scene;
    const QString details = "Dump 目录：" + AppPaths::dumpsDirectory();
    const SeenBox box = boxDuring([&] { Q_EMIT scene.service.targetExited(3, details); });
    QCOMPARE(box.text, details + '\n' + details);
}

// The statements behind an emission still run in their order when the box is closed, and what
// happened meanwhile stands between.
void ReactionTest::theFlowGoesOnBehindABox() {
    WindowScene scene;
    scene.service.projectPath.clear();
    scene.put(State::RepairMode);
    SignalLog log(scene.service);
    QVERIFY(duringModal(
        [&] { scene.service.runStartFlow(); },
        [&](QWidget *box) {
            QCOMPARE(scene.service.state, State::Failed);
            // The window's reaction comes first, so the signal itself is not
            // recorded yet. Another one arrives while the box is open.
            QCOMPARE(log.entries(), QStringList({"state Failed", "status 未选择 yslib 项目。"}));
            scene.service.cancelUpdateTask();
            box->close();
        }));
    QCOMPARE(log.take(), QStringList({"state Failed", "status 未选择 yslib 项目。",
                                      "status 当前没有可取消的更新任务。",
                                      "launchFailed 未选择 yslib 项目。"}));
    QCOMPARE(scene.parts.statusLabel->text(), QString("当前没有可取消的更新任务。"));
}

void ReactionTest::aBoxWithinTheCountdownLetsTheSecondsRun() {
    WindowScene scene;
    scene.put(State::Countdown);
    SignalLog log(scene.service);
    QVERIFY(duringModal([&] { Q_EMIT scene.service.precheckFailed("told during the countdown"); },
                        [&](QWidget *box) {
                            scene.service.tickCountdown();
                            QCOMPARE(scene.parts.countdownLabel->text(),
                                     QString("将在 4 秒后自动启动（F8 = 修复模式）"));
                            box->close();
                        }));
    QCOMPARE(log.take(), QStringList({"countdown 4", "countdown 4",
                                      "precheckFailed told during the countdown"}));
}

// --- What the user does ------------------------------------------------------------------------

void ReactionTest::startingReadsThePathBeforeAnythingElse() {
    WindowScene scene;
    scene.service.projectPath = "/lines/old.yslib";
    scene.put(State::RepairMode);
    SignalLog log(scene.service);
    scene.parts.projectPathEdit->setText("  /lines/new project.yslib ");
    QVERIFY(duringModal([&] { scene.parts.launchButton->click(); },
                        [](QWidget *box) { box->close(); }));
    const QString typed = support::rooted("/lines/new project.yslib");
    QCOMPARE(scene.service.projectPath, typed);
    QCOMPARE(log.entries().mid(0, 3),
             QStringList({"prompt None", "status 已选项目：" + typed, "state Precheck"}));
    QCOMPARE(scene.parts.projectPathEdit->text(), typed);
}

void ReactionTest::startingWithoutATypedPathKeepsTheProject() {
    WindowScene scene;
    scene.service.projectPath = "/lines/old.yslib";
    scene.put(State::RepairMode);
    scene.parts.projectPathEdit->setText("   ");
    QVERIFY(duringModal([&] { scene.parts.launchButton->click(); },
                        [](QWidget *box) { box->close(); }));
    QCOMPARE(scene.service.projectPath, QString("/lines/old.yslib"));
}

void ReactionTest::startingTakesTheRiskFromTheBox() {
    WindowScene scene;
    scene.service.projectPath.clear();
    scene.put(State::RepairMode);
    for (const bool risk : {true, false}) {
        scene.parts.skipPrecheckCheck->setChecked(risk);
        QCOMPARE(scene.service.skipCorePluginPrecheck, !risk); // not before the start
        QVERIFY(duringModal([&] { scene.parts.launchButton->click(); },
                            [](QWidget *box) { box->close(); }));
        QCOMPARE(scene.service.skipCorePluginPrecheck, risk);
    }
}

void ReactionTest::theButtonsOpenLogAndDumps() {
    QDesktopServices::setUrlHandler("file", this, "takeUrl");
    WindowScene scene;
    scene.put(State::RepairMode);
    scene.parts.openLogButton->click();
    scene.parts.openDumpsButton->click();
    QDesktopServices::unsetUrlHandler("file");
    QCOMPARE(opened, QList<QUrl>({QUrl::fromLocalFile(AppPaths::launchLogPath()),
                                  QUrl::fromLocalFile(AppPaths::dumpsDirectory())}));
}

void ReactionTest::browsingTakesAProject() {
    const QString path = AppPaths::projectsDirectory() + "/picked.yslib";
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    WindowScene scene;
    scene.put(State::RepairMode);
    QString caption;
    QString folder;
    QStringList filters;
    QVERIFY(duringModal([&] { scene.parts.browseButton->click(); },
                        [&](QWidget *widget) {
                            auto *dialog = qobject_cast<QFileDialog *>(widget);
                            QVERIFY(dialog);
                            caption = dialog->windowTitle();
                            folder = dialog->directory().absolutePath();
                            filters = dialog->nameFilters();
                            dialog->selectFile(path);
                            QMetaObject::invokeMethod(dialog, "accept");
                        }));
    QCOMPARE(caption, QString("选择 yslib 项目"));
    QCOMPARE(folder, QDir(AppPaths::projectsDirectory()).absolutePath());
    QCOMPARE(filters, QStringList("项目文件 (*.yslib)"));
    QCOMPARE(scene.service.projectPath, QDir::cleanPath(path));
    QCOMPARE(scene.parts.projectPathEdit->text(), QDir::cleanPath(path));
}

void ReactionTest::browsingThatIsCancelledChangesNothing() {
    WindowScene scene;
    scene.service.selectProject("/projects/chosen.yslib");
    const QString chosen = scene.service.projectPath;
    QVERIFY(!chosen.isEmpty());
    scene.put(State::RepairMode);
    SignalLog log(scene.service);
    QVERIFY(duringModal([&] { scene.parts.browseButton->click(); },
                        [](QWidget *dialog) { dialog->close(); }));
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(scene.service.projectPath, chosen);
}

void ReactionTest::remindingLater() {
    WindowScene scene;
    scene.service.state = State::RepairMode;
    scene.offerUpdate(PromptMode::OnlineBanner);
    scene.parts.bannerRemindButton->click();
    QVERIFY(scene.service.remindLater);
    QCOMPARE(scene.service.promptMode, PromptMode::BadgeOnly);
    QVERIFY(scene.parts.bannerPanel->isHidden());
    QVERIFY(!scene.parts.hasUpdateButton->isHidden());
    QCOMPARE(scene.parts.statusLabel->text(), QString("已设为下次启动再提醒。本次可继续启动。"));
}

void ReactionTest::skippingAVersion_data() {
    QTest::addColumn<PromptMode>("mode");
    QTest::newRow("an online version is skipped for good") << PromptMode::OnlineBanner;
    QTest::newRow("an update on a stick is passed by and the target starts")
        << PromptMode::UsbBanner;
}

void ReactionTest::skippingAVersion() {
    QFETCH(PromptMode, mode);
    WindowScene scene;
    scene.service.state = State::RepairMode;
    scene.offerUpdate(mode);
    const bool box = duringModal([&] { scene.parts.bannerSkipButton->click(); },
                                 [](QWidget *widget) { widget->close(); });
    const bool usb = mode == PromptMode::UsbBanner;
    QCOMPARE(box, usb); // there is no target to start here
    QCOMPARE(scene.service.updatesHandled, usb);
    QCOMPARE(scene.service.state, usb ? State::Failed : State::RepairMode);
    QCOMPARE(scene.service.promptMode, usb ? PromptMode::None : PromptMode::BadgeOnly);
    QVERIFY(scene.parts.bannerPanel->isHidden());
}

void ReactionTest::theHiddenSkipButtonSkipsAndLaunches() {
    WindowScene scene;
    scene.service.state = State::RepairMode;
    scene.offerUpdate(PromptMode::OnlineBanner);
    QVERIFY(
        duringModal([&] { scene.parts.skipButton->click(); }, [](QWidget *box) { box->close(); }));
    QVERIFY(scene.service.updatesHandled);
    QCOMPARE(scene.service.state, State::Failed);
}

void ReactionTest::cancellingATask() {
    WindowScene scene;
    scene.service.state = State::UpdateCheck;
    scene.setTaskActive(true);
    scene.parts.taskCancelButton->click();
    QCOMPARE(int(scene.service.cancelFlag), 1);
    QCOMPARE(scene.parts.statusLabel->text(), QString("正在取消更新任务…"));
    scene.service.checkInFlight = false;
}

QUORVANE_TEST_MAIN(QApplication, ReactionTest)
#include "reaction_test.moc"
