// How an update reaches the user: banner, dialog, task panel and the report of the end.
#include "launcher/signal_log.h"
#include "support/staged_main.h"
#include "window_scene.h"

#include <QDialogButtonBox>
#include <QFutureInterface>
#include <QMessageBox>
#include <QTranslator>
#include <QVBoxLayout>

using State = LauncherService::State;
using PromptMode = LauncherService::UpdatePromptMode;

class UpdateTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void theBanner_data();
    void theBanner();
    void theDialogIsRefusedWhileATaskIsActive_data();
    void theDialogIsRefusedWhileATaskIsActive();
    void theDialogHoldsTheFiveItemsInTheirOrder_data();
    void theDialogHoldsTheFiveItemsInTheirOrder();
    void theDialogAsksAndExplains_data();
    void theDialogAsksAndExplains();
    void anUnavailableItemSaysWhy();
    void withoutAReasonNothingIsAdded();
    void theButtonsSpeakTheLanguageInForce_data();
    void theButtonsSpeakTheLanguageInForce();
    void aReasonIsReachedByTheTabKey();
    void cancellingTheDialogChangesNothing();
    void nothingTickedGivesAWarning();
    void whatWasTickedIsAppliedItemByItem_data();
    void whatWasTickedIsAppliedItemByItem();
    void whatWasTickedCountsForTheApplyThatFollows();
    void aTaskThatBeginsWhileTheDialogIsOpen_data();
    void aTaskThatBeginsWhileTheDialogIsOpen();
    void theThreeWaysIntoTheDialog();

    void phaseAndDetail_data();
    void phaseAndDetail();
    void thePercentageShowsAsANumber();
    void aReportOfAnotherTaskIsIgnored();
    void thePanelAsksWhetherATaskRuns();

    void theEnd_data();
    void theEnd();
    void theEndRefreshesTheWindow();
    void everyEndOfTheFlowHasItsTitle_data();
    void everyEndOfTheFlowHasItsTitle();
};

void UpdateTest::initTestCase() {
    stageTranslation();
}

void UpdateTest::init() {
    useLanguage(Language::Chinese);
}

namespace {

QList<QCheckBox *> boxesOf(const QWidget *dialog) {
    QList<QCheckBox *> boxes;
    for (int i = 0; i < dialog->layout()->count(); ++i)
        if (auto *box = qobject_cast<QCheckBox *>(dialog->layout()->itemAt(i)->widget()))
            boxes.append(box);
    return boxes;
}

QStringList textsOf(const QList<QCheckBox *> &boxes) {
    QStringList texts;
    for (const QCheckBox *box : boxes)
        texts.append(box->text());
    return texts;
}

void press(QWidget *dialog, QDialogButtonBox::StandardButton button) {
    auto *buttons = dialog->findChild<QDialogButtonBox *>();
    QVERIFY(buttons);
    buttons->button(button)->click();
}

WindowScene &withOffer(WindowScene &scene) {
    scene.service.state = State::RepairMode;
    scene.offerUpdate(PromptMode::OnlineBanner);
    return scene;
}

// Ticks the box at that place alone and presses OK in the dialog that `button` opens, and closes a message that
// comes behind it. How many came up.
int applyTicked(QPushButton *button, int place) {
    int modals = 0;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &look, [&] {
        QWidget *modal = QApplication::activeModalWidget();
        if (modal == nullptr)
            return;
        ++modals;
        if (qobject_cast<QMessageBox *>(modal)) {
            modal->close();
            return;
        }
        const auto boxes = boxesOf(modal);
        for (QCheckBox *box : boxes)
            box->setChecked(false);
        boxes.at(place)->setChecked(true);
        press(modal, QDialogButtonBox::Ok);
    });
    look.start(0);
    button->click();
    return modals;
}

} // namespace

// --- The banner --------------------------------------------------------------------------------

