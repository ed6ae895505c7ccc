// Where the flow meets updates: when it stops for the user, and how an answer lets it go on.
#include "launcher/launcher_service.h"

#include <utility>

bool LauncherService::isOnlineUpdatePending() const {
    return updateAvailable && !snapshot.fromUsb;
}

bool LauncherService::bannerDue() const {
    return promptMode == UpdatePromptMode::UsbBanner ||
           promptMode == UpdatePromptMode::OnlineBanner;
}

QString LauncherService::promptText() const {
    return snapshot.fromUsb ? tr("检测到离线更新包。请选择是否更新，或继续启动。")
                            : tr("发现在线更新。请选择是否更新，或继续启动。");
}

void LauncherService::computePromptMode() {
    if (!updateAvailable)
        promptMode = UpdatePromptMode::None;
    else if (snapshot.fromUsb)
        promptMode = UpdatePromptMode::UsbBanner;
    else if (remindLater)
        promptMode = UpdatePromptMode::BadgeOnly;
    else
        promptMode = UpdatePromptMode::OnlineBanner;
}

void LauncherService::pauseForPrompt() {
    if (state == State::Countdown && countdownTimer.isActive()) {
        countdownPaused = true;
        countdownTimer.stop();
    }
    if (state < State::ApplyingUpdate)
        setState(State::RepairMode);
}

void LauncherService::resumeCountdownAfterPrompt() {
    if (!countdownPaused)
        return;
    countdownPaused = false;
    if (countdownSeconds < 1 || state != State::RepairMode)
        return;
    setState(State::Countdown);
    Q_EMIT countdownChanged(countdownSeconds);
    countdownTimer.start();
    refreshStatus();
}

// An answer that did not resume the countdown leaves the user in charge.
void LauncherService::settleAfterAnswer() {
    resumeCountdownAfterPrompt();
    if (state < State::ApplyingUpdate && state != State::Countdown)
        setState(State::RepairMode);
}

void LauncherService::remindUpdateLater() {
    if (!updateAvailable)
        return;
    remindLater = true;
    promptMode = UpdatePromptMode::BadgeOnly;
    setStatus(tr("已设为下次启动再提醒。本次可继续启动。"));
    Q_EMIT updatePromptChanged(promptMode);
    settleAfterAnswer();
}

void LauncherService::skipThisOnlineVersion() {
    if (!isOnlineUpdatePending())
        return;
    promptMode = UpdatePromptMode::BadgeOnly;
    setStatus(tr("已跳过此在线版本提示。可通过「有更新」再次打开更新。"));
    Q_EMIT updatePromptChanged(promptMode);
    settleAfterAnswer();
}

// Says nothing by itself. If it resumes the countdown on its way, refreshStatus may raise the
// prompt again, and the timer runs during the launch: both are harmless and meant.
void LauncherService::skipUpdateAndLaunch() {
    updatesHandled = true;
    promptMode = UpdatePromptMode::None;
    resumeCountdownAfterPrompt();
    launchTarget();
}

void LauncherService::ensureUpdateCheck(bool throttled) {
    Q_UNUSED(throttled)
    if (updatesHandled)
        return;
    if (state >= State::Precheck && state != State::RepairMode)
        return;
    if (updateAvailable) {
        computePromptMode();
        Q_EMIT updatePromptChanged(promptMode);
    }
}

void LauncherService::onUpdateCheckFinished() {
    checkInFlight = false;
    const UpdateCheckResult result = checkWatcher.result();
    const bool launch = std::exchange(launchAfterCheck, false);
    logTaskPhase(QStringLiteral("check"), 0,
                 result.found ? QStringLiteral("found") : QStringLiteral("none"));
    if (!takeCheckResult(result)) {
        if (launch)
            launchTarget();
        else
            resumeAfterCheck();
    }
    notifyTaskActive();
}

// True when the flow now waits for the user.
bool LauncherService::takeCheckResult(const UpdateCheckResult &result) {
    if (result.cancelled) {
        // updateCheckDone stays as it was: a later request checks again.
        setStatus(tr("更新检查已取消。"));
        return false;
    }
    updateCheckDone = true;
    if (!result.found) {
        updateAvailable = false;
        setStatus(result.summary.isEmpty() ? tr("无可用更新，将启动当前版本。") : result.summary);
        return false;
    }
    snapshot = result.snapshot;
    updateAvailable = true;
    updateSummary = result.summary;
    computePromptMode();
    Q_EMIT updateSuggestionReady(result.summary);
    Q_EMIT updatePromptChanged(promptMode);
    if (!bannerDue())
        return false;
    resumeCountdownAfterCheck = false;
    pauseForPrompt();
    setStatus(promptText());
    return true;
}

void LauncherService::resumeAfterCheck() {
    const bool resume = std::exchange(resumeCountdownAfterCheck, false);
    if (bannerDue() || countdownPaused)
        return;
    if (resume && countdownSeconds >= 1 && state != State::RepairMode && state != State::Failed) {
        setState(State::Countdown);
        if (!countdownTimer.isActive())
            countdownTimer.start();
        Q_EMIT countdownChanged(countdownSeconds);
        refreshStatus();
        return;
    }
    // A check begun in RepairMode returns there.
    if (state == State::UpdateCheck)
        setState(State::RepairMode);
}
