// The update tasks: one named unit of work at a time, watched and cancelled from the main thread.
#include "launcher/launcher_service.h"

#include "frame/settings_store.h"

#include <QDateTime>
#include <QStringList>
#include <QUuid>
#include <QtConcurrent>

#include <utility>

namespace {

// On a pool thread, with a context of its own. `link` keeps the cancel flag alive.
UpdateCheckResult checkForUpdates(UpdateContext context, const std::shared_ptr<TaskLink> &link) {
    Q_UNUSED(link)
    UpdateCheckResult result;
    try {
        result.found = context.runUpdateCheck(&result.summary);
        result.snapshot = context.snapshot;
    } catch (...) {
        // Out of memory: as if nothing had been found. Nothing may leave the thread.
        result = UpdateCheckResult();
    }
    result.cancelled = context.cancelRequested();
    return result;
}

} // namespace

bool LauncherService::isUpdateTaskActive() const {
    return checkInFlight || checkWatcher.isRunning() || applyWatcher.isRunning() ||
           setupWatcher.isRunning();
}

QString LauncherService::beginUpdateTask(const QString &kind) {
    const QString unique = QUuid::createUuid().toString(QUuid::WithoutBraces).left(8);
    taskId = QStringLiteral("%1_%2").arg(kind, unique);
    cancelFlag = 0;
    cancelRef = &cancelFlag;
    appendLaunchLog(QStringLiteral("[task %1] started kind=%2").arg(taskId, kind));
    notifyTaskActive();
    return taskId;
}

void LauncherService::startUpdateCheck() {
    if (checkInFlight || checkWatcher.isRunning() || updatesHandled)
        return;
    lastCheckStartMs = QDateTime::currentMSecsSinceEpoch();
    beginUpdateTask(QStringLiteral("check"));
    checkInFlight = true;
    resumeCountdownAfterCheck = state == State::Countdown;
    if (state != State::Countdown)
        setState(State::UpdateCheck);
    reportUpdateTaskProgress(taskId, QStringLiteral("check"), -1,
                             QStringLiteral("detail:fetch-manifest"));
    UpdateContext context;
    context.projectPath = projectPath;
    context.cancelRef = cancelRef;
    checkWatcher.setFuture(QtConcurrent::run(checkForUpdates, context, taskLink));
}

void LauncherService::cancelUpdateTask() {
    if (!isUpdateTaskActive()) {
        setStatus(tr("当前没有可取消的更新任务。"));
        return;
    }
    cancelFlag = 1;
    appendLaunchLog(QStringLiteral("[task %1] cancel requested by user").arg(taskId));
    setStatus(tr("正在取消更新任务…"));
}

void LauncherService::reportUpdateTaskProgress(const QString &reportedTask, const QString &phase,
                                               int percent, const QString &detail) {
    if (reportedTask == taskId)
        Q_EMIT updateTaskProgressChanged(reportedTask, phase, percent, detail);
}

void LauncherService::notifyTaskActive() {
    Q_EMIT updateTaskActiveChanged(isUpdateTaskActive());
}

void LauncherService::logTaskPhase(const QString &phase, qint64 elapsedMs,
                                   const QString &detail) const {
    QString line = QStringLiteral("[task %1] phase=%2 elapsedMs=%3")
                       .arg(taskId, phase, QString::number(elapsedMs));
    if (!detail.isEmpty())
        line += QLatin1Char(' ') + detail;
    appendLaunchLog(line);
}

void LauncherService::applyChosenUpdate() {
    Q_EMIT applyUpdateFinished(false, tr("当前没有可应用的已验证更新。"));
}

void LauncherService::onComponentSetupFinished() {
    const ComponentSetupResult result = setupWatcher.result();
    const bool launch = std::exchange(launchAfterSetup, false);
    if (result.cancelled) {
        const QString text = tr("组件更新任务已取消。");
        setState(State::RepairMode);
        setStatus(text);
        Q_EMIT applyUpdateFinished(false, text);
        notifyTaskActive();
        return;
    }
    QStringList lines{selection.project ? tr("项目更新已完成。") : tr("已跳过项目更新。")};
    for (const QString &text : {result.summary, result.warnings}) {
        if (!text.isEmpty())
            lines << text;
    }
    const QString details = lines.join(QLatin1Char('\n'));
    SettingsStore::instance().setDefaultProject(projectPath);
    appendLaunchLog(details);
    logTaskPhase(QStringLiteral("setup"), 0, QString());
    updateAvailable = false;
    updatesHandled = true;
    setStatus(tr("已处理所选更新内容，正在启动…"));
    Q_EMIT applyUpdateFinished(true, details);
    notifyTaskActive();
    if (launch)
        launchTarget();
    else
        setState(State::RepairMode);
}