void UpdateTest::theBanner_data() {
    QTest::addColumn<PromptMode>("mode");
    QTest::addColumn<QString>("summary");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("remind");
    QTest::addColumn<QString>("skip");
    QTest::newRow("a stick with a summary") << PromptMode::UsbBanner << "Project -> 2.0"
                                            << "Project -> 2.0" << false << "跳过并启动";
    QTest::newRow("a stick without a summary")
        << PromptMode::UsbBanner << ""
        << "检测到离线更新包，建议尽快更新。" << false << "跳过并启动";
    QTest::newRow("online with a summary") << PromptMode::OnlineBanner << "<i>Runtime</i> -> 3"
                                           << "<i>Runtime</i> -> 3" << true << "跳过此版本";
    QTest::newRow("online without a summary")
        << PromptMode::OnlineBanner << ""
        << "发现在线更新，可选择立即更新或稍后处理。" << true << "跳过此版本";
}

void UpdateTest::theBanner() {
    QFETCH(PromptMode, mode);
    QFETCH(QString, summary);
    QFETCH(QString, text);
    QFETCH(bool, remind);
    QFETCH(QString, skip);
    WindowScene scene;
    scene.service.state = State::RepairMode;
    scene.service.updateSummary = summary;
    scene.offerUpdate(mode);
    QCOMPARE(scene.parts.bannerLabel->text(), text);
    QCOMPARE(!scene.parts.bannerRemindButton->isHidden(), remind);
    QCOMPARE(scene.parts.bannerSkipButton->text(), skip);
    QCOMPARE(scene.parts.bannerUpdateButton->text(), QString("立即更新"));
}

// --- The dialog --------------------------------------------------------------------------------

void UpdateTest::theDialogIsRefusedWhileATaskIsActive_data() {
    addLanguageRows();
}

void UpdateTest::theDialogIsRefusedWhileATaskIsActive() {
    QFETCH(Language, language);
    useLanguage(language);
    const bool english = language == Language::English;
    WindowScene scene;
    scene.setTaskActive(true);
    bool seen = duringModal(
        [&] { QMetaObject::invokeMethod(&scene.window, "onUpdateNow"); },
        [&](QWidget *widget) {
            auto *box = qobject_cast<QMessageBox *>(widget);
            QVERIFY(box);
            QCOMPARE(box->icon(), QMessageBox::Information);
            QCOMPARE(box->windowTitle(),
                     QString(english ? "An update is being worked on" : "更新进行中"));
            QCOMPARE(box->text(),
                     QString(english ? "An update is being worked on already. Wait for it "
                                       "to end, or press \"Cancel update\", then try again."
                                     : "当前已有更新任务在执行，请等待完成或取消后再"
                                       "试。"));
            QCOMPARE(box->buttons().size(), 1);
            box->close();
        });
    QVERIFY(seen);
    scene.service.checkInFlight = false;
}

void UpdateTest::theDialogHoldsTheFiveItemsInTheirOrder_data() {
    QTest::addColumn<Language>("language");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QStringList>("texts");
    QTest::newRow("Chinese") << Language::Chinese << "选择更新内容"
                             << QStringList{"更新项目（USER/projects）",
                                            "更新 Python 工具 (Black/Ruff)", "更新 Runtime 组件",
                                            "更新 Launcher 组件", "更新 Editor 组件"};
    QTest::newRow("English") << Language::English << "Choose what to update"
                             << QStringList{"Project (in USER/projects)",
                                            "Python tools (Black/Ruff)", "Runtime (runs the line)",
                                            "Launcher (this program)",
                                            "Editor (for writing projects)"};
}

