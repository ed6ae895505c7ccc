// The flow of the launcher: which project runs, the countdown, the start of the target and the
// watch on it, the updates that stop the flow.
//
// Everything here belongs to the main thread. The window shows what the signals and the fields say
// and forwards what the user chooses; it decides nothing. Nothing here throws or returns an error:
// every failure ends in a state, a status text and, where the user must be told at once, a signal.
//
// Receivers may run a nested event loop (a message box) inside an emission, so the service may have
// moved on when an emission returns. The statements behind it still run in their order.
#pragma once

#include "launcher/offer/update_context.h"
#include "launcher/task_link.h"

#include <QFutureWatcher>
#include <QObject>
#include <QProcess>
#include <QStringList>
#include <QTimer>

#include <memory>

class LauncherService : public QObject, public UpdateContext {
    Q_OBJECT

public:
    enum class State {
        Idle,
        Countdown,      // the seconds to the automatic start are running
        Precheck,       // the project is being checked, or the flow waits for a running check
        UpdateCheck,    // an update check owns the flow
        ApplyingUpdate, // a project is being replaced or installers are being started
        Launch,         // the target is being started
        Monitor,        // the target runs and is watched
        RepairMode,     // the user is in charge: nothing moves by itself
        Failed,         // the last run ended: no project, start failed, or the target exited
    };
    Q_ENUM(State)

    enum class UpdatePromptMode {
        None,         // no update to show
        UsbBanner,    // an update on a stick: the flow stops for it
        OnlineBanner, // an online update: the flow stops for it
        BadgeOnly,    // an online update that was put aside: the flow does not stop
    };
    Q_ENUM(UpdatePromptMode)

    using UpdateCheckResult = ::UpdateCheckResult;
    using ApplyResult = ::ApplyResult;
    using ComponentSetupResult = ::ComponentSetupResult;

    explicit LauncherService(QObject *parent = nullptr);

    // Raises the cancel flag, waits up to three seconds for each worker, then ends a target that
    // still runs: it is killed and its end reported as any other.
    ~LauncherService() override;

    // --- Called by the entry ------------------------------------------------------------------

    // Brings up paths and settings, picks the project and sets Idle.
    void initialize();

    // Begins the countdown, and the update check in its background. Does nothing in RepairMode.
    void start();

    // --- Called by the window -----------------------------------------------------------------

    // Precheck, updates, launch. Also what the countdown ends in. Blocks for the precheck, and for
    // up to five seconds while the target starts.
    void runStartFlow();

    // F8. Refused with a status text while an update task is active.
    void enterRepairMode();

    // Takes any text that names a file. Forgets what was known of updates when the project really
    // changes. The choice is for this run and is not stored. It stands: a check that is under way is
    // then taken for cancelled, and an update stores no default and starts no target.
    void selectProject(const QString &path);

    void setSkipCorePluginPrecheck(bool skip);
    void setUpdateSelection(const UpdateSelection &chosen);

    // Starts what setUpdateSelection chose. Every request is answered by applyUpdateFinished, or by
    // a status text when a task is active already.
    void applyChosenUpdate();

    // The three answers to an update prompt.
    void skipUpdateAndLaunch();
    void remindUpdateLater();
    void skipThisOnlineVersion();

    // Asks the running worker to stop. The end of the task comes as usual.
    void cancelUpdateTask();

    [[nodiscard]] bool isUpdateTaskActive() const;
    [[nodiscard]] bool isOnlineUpdatePending() const;

    // Says again what the state is; also renews the texts after the language has changed.
    void refreshStatus();

    // Which items of the update dialog can be chosen. Evaluated anew at each call.
    [[nodiscard]] UpdateChoices updateChoices() const;

    // --- Free of the service's state ----------------------------------------------------------

    // Appends one line to the launch log. Any thread. A line that cannot be written is lost.
    static void appendLaunchLog(const QString &message);

    // Brings a path to an existing file, moving a path below another installation's USER/projects
    // to this installation's; empty when there is no such file.
    [[nodiscard]] static QString normalizeProjectPath(const QString &path);

    // The program to start, or empty: the runtime beside the launcher, or on a development machine
    // the editor.
    [[nodiscard]] static QString resolveTargetExecutable();

    // Leaves the nonce and the time for the target to read. A failure is not reported: the target
    // then refuses to run and says so itself.
    static void writeLaunchNonce(qint64 pid, const QString &nonce);

    // The target's command line.
    [[nodiscard]] QStringList buildLaunchArguments(const QString &nonce) const;

    // --- State: read by the window, written by the service alone --------------------------------
    // The first four are those of UpdateContext.

