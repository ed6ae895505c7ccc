// Where the flow meets updates: when it stops for the user, and how an answer lets it go on.
#include "launcher/launcher_service.h"

#include "frame/settings_schema.h"
#include "frame/settings_store.h"
#include "launcher/offer/offer_weighing.h"
#include "update/canonical_manifest.h"

#include <QDateTime>

#include <optional>
#include <utility>

namespace {

constexpr int throttleMs = 30000; // between the starts of two checks in repair mode

QString skippedKey() {
    return QLatin1String(settings_schema::skippedFingerprintKey);
}

// An offer without a fingerprint cannot be remembered, so it was never skipped. Meant:
// anOfferWithoutAFingerprintIsNotRemembered.
bool wasSkipped(const QString &fingerprint) {
    return !fingerprint.isEmpty() &&
           SettingsStore::instance().value(skippedKey(), QString()) == fingerprint;
}

void rememberSkipped(const QString &fingerprint) {
    SettingsStore &settings = SettingsStore::instance();
    settings.setValue(skippedKey(), fingerprint);
    settings.setValue(QLatin1String(settings_schema::skippedAtKey),
                      QDateTime::currentDateTimeUtc().toString(Qt::ISODate));
}

} // namespace

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
    else if (remindLater || wasSkipped(onlineUpdateFingerprint()))
        promptMode = UpdatePromptMode::BadgeOnly;
    else
        promptMode = UpdatePromptMode::OnlineBanner;
}

// Weighs the held manifest again, so that the summary speaks the language in force.
void LauncherService::refreshUpdateSummary() {
    if (!updateAvailable || snapshot.manifestText.isEmpty())
        return;
    const std::optional<QJsonObject> manifest = parseManifest(snapshot.manifestText);
    QString summary;
    if (!manifest || !evaluateManifest(*manifest, &summary))
        return;
    updateSummary = summary;
    Q_EMIT updateSuggestionReady(summary);
    computePromptMode();
    Q_EMIT updatePromptChanged(promptMode);
    if (bannerDue())
        setStatus(promptText());
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
    const OfferWeighing offer = weigh();
    // Once more: the log has it for each of the two texts (aRefreshAndASkipLogTheComparisonTwice).
    logComparison(offer.project, projectPath);
    const QString fingerprint = offerFingerprint(offer);
    if (!fingerprint.isEmpty())
        rememberSkipped(fingerprint);
    appendLaunchLog(QStringLiteral("Online update skipped fingerprint=%1 components=[%2] source=%3")
                        .arg(fingerprint, offerItems(offer), snapshot.source));
    promptMode = UpdatePromptMode::BadgeOnly;
    setStatus(tr("已跳过此在线版本提示。可通过「有更新」再次打开更新。"));
    Q_EMIT updatePromptChanged(promptMode);
    settleAfterAnswer();
}

// Says nothing by itself. If it resumes the countdown on its way, refreshStatus may raise the
// prompt again, and the timer runs during the launch: both are harmless and meant
// (everyAnswerInEveryState).
void LauncherService::skipUpdateAndLaunch() {
    updatesHandled = true;
    promptMode = UpdatePromptMode::None;
    resumeCountdownAfterPrompt();
    launchTarget();
}

void LauncherService::ensureUpdateCheck(bool throttled) {
    if (updatesHandled)
        return;
    if (state >= State::Precheck && state != State::RepairMode)
        return;
    if (updateAvailable) {
        computePromptMode();
        Q_EMIT updatePromptChanged(promptMode);
        return;
    }
    if (updateCheckDone)
        return;
    const qint64 sinceLast = QDateTime::currentMSecsSinceEpoch() - lastCheckStartMs;
    if (throttled && lastCheckStartMs > 0 && sinceLast < throttleMs) {
        appendLaunchLog(
            tr("修复模式下更新检查命中节流窗口（%1 秒），跳过重复请求。").arg(throttleMs / 1000));
        return;
    }
    startUpdateCheck();
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
    // What was found out about another project than the one that is selected now is no offer for
    // this one: it would be replaced by the other's package. Meant: aCheckOfAnotherProject.
    if (result.cancelled || result.projectPath != projectPath) {
        // updateCheckDone stays as it was, a later request checks again. Meant: aCancelledCheck.
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

UpdateChoices LauncherService::updateChoices() const {
    if (!updateAvailable) {
        const UpdateChoice refused{false, tr("当前没有可应用的已验证更新。")};
        return {refused, refused, refused, refused, refused};
    }
    return choices();
}