void UpdateTest::theDialogHoldsTheFiveItemsInTheirOrder() {
    QFETCH(Language, language);
    QFETCH(QString, title);
    QFETCH(QStringList, texts);
    useLanguage(language);
    WindowScene scene;
    withOffer(scene);
    const QString refusal = language == Language::English ? " (not available)" : "（不可用）";
    bool seen = duringModal(
        [&] { scene.parts.bannerUpdateButton->click(); },
        [&](QWidget *dialog) {
            QCOMPARE(dialog->windowTitle(), title);
            QCOMPARE(dialog->parentWidget(), &scene.window);
            auto *layout = qobject_cast<QVBoxLayout *>(dialog->layout());
            QVERIFY(layout);
            QCOMPARE(layout->count(), 8);
            QStringList shown = textsOf(boxesOf(dialog));
            for (QString &text : shown)
                text.remove(refusal).remove('&');
            QCOMPARE(shown, texts);
            for (const int place : {0, 6}) {
                auto *label = qobject_cast<QLabel *>(layout->itemAt(place)->widget());
                QVERIFY(label);
                QVERIFY(label->wordWrap());
                QVERIFY(!label->text().isEmpty());
                QCOMPARE(label->textFormat(), Qt::PlainText);
            }
            auto *buttons = qobject_cast<QDialogButtonBox *>(layout->itemAt(7)->widget());
            QVERIFY(buttons);
            QCOMPARE(buttons->standardButtons(), QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
            dialog->close();
        });
    QVERIFY(seen);
}

void UpdateTest::theDialogAsksAndExplains_data() {
    QTest::addColumn<Language>("language");
    QTest::addColumn<QStringList>("texts");
    QTest::newRow("Chinese")
        << Language::Chinese
        << QStringList{
               "请选择需要更新的内容（可多选）：",
               "说明：组件更新包会按勾选项提供安装引导。Python 工具优先于 Runtime/Editor "
               "安装；Runtime/Editor/Launcher 安装器会按既定顺序拉起，建议在空闲时执行更新。"};
    QTest::newRow("English")
        << Language::English
        << QStringList{
               "Tick what you want to update (one or more):",
               "Note: each component that you tick opens its own installer. The Python tools "
               "come before Runtime and Editor; Runtime, Editor and Launcher follow in a fixed "
               "order. It is best to update while the line stands still."};
}

// The question above the boxes, the explanation below them.
void UpdateTest::theDialogAsksAndExplains() {
    QFETCH(Language, language);
    useLanguage(language);
    WindowScene scene;
    QStringList texts;
    QVector<int> places;
    QVERIFY(duringModal([&] { withOffer(scene).parts.bannerUpdateButton->click(); },
                        [&](QWidget *dialog) {
                            for (int i = 0; i < dialog->layout()->count(); ++i) {
                                const QWidget *item = dialog->layout()->itemAt(i)->widget();
                                const auto *label = qobject_cast<const QLabel *>(item);
                                if (label == nullptr)
                                    continue;
                                QVERIFY(label->wordWrap());
                                texts.append(label->text());
                                places.append(i);
                            }
                        }));
    QTEST(texts, "texts");
    QCOMPARE(places, QVector<int>({0, 6}));
}

void UpdateTest::anUnavailableItemSaysWhy() {
    WindowScene scene;
    scene.put(State::RepairMode); // no update is known: nothing can be chosen
    const UpdateChoices choices = scene.service.updateChoices();
    bool seen = duringModal([&] { scene.parts.hasUpdateButton->click(); },
                            [&](QWidget *dialog) {
                                const auto boxes = boxesOf(dialog);
                                QCOMPARE(boxes.size(), 5);
                                for (const QCheckBox *box : boxes) {
                                    QVERIFY(!box->isEnabled());
                                    QVERIFY(!box->isChecked());
                                    QVERIFY(box->text().endsWith("（不可用）"));
                                    QCOMPARE(box->toolTip(), choices.project.reason);
                                }
                                dialog->close();
                            });
    QVERIFY(seen);
}

// A translation that leaves the reason out: the service always has one.
class WithoutReasons : public QTranslator {
public:
    WithoutReasons() { QCoreApplication::installTranslator(this); }
    ~WithoutReasons() override { QCoreApplication::removeTranslator(this); }
    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] QString translate(const char *context, const char *, const char *,
                                    int) const override {
        return qstrcmp(context, "LauncherService") == 0 ? QString("") : QString();
    }
};

void UpdateTest::withoutAReasonNothingIsAdded() {
    WindowScene scene;
    scene.put(State::RepairMode);
    const WithoutReasons translation;
    QVERIFY(scene.service.updateChoices().project.reason.isEmpty());
    QVERIFY(duringModal([&] { scene.parts.hasUpdateButton->click(); },
                        [&](QWidget *dialog) {
                            const auto boxes = boxesOf(dialog);
                            QCOMPARE(boxes.size(), 5);
                            for (const QCheckBox *box : boxes) {
                                QVERIFY(!box->isEnabled());
                                QVERIFY(!box->text().contains("不可用"));
                                QCOMPARE(box->toolTip(), QString());
                            }
                            dialog->close();
                        }));
}

