#include "window/launcher_window.h"

#include "frame/app_paths.h"
#include "frame/locale_manager.h"
#include "window/announcement.h"
#include "window/report_box.h"
#include "window/text_label.h"

#include <QCheckBox>
#include <QDesktopServices>
#include <QEvent>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>
#include <QUrl>

LauncherWindow::LauncherWindow(LauncherService *launcher, QWidget *parent)
    : QDialog(parent)
    , service(launcher) {
    createWidgets();
    buildLayout();
    orderTabs();
    connectButtons();
    connectService();
    retranslateUi();
    refreshUi();
}

// --- Connections -------------------------------------------------------------------------------

void LauncherWindow::connectButtons() {
    const auto onClick = [this](QAbstractButton *button, void (LauncherWindow::*slot)()) {
        connect(button, &QAbstractButton::clicked, this, slot);
    };
    onClick(languageButton, &LauncherWindow::onToggleLocale);
    onClick(browseButton, &LauncherWindow::onBrowseProject);
    onClick(openLogButton, &LauncherWindow::onOpenLogs);
    onClick(openDumpsButton, &LauncherWindow::onOpenDumps);
    onClick(launchButton, &LauncherWindow::onLaunchNow);
    onClick(applyButton, &LauncherWindow::onApplyUpdate);
    onClick(skipButton, &LauncherWindow::onSkipUpdate);
    onClick(bannerUpdateButton, &LauncherWindow::onUpdateNow);
    onClick(bannerRemindButton, &LauncherWindow::onRemindUpdateLater);
    onClick(bannerSkipButton, &LauncherWindow::onSkipThisOnlineVersion);
    onClick(hasUpdateButton, &LauncherWindow::onHasUpdateEntry);
    onClick(taskCancelButton, &LauncherWindow::onCancelUpdateTask);
}

void LauncherWindow::connectService() {
    using Service = LauncherService;
    using Window = LauncherWindow;
    connect(service, &Service::stateChanged, this, &Window::refreshUi);
    connect(service, &Service::statusChanged, this, &Window::onStatusChanged);
    connect(service, &Service::countdownChanged, this, &Window::onCountdownChanged);
    connect(service, &Service::precheckFailed, this, &Window::onPrecheckFailed);
    connect(service, &Service::launchFailed, this, &Window::onLaunchFailed);
    connect(service, &Service::updateSuggestionReady, this, &Window::onSuggestionReady);
    connect(service, &Service::updatePromptChanged, this, &Window::refreshUi);
    connect(service, &Service::updateTaskActiveChanged, this, &Window::refreshUi);
    connect(service, &Service::updateTaskProgressChanged, this, &Window::onUpdateTaskProgress);
    connect(service, &Service::applyUpdateFinished, this, &Window::onApplyFinished);
    connect(service, &Service::targetExited, this, &Window::onTargetExited);
}

// --- Reactions to the service ------------------------------------------------------------------

void LauncherWindow::onStatusChanged(const QString &message) {
    if (service->state != LauncherService::State::Countdown)
        showStatus(message);
    refreshUi();
    refreshLogView();
}

void LauncherWindow::onCountdownChanged(int secondsRemaining) {
    constexpr int lastSeconds = 3;
    showCountdown(secondsRemaining);
    if (secondsRemaining > 0 && secondsRemaining <= lastSeconds)
        announce(countdownLabel);
    refreshLogView();
}

// The refresh puts the status back at once, so the summary stands only where the status holds it.
void LauncherWindow::onSuggestionReady(const QString &summary) {
    statusLabel->setText(summary);
    refreshUi();
}

void LauncherWindow::onPrecheckFailed(const QString &details) {
    showReport(this, QMessageBox::Warning, tr("预检失败"), details);
    refreshUi();
}

void LauncherWindow::onLaunchFailed(const QString &details) {
    showReport(this, QMessageBox::Critical, tr("启动失败"), details);
    refreshUi();
}

// An exit with code 0 is no news. The folder stands twice in the text: `details` names it too.
void LauncherWindow::onTargetExited(int exitCode, const QString &details) {
    if (exitCode != 0) {
        const QString text =
            details + QLatin1Char('\n') + tr("Dump 目录：") + AppPaths::dumpsDirectory();
        showReport(this, QMessageBox::Warning, tr("目标进程提前退出"), text);
    }
    refreshUi();
}

// --- What the user chooses ---------------------------------------------------------------------

void LauncherWindow::onBrowseProject() {
    const QString path = QFileDialog::getOpenFileName(
        this, tr("选择 yslib 项目"), AppPaths::projectsDirectory(), tr("项目文件 (*.yslib)"));
    if (path.isEmpty())
        return;
    service->selectProject(path);
    projectPathEdit->setText(path);
    refreshUi();
}

// A desktop that cannot open the file or folder says so itself, or says nothing.
void LauncherWindow::onOpenLogs() {
    QDesktopServices::openUrl(QUrl::fromLocalFile(AppPaths::launchLogPath()));
}

void LauncherWindow::onOpenDumps() {
    QDesktopServices::openUrl(QUrl::fromLocalFile(AppPaths::dumpsDirectory()));
}

// The field is read before anything else: each signal of the service replaces its text.
void LauncherWindow::onLaunchNow() {
    const QString typed = projectPathEdit->text().trimmed();
    if (!typed.isEmpty())
        service->selectProject(typed);
    service->setSkipCorePluginPrecheck(skipPrecheckCheck->isChecked());
    service->runStartFlow();
    refreshUi();
}

void LauncherWindow::onApplyUpdate() {
    openUpdateDialog();
}

void LauncherWindow::onSkipUpdate() {
    service->skipUpdateAndLaunch();
    refreshUi();
}

void LauncherWindow::onUpdateNow() {
    openUpdateDialog();
}

void LauncherWindow::onRemindUpdateLater() {
    service->remindUpdateLater();
    refreshUi();
}

// The third button of the banner: for a stick there is no version to skip for good.
void LauncherWindow::onSkipThisOnlineVersion() {
    if (service->snapshot.fromUsb)
        service->skipUpdateAndLaunch();
    else
        service->skipThisOnlineVersion();
    refreshUi();
}

void LauncherWindow::onHasUpdateEntry() {
    openUpdateDialog();
}

void LauncherWindow::onCancelUpdateTask() {
    service->cancelUpdateTask();
    refreshUi();
}

void LauncherWindow::onToggleLocale() {
    LocaleManager::instance().toggle();
}

// --- Events ------------------------------------------------------------------------------------

void LauncherWindow::keyPressEvent(QKeyEvent *event) {
    if (event->key() != Qt::Key_F8) {
        QDialog::keyPressEvent(event);
        return;
    }
    service->enterRepairMode();
    refreshUi();
    event->accept();
}

void LauncherWindow::changeEvent(QEvent *event) {
    QDialog::changeEvent(event);
    if (event->type() != QEvent::LanguageChange)
        return;
    retranslateUi();
    service->refreshStatus();
    refreshUi();
    if (service->state != LauncherService::State::Countdown)
        statusLabel->setText(service->statusText);
    // No number until the next report: the bar shows busy.
    if (service->isUpdateTaskActive() && !lastTaskPhase.isEmpty())
        onUpdateTaskProgress(service->taskId, lastTaskPhase, -1, lastTaskDetail);
}
