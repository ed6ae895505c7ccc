#include "launcher/launcher_service.h"

#include "frame/app_paths.h"
#include "frame/launch_log.h"
#include "launcher/transitions.h"

#include <QElapsedTimer>
#include <QThread>

namespace {

constexpr int countdownLength = 5;
constexpr int workerWaitMs = 3000;
constexpr int workerPollMs = 50;

template<typename Result>
void waitForWorker(const QFutureWatcher<Result> &watcher) {
    QElapsedTimer waited;
    waited.start();
    while (watcher.isRunning() && waited.elapsed() < workerWaitMs)
        QThread::msleep(workerPollMs);
}

} // namespace

LauncherService::LauncherService(QObject *parent)
    : QObject(parent)
    , taskLink(std::make_shared<TaskLink>(this))
    , cancelFlag(taskLink->cancelFlag) {
    countdownTimer.setInterval(1000);
    connect(&countdownTimer, &QTimer::timeout, this, &LauncherService::tickCountdown);
    connect(&targetProcess, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            &LauncherService::onTargetFinished);
    connect(&applyWatcher, &QFutureWatcherBase::finished, this,
            &LauncherService::onProjectApplyFinished);
    connect(&checkWatcher, &QFutureWatcherBase::finished, this,
            &LauncherService::onUpdateCheckFinished);
    connect(&setupWatcher, &QFutureWatcherBase::finished, this,
            &LauncherService::onComponentSetupFinished);
    discardTargetOutput();
}

LauncherService::~LauncherService() {
    cancelFlag = 1;
    waitForWorker(checkWatcher);
    waitForWorker(setupWatcher);
    waitForWorker(applyWatcher);
    taskLink->cut();
    // Here and not in the member's destructor, so that its last report meets a whole object.
    if (targetProcess.state() != QProcess::NotRunning) {
        targetProcess.kill();
        targetProcess.waitForFinished();
    }
}

void LauncherService::start() {
    if (state == State::RepairMode)
        return;
    countdownSeconds = countdownLength;
    setState(State::Countdown);
    refreshStatus();
    // A second time, after that of refreshStatus, and meant: startRunsTheTimerAndTellsFiveTwice.
    Q_EMIT countdownChanged(countdownLength);
    countdownTimer.start();
    QTimer::singleShot(0, this, &LauncherService::lookForUpdates);
}

void LauncherService::lookForUpdates() {
    if (updatesHandled)
        return;
    if (state > State::Countdown && state != State::RepairMode)
        return;
    if (updateAvailable) {
        computePromptMode();
        Q_EMIT updatePromptChanged(promptMode);
    } else if (!updateCheckDone) {
        startUpdateCheck();
    }
}

void LauncherService::tickCountdown() {
    if (state != State::Countdown)
        return;
    --countdownSeconds;
    Q_EMIT countdownChanged(countdownSeconds);
    if (countdownSeconds < 1) {
        countdownTimer.stop();
        runStartFlow();
    } else {
        refreshStatus();
    }
}

void LauncherService::runStartFlow() {
    if (projectPath.isEmpty()) {
        const QString text = tr("未选择 yslib 项目。");
        setState(State::Failed);
        setStatus(text);
        Q_EMIT launchFailed(text);
        return;
    }
    const bool manual = state == State::RepairMode || state == State::Failed;
    setState(State::Precheck);
    setStatus(tr("正在执行项目预检..."));
    QString error;
    if (!runPrecheck(&error)) {
        setState(State::RepairMode);
        setStatus(error);
        Q_EMIT precheckFailed(error);
        return;
    }
    if (!updatesHandled && waitForUpdates(manual))
        return;
    launchTarget();
}

// True when the flow now waits for a check or for the user.
bool LauncherService::waitForUpdates(bool manual) {
    if (checkInFlight || checkWatcher.isRunning()) {
        launchAfterCheck = true;
        setStatus(tr("正在检查更新，请稍候…"));
        return true;
    }
    if (!updateCheckDone) {
        launchAfterCheck = true;
        startUpdateCheck();
        return true;
    }
    computePromptMode();
    Q_EMIT updatePromptChanged(promptMode);
    // A manual start passes a banner by, and is meant to: theFlowWithAKnownUpdate.
    if (!updateAvailable || !bannerDue() || manual)
        return false;
    pauseForPrompt();
    setStatus(promptText());
    return true;
}

void LauncherService::enterRepairMode() {
    if (isUpdateTaskActive()) {
        setStatus(tr("更新任务进行中。请先取消任务或等待完成，再进入修复模式（F8）。"));
        return;
    }
    countdownTimer.stop();
    countdownPaused = false;
    resumeCountdownAfterCheck = false;
    setState(State::RepairMode);
    refreshStatus();
    QTimer::singleShot(0, this, [this] { ensureUpdateCheck(true); });
}

void LauncherService::setSkipCorePluginPrecheck(bool skip) {
    skipCorePluginPrecheck = skip;
}

void LauncherService::setUpdateSelection(const UpdateSelection &chosen) {
    selection = chosen;
}

void LauncherService::refreshStatus() {
    refreshUpdateSummary();
    switch (state) {
    case State::Idle:
        setStatus(projectPath.isEmpty() ? tr("未选择项目。按 F8 进入修复模式。")
                                        : tr("就绪，即将启动：%1").arg(projectPath));
        break;
    case State::Countdown:
        Q_EMIT countdownChanged(countdownSeconds);
        break;
    case State::Precheck:
        setStatus(tr("正在执行项目预检..."));
        break;
    case State::UpdateCheck:
        if (!updateAvailable)
            setStatus(tr("正在检查更新..."));
        break;
    case State::ApplyingUpdate:
        if (statusText.isEmpty())
            setStatus(tr("正在应用更新..."));
        break;
    case State::Launch:
        setStatus(tr("正在启动..."));
        break;
    case State::Monitor:
        setStatus(tr("正在监护目标进程。日志：%1").arg(AppPaths::launchLogPath()));
        break;
    case State::RepairMode:
        if (!updateAvailable || promptMode == UpdatePromptMode::None)
            setStatus(tr("修复模式：选择 yslib、查看日志或手动启动。"));
        break;
    case State::Failed:
        break;
    }
}

void LauncherService::appendLaunchLog(const QString &message) {
    ::appendLaunchLog(message);
}

void LauncherService::setState(State next) {
    if (state == next)
        return;
    Q_ASSERT(isTransition(state, next));
    state = next;
    Q_EMIT stateChanged(next);
}

void LauncherService::setStatus(const QString &message) {
    statusText = message;
    Q_EMIT statusChanged(message);
}