// Qt's own translation is not loaded: the names are the launcher's.
void UpdateTest::theButtonsSpeakTheLanguageInForce_data() {
    QTest::addColumn<Language>("language");
    QTest::addColumn<QString>("ok");
    QTest::addColumn<QString>("cancel");
    QTest::newRow("Chinese") << Language::Chinese << "确定"
                             << "取消";
    QTest::newRow("English") << Language::English << "&OK"
                             << "&Cancel";
}

void UpdateTest::theButtonsSpeakTheLanguageInForce() {
    QFETCH(Language, language);
    QFETCH(QString, ok);
    QFETCH(QString, cancel);
    useLanguage(language);
    WindowScene scene;
    withOffer(scene);
    QVERIFY(duringModal([&] { scene.parts.bannerUpdateButton->click(); },
                        [&](QWidget *dialog) {
                            auto *buttons = dialog->findChild<QDialogButtonBox *>();
                            QCOMPARE(buttons->button(QDialogButtonBox::Ok)->text(), ok);
                            QCOMPARE(buttons->button(QDialogButtonBox::Cancel)->text(), cancel);
                        }));
    QVERIFY(duringModal(
        [&] { Q_EMIT scene.service.launchFailed("why"); },
        [&](QWidget *box) {
            QCOMPARE(qobject_cast<QMessageBox *>(box)->button(QMessageBox::Ok)->text(), ok);
        }));
}

namespace {

// The texts of the tool tips that come up, also of those that a platform without activation hides at once.
class ShownTips : public QObject {
public:
    QStringList texts;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override {
        auto *label = qobject_cast<QLabel *>(watched);
        if (event->type() == QEvent::Show && label != nullptr && label->inherits("QTipLabel"))
            texts.append(label->text());
        return false;
    }
};

} // namespace

void UpdateTest::aReasonIsReachedByTheTabKey() {
    ShownTips tips;
    qApp->installEventFilter(&tips);
    WindowScene scene;
    withOffer(scene);
    const UpdateChoices choices = scene.service.updateChoices();
    QVERIFY(!choices.editor.available && !choices.editor.reason.isEmpty());
    QVERIFY(duringModal([&] { scene.parts.bannerUpdateButton->click(); },
                        [&](QWidget *dialog) {
                            QApplication::setActiveWindow(dialog);
                            QWidget *note = dialog->layout()->itemAt(6)->widget();
                            for (int i = 0; i < 8 && QApplication::focusWidget() != note; ++i)
                                QTest::keyClick(dialog, Qt::Key_Tab);
                            QCOMPARE(QApplication::focusWidget(), note);
                            QTRY_COMPARE(tips.texts.size(), 1);
                            QVERIFY(tips.texts.first().contains(choices.editor.reason));
                            QVERIFY(note->accessibleDescription().contains(choices.editor.reason));
                            QTest::keyClick(dialog, Qt::Key_Tab);
                            QVERIFY(QApplication::focusWidget() != note);
                        }));
}

void UpdateTest::cancellingTheDialogChangesNothing() {
    WindowScene scene;
    withOffer(scene);
    SignalLog log(scene.service);
    QVERIFY(duringModal([&] { scene.parts.bannerUpdateButton->click(); },
                        [&](QWidget *dialog) { press(dialog, QDialogButtonBox::Cancel); }));
    QCOMPARE(log.take(), QStringList());
}

void UpdateTest::nothingTickedGivesAWarning() {
    WindowScene scene;
    withOffer(scene);
    SignalLog log(scene.service);
    int modals = 0;
    QTimer look;
    connect(&look, &QTimer::timeout, &look, [&] {
        QWidget *modal = QApplication::activeModalWidget();
        if (modal == nullptr)
            return;
        ++modals;
        auto *box = qobject_cast<QMessageBox *>(modal);
        if (box == nullptr) {
            for (QCheckBox *item : boxesOf(modal))
                item->setChecked(false);
            press(modal, QDialogButtonBox::Ok);
            return;
        }
        QCOMPARE(box->icon(), QMessageBox::Warning);
        QCOMPARE(box->windowTitle(), QString("未选择更新内容"));
        QCOMPARE(box->text(), QString("请至少勾选一项更新内容。"));
        box->close();
    });
    look.start(0);
    scene.parts.bannerUpdateButton->click();
    QCOMPARE(modals, 2); // the dialog does not come again
    QCOMPARE(log.take(), QStringList());
}

