// What the launcher window shows, derived from the service's fields.

#include "window/launcher_window.h"

#include "frame/locale_manager.h"
#include "window/announcement.h"
#include "window/focus_guide.h"
#include "window/log_notice.h"
#include "window/png_resource.h"
#include "window/text_label.h"
#include "window/window_fit.h"

#include <QCheckBox>
#include <QIcon>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QToolButton>

using State = LauncherService::State;
using PromptMode = LauncherService::UpdatePromptMode;

// --- The state ---------------------------------------------------------------------------------

void LauncherWindow::refreshUi() {
    const State s = service->state;
    focusGuide->beforeChange();
    showProject();
    showStatus(s == State::Countdown ? QString() : service->statusText);
    showPanels(s);
    refreshLogView();
    guideFocus();
    fit->request();
}

// Where the flow waits for the user, a screen reader says what the status has become.
void LauncherWindow::showStatus(const QString &text) {
    statusLabel->setText(text);
    const bool waits = service->state == State::RepairMode || service->state == State::Failed;
    if (waits && !text.isEmpty() && text != announcedStatus)
        announce(statusLabel);
    announcedStatus = waits ? text : QString();
}

// Replaces what the user typed into the field and did not use yet, at every refresh: it shows the
// project that would run.
void LauncherWindow::showProject() {
    const QString &path = service->projectPath;
    projectLabel->setText(tr("项目：%1").arg(path.isEmpty() ? tr("（无）") : path));
    projectLabel->setToolTip(plainToolTip(path));
    projectLabel->setAccessibleDescription(path); // whole, letter by letter
    versionLabel->setText(service->versionSummary());
    projectPathEdit->setText(path);
}

void LauncherWindow::showPanels(State s) {
    const bool showRepair = s == State::RepairMode || s == State::Failed;
    const bool updateWaiting =
        (s == State::Precheck || s == State::UpdateCheck) && service->updateAvailable;
    repairPanel->setVisible(showRepair || updateWaiting);
    countdownLabel->setVisible(s == State::Countdown);
    if (s == State::Countdown)
        showCountdown(service->countdownSeconds);
    actionRow->hide();

    const bool active = service->isUpdateTaskActive();
    const bool banner = !active && bannerDue();
    showBanner(banner);
    for (QPushButton *button :
         {bannerUpdateButton, bannerRemindButton, bannerSkipButton, hasUpdateButton, launchButton})
        button->setEnabled(!active);
    hasUpdateButton->setVisible(service->isOnlineUpdatePending() &&
                                service->promptMode == PromptMode::BadgeOnly && showRepair);

    applyButton->setEnabled(s != State::ApplyingUpdate);
    const bool busy = (s == State::UpdateCheck || s == State::ApplyingUpdate) && !active;
    busyBar->setVisible(busy);
    if (busy)
        busyBar->setRange(0, 0); // the moving form
    taskPanel->setVisible(service->isUpdateTaskActive());
    // Only while the seconds run: the repair panel has a button that opens the whole file.
    logView->setVisible(s == State::Countdown);
}

// Filled before it is shown: a screen reader says what it holds then.
void LauncherWindow::showBanner(bool shown) {
    const bool wasShown = bannerPanel->isVisible();
    const QString before = bannerLabel->text();
    if (shown)
        fillBanner();
    bannerPanel->setVisible(shown);
    if (wasShown && shown && bannerLabel->text() != before)
        announce(bannerLabel);
}

QPushButton *LauncherWindow::likeliestButton() const {
    if (!service->isUpdateTaskActive() && bannerDue())
        return bannerUpdateButton;
    const bool waits = service->state == State::RepairMode || service->state == State::Failed;
    return waits ? launchButton : nullptr;
}

void LauncherWindow::guideFocus() {
    QPushButton *button = likeliestButton();
    focusGuide->afterChange(button,
                            2 * int(service->state) + (button == bannerUpdateButton ? 1 : 0));
}

void LauncherWindow::showCountdown(int secondsRemaining) {
    countdownLabel->setText(tr("将在 %1 秒后自动启动（F8 = 修复模式）").arg(secondsRemaining));
}

// A text that is already there is left alone, so that the pane stays where it was scrolled to.
void LauncherWindow::refreshLogView() {
    const QString run = runLog.text();
    const QString notice = tr("倒计时结束后，启动器检查项目并自动启动产线，无需任何操作。\n"
                              "在此之前会查找更新；显示黄色面板时，F8 暂不起作用。\n"
                              "按 F8 可停止自动启动并进入修复模式：选择项目、查看日志或手动启动。");
    const QString text = run.isEmpty() ? logNotice(notice) : run;
    if (logView->toPlainText() != text)
        logView->setPlainText(text);
}

// --- The language ------------------------------------------------------------------------------

void LauncherWindow::retranslateUi() {
    setWindowTitle(tr("Quorvane 启动器"));
    const QString version = service->currentLauncherVersion();
    titleLabel->setText(version.isEmpty() ? tr("Quorvane 启动器")
                                          : tr("Quorvane 启动器 v%1").arg(version));
    skipPrecheckCheck->setText(tr("跳过核心插件预检（有风险）"));
    browseButton->setText(tr("浏览 yslib…"));
    openLogButton->setText(tr("打开启动日志"));
    openDumpsButton->setText(tr("打开 dump 目录"));
    launchButton->setText(tr("立即启动"));
    applyButton->setText(tr("应用更新"));
    skipButton->setText(tr("跳过并启动当前版本"));
    bannerUpdateButton->setText(tr("立即更新"));
    bannerRemindButton->setText(tr("稍后提醒"));
    bannerSkipButton->setText(tr("跳过此版本"));
    hasUpdateButton->setText(tr("有更新"));
    taskCancelButton->setText(tr("取消更新任务"));
    taskTitleLabel->setText(tr("更新任务"));
    logView->setPlaceholderText(tr("启动日志（本次会话）"));
    updateLanguageButton();
    nameForAccessibility();
    versionLabel->setText(service->versionSummary());
    refreshLogView();
}

namespace {

QIcon languageIcon(const QString &language) {
    QIcon icon;
    for (const QString &size : {QString(), QStringLiteral("@2x")})
        icon.addPixmap(pngResource(QStringLiteral(":/%1%2.png").arg(language, size)));
    return icon;
}

} // namespace

// The icon shows the language in force, the tip the way out of it, written in the language that the
// button leads to.
void LauncherWindow::updateLanguageButton() {
    const bool english = LocaleManager::instance().isEnglish();
    languageButton->setIcon(languageIcon(english ? QStringLiteral("EN") : QStringLiteral("CH")));
    //: Shown while English is in force, to those who read Chinese: stays Chinese.
    languageButton->setToolTip(english ? tr("切换到中文") : QStringLiteral("Switch to English"));
}

// What shows no text of its own has to be named for those who cannot see it.
void LauncherWindow::nameForAccessibility() {
    languageButton->setAccessibleName(languageButton->toolTip());
    logView->setAccessibleName(logView->placeholderText());
    projectPathEdit->setAccessibleName(tr("项目文件路径"));
    busyBar->setAccessibleName(tr("正在处理"));
    taskProgressBar->setAccessibleName(tr("更新任务"));
    taskPanel->setAccessibleName(tr("更新任务"));
    bannerPanel->setAccessibleName(tr("更新提示"));
    repairPanel->setAccessibleName(tr("项目与手动启动"));
}
