// The update tasks: one named unit of work at a time, watched and cancelled from the main thread.
#include "launcher/launcher_service.h"

#include "frame/settings_store.h"
#include "launcher/offer/project_apply.h"

#include <QDateTime>
#include <QStringList>
#include <QUuid>
#include <QtConcurrent>

#include <utility>

namespace {

// What is said where memory ran out in a worker: nothing may leave its thread.
QString outOfMemory() {
    return QStringLiteral("not enough memory for the update");
}

bool choosesAnything(const UpdateSelection &chosen) {
    return chosen.project || chosen.runtime || chosen.launcher || chosen.editor ||
           chosen.pythonTools;
}

// The three workers. On a pool thread, with a context of its own. `link` keeps the cancel flag
// alive.
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
    result.projectPath = context.projectPath;
    result.cancelled = context.cancelRequested();
    return result;
}

ApplyResult applyProject(const UpdateContext &context, const QString &taskId,
                         const std::shared_ptr<TaskLink> &link) {
    link->reportProgress(taskId, QStringLiteral("download"), -1,
                         QStringLiteral("detail:download-project"));
    ApplyResult result;
    try {
        result = applyProjectUpdate(context.snapshot, context.projectPath, context.cancelRef);
    } catch (...) {
        result = ApplyResult();
        result.message = outOfMemory();
    }
    link->reportProgress(taskId, QStringLiteral("verify"), -1,
                         result.success ? QStringLiteral("detail:verify-ok")
                                        : QStringLiteral("detail:verify-fail"));
    return result;
}

ComponentSetupResult setUpComponents(const UpdateContext &context, const QString &taskId,
                                     const std::shared_ptr<TaskLink> &link) {
    if (!context.cancelRequested())
        link->reportProgress(taskId, QStringLiteral("setup"), -1,
                             QStringLiteral("detail:setup-prepare"));
    try {
        return context.runComponentSetup();
    } catch (...) {
        return {true, QString(), outOfMemory(), context.cancelRequested()};
    }
}

} // namespace

// A watcher calls itself finished once it has told so, not when its worker ends. A request between
// the two is refused like one before: a new worker in the watcher would take the end of the old one
// away. Meant: aRequestBeforeTheEndIsToldIsRefused.
bool LauncherService::isUpdateTaskActive() const {
    return checkInFlight || !checkWatcher.isFinished() || !applyWatcher.isFinished() ||
           !setupWatcher.isFinished();
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
    const auto refuse = [this](const QString &why) { Q_EMIT applyUpdateFinished(false, why); };
    if (!updateAvailable)
        return refuse(tr("当前没有可应用的已验证更新。"));
    if (isUpdateTaskActive())
        return setStatus(tr("更新任务正在进行中..."));
    cancelFlag = 0;
    selectedDuringUpdate = false;
    if (!choosesAnything(selection))
        return refuse(tr("未选择任何更新内容。"));
    if (!selection.project) {
        beginUpdateTask(QStringLiteral("setup"));
        return startComponentSetup(true, true);
    }
    QString reason;
    if (!isProjectEligible(&reason))
        return refuse(tr("项目更新不可用：%1").arg(reason));
    startProjectApply();
}

void LauncherService::startProjectApply() {
    setState(State::ApplyingUpdate);
    beginUpdateTask(QStringLiteral("apply"));
    setStatus(tr("正在应用更新（后台执行）..."));
    reportUpdateTaskProgress(taskId, QStringLiteral("check"), -1,
                             QStringLiteral("detail:verify-manifest"));
    const UpdateContext &context = *this;
    applyWatcher.setFuture(QtConcurrent::run(applyProject, context, taskId, taskLink));
}

void LauncherService::onProjectApplyFinished() {
    const ApplyResult result = applyWatcher.result();
    // A cancel that the worker did not see any more counts too, even if the project was replaced.
    // Meant: theApplyEnds.
    const QString cancelled = cancelledText();
    if (cancelRequested() || result.errorClass == cancelled ||
        result.message.compare(cancelled, Qt::CaseInsensitive) == 0)
        return endApply(tr("更新任务已取消。"));
    if (!result.success) {
        return endApply(result.errorClass.isEmpty()
                            ? result.message
                            : QStringLiteral("[%1] %2").arg(result.errorClass, result.message));
    }
    if (!result.projectPath.isEmpty() && !selectedDuringUpdate)
        projectPath = result.projectPath;
    reloadModelsOnLaunch = true;
    logTaskPhase(QStringLiteral("apply"), 0, result.message);
    startComponentSetup(true, true);
}

void LauncherService::endApply(const QString &why) {
    setState(State::RepairMode);
    setStatus(why);
    appendLaunchLog(why);
    Q_EMIT applyUpdateFinished(false, why);
    notifyTaskActive();
}

void LauncherService::startComponentSetup(bool launchAfter, bool keepTask) {
    if (!setupWatcher.isFinished())
        return;
    launchAfterSetup = launchAfter;
    setState(State::ApplyingUpdate);
    cancelFlag = 0;
    if (!keepTask || taskId.isEmpty())
        beginUpdateTask(QStringLiteral("setup"));
    reportUpdateTaskProgress(taskId, QStringLiteral("setup"), -1,
                             QStringLiteral("detail:setup-prepare"));
    const UpdateContext &context = *this;
    setupWatcher.setFuture(QtConcurrent::run(setUpComponents, context, taskId, taskLink));
}

void LauncherService::onComponentSetupFinished() {
    const ComponentSetupResult result = setupWatcher.result();
    // Who selected another project meanwhile keeps it, for this run alone, and starts it by hand.
    // Meant: aProjectSelectedDuringAnUpdateStays.
    const bool launch = std::exchange(launchAfterSetup, false) && !selectedDuringUpdate;
    if (result.cancelled) {
        const QString text = tr("组件更新任务已取消。");
        setState(State::RepairMode);
        setStatus(text);
        Q_EMIT applyUpdateFinished(false, text);
        notifyTaskActive();
        return;
    }
    const QString details = setupDetails(result);
    if (!selectedDuringUpdate)
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

QString LauncherService::setupDetails(const ComponentSetupResult &result) const {
    QStringList lines{selection.project ? tr("项目更新已完成。") : tr("已跳过项目更新。")};
    for (const QString &text : {result.summary, result.warnings}) {
        if (!text.isEmpty())
            lines.append(text);
    }
    return lines.join(QLatin1Char('\n'));
}