void UpdateTest::whatWasTickedIsAppliedItemByItem_data() {
    QTest::addColumn<int>("place"); // in the dialog
    QTest::addColumn<int>("bit");   // of project, runtime, launcher, editor, pythonTools
    QTest::newRow("the project stands first") << 0 << 1;
    QTest::newRow("the Python tools stand second") << 1 << 16;
    QTest::newRow("the runtime stands third") << 2 << 2;
    QTest::newRow("the launcher stands fourth") << 3 << 4;
    QTest::newRow("the editor stands last") << 4 << 8;
}

void UpdateTest::whatWasTickedIsAppliedItemByItem() {
    QFETCH(int, place);
    QFETCH(int, bit);
    WindowScene scene;
    scene.put(State::RepairMode); // without an update every request is refused
    scene.service.selection = UpdateSelection();
    SignalLog log(scene.service);
    const int modals = applyTicked(scene.parts.hasUpdateButton, place);
    const UpdateSelection &chosen = scene.service.selection;
    QCOMPARE(int(chosen.project) | int(chosen.runtime) << 1 | int(chosen.launcher) << 2 |
                 int(chosen.editor) << 3 | int(chosen.pythonTools) << 4,
             bit);
    QCOMPARE(log.take(), QStringList("not applied 当前没有可应用的已验证更新。"));
    QCOMPARE(modals, 2);
}

void UpdateTest::whatWasTickedCountsForTheApplyThatFollows() {
    WindowScene scene;
    withOffer(scene);
    scene.service.selection = {false, false, false, false, false};
    SignalLog log(scene.service);
    QCOMPARE(applyTicked(scene.parts.bannerUpdateButton, 0), 2);
    QString why;
    QVERIFY(!scene.service.isProjectEligible(&why));
    QCOMPARE(log.take(), QStringList("not applied 项目更新不可用：" + why));
}

void UpdateTest::aTaskThatBeginsWhileTheDialogIsOpen_data() {
    QTest::addColumn<QString>("task");
    QTest::newRow("a check") << "check";
    QTest::newRow("a project") << "apply";
    QTest::newRow("components") << "setup";
}

// The seconds and the service go on behind the dialog: the request is refused by the status, and what
// was ticked is kept.
void UpdateTest::aTaskThatBeginsWhileTheDialogIsOpen() {
    QFETCH(QString, task);
    WindowScene scene;
    withOffer(scene);
    LauncherService &service = scene.service;
    service.taskId = task + "_1";
    SignalLog log(service);
    QFutureInterface<ApplyResult> apply;
    QFutureInterface<ComponentSetupResult> setup;
    QVERIFY(duringModal([&] { scene.parts.bannerUpdateButton->click(); },
                        [&](QWidget *dialog) {
                            for (QCheckBox *box : boxesOf(dialog))
                                box->setChecked(box->text().contains("Runtime"));
                            if (task == "check") {
                                service.checkInFlight = true;
                            } else if (task == "apply") {
                                apply.reportStarted();
                                service.applyWatcher.setFuture(apply.future());
                            } else {
                                setup.reportStarted();
                                service.setupWatcher.setFuture(setup.future());
                            }
                            press(dialog, QDialogButtonBox::Ok);
                        }));
    QCOMPARE(log.take(), QStringList("status 更新任务正在进行中..."));
    QCOMPARE(service.taskId, task + "_1");
    QVERIFY(service.selection.runtime && !service.selection.project);
    QVERIFY(!scene.parts.taskPanel->isHidden());
    QVERIFY(scene.parts.bannerPanel->isHidden());
    QCOMPARE(scene.parts.statusLabel->text(), QString("更新任务正在进行中..."));
    service.checkInFlight = false;
    apply.reportFinished();
    setup.reportFinished();
}

void UpdateTest::theThreeWaysIntoTheDialog() {
    WindowScene scene;
    withOffer(scene);
    for (QPushButton *button :
         {scene.parts.bannerUpdateButton, scene.parts.hasUpdateButton, scene.parts.applyButton})
        QVERIFY(duringModal([&] { button->click(); },
                            [](QWidget *dialog) {
                                QCOMPARE(boxesOf(dialog).size(), 5);
                                dialog->close();
                            }));
}

// --- The running task --------------------------------------------------------------------------