    State state = State::Idle;
    QString statusText; // the last status line
    qint32 countdownSeconds = 5;
    bool skipCorePluginPrecheck = false;
    bool updatesHandled = false; // skipped or finished: no further check or prompt in this run
    bool reloadModelsOnLaunch = false; // a project was replaced: told to the target once
    bool updateAvailable = false;      // `snapshot` holds something that can be offered
    bool updateCheckDone = false;      // a check ended uncancelled, in this run for this project
    UpdatePromptMode promptMode = UpdatePromptMode::None;
    QString updateSummary;
    bool checkInFlight = false;    // from just after a check starts until its watcher has reported
    bool remindLater = false;      // put aside for this run
    bool countdownPaused = false;  // a prompt stopped a running countdown, which may resume
    bool launchAfterCheck = false; // launch when the running check ends
    bool resumeCountdownAfterCheck = false; // the running check started during the countdown
    bool launchAfterSetup = false;          // launch when the component setup ends
    bool selectedDuringUpdate = false;      // another project, while the last apply or setup ran
    qint64 lastCheckStartMs = 0;            // milliseconds since the epoch
    QString taskId;                         // of the current or the last update task
    const std::shared_ptr<TaskLink> taskLink;
    CancelFlag &cancelFlag; // the flag in taskLink; 1 requests cancellation
    QTimer countdownTimer;  // one second, repeating
    QProcess targetProcess; // one for the whole run, used again by each launch
    QFutureWatcher<ApplyResult> applyWatcher;
    QFutureWatcher<UpdateCheckResult> checkWatcher;
    QFutureWatcher<ComponentSetupResult> setupWatcher;

Q_SIGNALS:
    // Only when the state really changes.
    void stateChanged(LauncherService::State state);
    // At each status text, also when it is the same again.
    void statusChanged(const QString &message);
    // May come twice with the same value.
    void countdownChanged(int secondsRemaining);
    // An update was found, or its summary was built again.
    void updateSuggestionReady(const QString &summary);
    // At each recomputation and at each answer, also when the mode is the same again.
    void updatePromptChanged(LauncherService::UpdatePromptMode mode);
    // An apply request has its end or is refused.
    void applyUpdateFinished(bool success, const QString &details);
    void precheckFailed(const QString &details);
    // No project, no target, or the target did not start.
    void launchFailed(const QString &details);
    // Each end of the target, exit code 0 included.
    void targetExited(int exitCode, const QString &details);
    // At a task's start and end. At the start it carries false, since no worker runs yet.
    void updateTaskActiveChanged(bool active);
    // Percent is -1 for work of unknown length. Detail is a key that begins with "detail:" or text.
    void updateTaskProgressChanged(const QString &taskId, const QString &phase, int percent,
                                   const QString &detail);

public Q_SLOTS:
    // One second has passed.
    void tickCountdown();

private Q_SLOTS:
    void onUpdateCheckFinished();
    void onComponentSetupFinished();
    // Passes a report on if it is about the current task; workers queue their reports here by name.
    void reportUpdateTaskProgress(const QString &taskId, const QString &phase, int percent,
                                  const QString &detail);

private:
    // launcher_service.cpp: the one door to `state` and the one to `statusText`. The table of moves is
    // transitions.h.
    void setState(State next);
    void setStatus(const QString &message);

    // launcher_service.cpp: the flow.
    void lookForUpdates();
    [[nodiscard]] bool waitForUpdates(bool manual);

    // precheck.cpp. On false `error` receives the whole text for the user, which is logged too.
    [[nodiscard]] bool runPrecheck(QString *error) const;

    // project_selection.cpp: which project runs.
    void pickProject();
    void forgetUpdates();

    // target_launch.cpp: the start of the target and its end.
    void launchTarget();
    void failLaunch(const QString &details);
    void discardTargetOutput();
    void onTargetFinished(int exitCode, QProcess::ExitStatus exitStatus);

    // update_prompts.cpp: when the flow stops for an update, and how it goes on.
    [[nodiscard]] bool bannerDue() const;
    [[nodiscard]] QString promptText() const;
    void computePromptMode();
    void refreshUpdateSummary();
    void pauseForPrompt();
    void resumeCountdownAfterPrompt();
    void settleAfterAnswer();
    [[nodiscard]] bool takeCheckResult(const UpdateCheckResult &result);
    void resumeAfterCheck();
    void ensureUpdateCheck(bool throttled);

    // update_tasks.cpp: the workers, one at a time.
    void startUpdateCheck();
    QString beginUpdateTask(const QString &kind);
    void startProjectApply();
    void onProjectApplyFinished();
    void endApply(const QString &why);
    // `keepTask`: go on in the current task, if there is one.
    void startComponentSetup(bool launchAfter, bool keepTask);
    [[nodiscard]] QString setupDetails(const ComponentSetupResult &result) const;
    void notifyTaskActive();
    void logTaskPhase(const QString &phase, qint64 elapsedMs, const QString &detail) const;
};