void UpdateTest::phaseAndDetail_data() {
    QTest::addColumn<QString>("phase");
    QTest::addColumn<QString>("detail");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("text");
    const QString title = "更新任务 [apply_1]：";
    QTest::newRow("check") << "check"
                           << "detail:fetch-manifest" << title + "检查更新"
                           << "拉取并校验 manifest…";
    QTest::newRow("check before an apply") << "check"
                                           << "detail:verify-manifest" << title + "检查更新"
                                           << "校验 manifest…";
    QTest::newRow("download") << "download"
                              << "detail:download-project" << title + "下载"
                              << "下载项目更新包…";
    QTest::newRow("verify, good") << "verify"
                                  << "detail:verify-ok" << title + "校验"
                                  << "项目包校验完成";
    QTest::newRow("verify, bad") << "verify"
                                 << "detail:verify-fail" << title + "校验"
                                 << "项目包校验失败";
    QTest::newRow("setup") << "setup"
                           << "detail:setup-prepare" << title + "安装组件"
                           << "准备组件安装包…";
    QTest::newRow("an unknown phase stands as it is") << "Check"
                                                      << "" << title + "Check"
                                                      << "";
    QTest::newRow("an unknown key loses its prefix") << "apply"
                                                     << "detail:something-else" << title + "apply"
                                                     << "something-else";
    QTest::newRow("free text stands as it is") << "apply"
                                               << "the detail: 5 of 7 <b>" << title + "apply"
                                               << "the detail: 5 of 7 <b>";
    QTest::newRow("places in outside text are not filled") << "%2"
                                                           << "%1" << title + "%2"
                                                           << "%1";
}

void UpdateTest::phaseAndDetail() {
    QFETCH(QString, phase);
    QFETCH(QString, detail);
    QFETCH(QString, title);
    QFETCH(QString, text);
    WindowScene scene;
    scene.service.taskId = "apply_1";
    scene.service.checkInFlight = true;
    Q_EMIT scene.service.updateTaskProgressChanged("apply_1", phase, -1, detail);
    QCOMPARE(scene.parts.taskTitleLabel->text(), title);
    QCOMPARE(scene.parts.taskDetailLabel->text(), text);
    QCOMPARE(scene.parts.taskProgressBar->minimum(), 0);
    QCOMPARE(scene.parts.taskProgressBar->maximum(), 0);
    QCOMPARE(scene.parts.taskProgressBar->format(), QString("进行中…"));
    QVERIFY(!scene.parts.taskPanel->isHidden());
    scene.service.checkInFlight = false;
}

void UpdateTest::thePercentageShowsAsANumber() {
    WindowScene scene;
    scene.service.taskId = "apply_1";
    for (const int percent : {0, 42, 100}) {
        Q_EMIT scene.service.updateTaskProgressChanged("apply_1", "download", percent, "");
        QCOMPARE(scene.parts.taskProgressBar->minimum(), 0);
        QCOMPARE(scene.parts.taskProgressBar->maximum(), 100);
        QCOMPARE(scene.parts.taskProgressBar->value(), percent);
        QCOMPARE(scene.parts.taskProgressBar->text(), QString("%1%").arg(percent));
    }
}

void UpdateTest::aReportOfAnotherTaskIsIgnored() {
    WindowScene scene;
    scene.service.taskId = "check_2";
    Q_EMIT scene.service.updateTaskProgressChanged("check_1", "download", 7, "late");
    QCOMPARE(scene.parts.taskTitleLabel->text(), QString("更新任务"));
    QCOMPARE(scene.parts.taskDetailLabel->text(), QString());
}

void UpdateTest::thePanelAsksWhetherATaskRuns() {
    WindowScene scene;
    scene.service.taskId = "apply_1";
    scene.setTaskActive(true);
    QVERIFY(!scene.parts.taskPanel->isHidden());
    scene.service.checkInFlight = false;
    Q_EMIT scene.service.updateTaskProgressChanged("apply_1", "check", -1, "");
    QVERIFY(scene.parts.taskPanel->isHidden());
}

// --- The end -----------------------------------------------------------------------------------

void UpdateTest::theEnd_data() {
    QTest::addColumn<bool>("success");
    QTest::addColumn<QString>("details");
    QTest::addColumn<QString>("title");
    const auto fails = [](const char *name, const QString &details, const QString &title) {
        QTest::newRow(name) << false << details << title;
    };
    QTest::newRow("success") << true << "项目更新已完成。\nRuntime"
                             << "更新完成";
    QTest::newRow("success is not searched") << true << "[network] cancelled"
                                             << "更新完成";
    fails("network", "[network] Operation canceled", "网络错误");
    fails("network in capitals", "[NETWORK] x", "网络错误");
    fails("hash", "[hash] SHA256 mismatch", "校验失败");
    fails("verify", "[verify] signature", "验签失败");
    fails("the class goes before the words", "[verify] cancelled", "验签失败");
    fails("network goes before hash", "[hash] after [network]", "网络错误");
    fails("hash goes before verify", "[verify] after [hash]", "校验失败");
    fails("the short class", "[cancel] by user", "已取消");
    fails("the class that is sent has its word found", "[cancelled] x", "已取消");
    fails("the word anywhere", "组件更新任务已取消。", "已取消");
    fails("the English word", "it was Cancelled", "已取消");
    fails("a refusal has no class", "未选择任何更新内容。", "更新失败");
    fails("one l is another word", "Operation canceled", "更新失败");
}

void UpdateTest::theEnd() {
    QFETCH(bool, success);
    QFETCH(QString, details);
    QFETCH(QString, title);
    WindowScene scene;
    bool seen = duringModal([&] { Q_EMIT scene.service.applyUpdateFinished(success, details); },
                            [&](QWidget *widget) {
                                auto *box = qobject_cast<QMessageBox *>(widget);
                                QVERIFY(box);
                                QCOMPARE(box->windowTitle(), title);
                                QCOMPARE(box->text(), details);
                                QCOMPARE(box->textFormat(), Qt::PlainText);
                                QCOMPARE(box->icon(),
                                         success ? QMessageBox::Information : QMessageBox::Warning);
                                QCOMPARE(box->buttons().size(), 1);
                                box->close();
                            });
    QVERIFY(seen);
}

void UpdateTest::theEndRefreshesTheWindow() {
    WindowScene scene;
    scene.parts.projectPathEdit->setText("typed");
    QVERIFY(duringModal([&] { Q_EMIT scene.service.applyUpdateFinished(true, "done"); },
                        [](QWidget *box) { box->close(); }));
    QCOMPARE(scene.parts.projectPathEdit->text(), scene.service.projectPath);
}

// The texts with which the flow itself ends an update; those of the layers below are one language.
void UpdateTest::everyEndOfTheFlowHasItsTitle_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("english");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("englishTitle");
    const auto ends = [](const char *text, const char *english, bool cancelled) {
        QTest::newRow(text) << text << english << (cancelled ? "已取消" : "更新失败")
                            << (cancelled ? "Cancelled" : "Update failed");
    };
    ends("更新任务已取消。", "The update was cancelled. Press \"Start now\" to start the line.",
         true);
    ends("组件更新任务已取消。",
         "The component update was cancelled. Press \"Start now\" to start the line.", true);
    ends("当前没有可应用的已验证更新。", "There is no checked update that could be installed.",
         false);
    ends("未选择任何更新内容。", "Nothing was ticked, so nothing was updated.", false);
    ends("项目更新不可用：%1", "The project cannot be updated: %1", false);
}

void UpdateTest::everyEndOfTheFlowHasItsTitle() {
    QFETCH(QString, text);
    QFETCH(QString, english);
    QFETCH(QString, title);
    QFETCH(QString, englishTitle);
    const QByteArray source = text.toUtf8();
    for (const Language language : {Language::Chinese, Language::English}) {
        useLanguage(language);
        const bool inEnglish = language == Language::English;
        WindowScene scene;
        const QString told = QCoreApplication::translate("LauncherService", source);
        QCOMPARE(told, inEnglish ? english : text);
        QString shown;
        QVERIFY(duringModal([&] { Q_EMIT scene.service.applyUpdateFinished(false, told); },
                            [&](QWidget *box) {
                                shown = box->windowTitle();
                                box->close();
                            }));
        QCOMPARE(shown, inEnglish ? englishTitle : title);
    }
}

QUORVANE_TEST_MAIN(QApplication, UpdateTest)
#include "update_test.moc"
