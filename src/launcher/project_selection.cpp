// Which project runs: picked at the start, chosen by the user, brought to a path that exists.
#include "launcher/launcher_service.h"

#include "frame/app_paths.h"
#include "frame/settings_store.h"
#include "launcher/offer/project_location.h"

#include <QDir>
#include <QFileInfo>

void LauncherService::initialize() {
    AppPaths::initialize();
    // Without settings every read gives its default, and the launcher runs on.
    (void)SettingsStore::instance().open();
    pickProject();
    const QString normalized = normalizeProjectPath(projectPath);
    // A stale path stays as it is: the precheck refuses it in its own words. Meant:
    // aStaleRecentProjectStays.
    if (!normalized.isEmpty())
        projectPath = normalized;
    setState(State::Idle);
    refreshStatus();
}

void LauncherService::pickProject() {
    const QString stored = SettingsStore::instance().defaultProject();
    if (!stored.isEmpty() && QFileInfo::exists(stored)) {
        projectPath = stored;
        return;
    }
    const auto recent = SettingsStore::instance().recentProjects(1);
    if (!recent.isEmpty())
        projectPath = recent.first().path;
    if (!projectPath.isEmpty())
        return;
    const QString demo =
        QDir(AppPaths::projectsDirectory()).filePath(QStringLiteral("demo/demo.yslib"));
    if (QFileInfo::exists(demo))
        projectPath = demo;
}

void LauncherService::selectProject(const QString &path) {
    const QString normalized = normalizeProjectPath(path);
    const QString chosen = normalized.isEmpty() ? QFileInfo(path).absoluteFilePath() : normalized;
    if (chosen == projectPath)
        return;
    forgetUpdates();
    if (!applyWatcher.isFinished() || !setupWatcher.isFinished())
        selectedDuringUpdate = true;
    Q_EMIT updatePromptChanged(UpdatePromptMode::None);
    projectPath = chosen;
    setStatus(tr("已选项目：%1").arg(chosen));
}

// What is known of updates is about the project it was looked up for. `updatesHandled` stays: who
// skipped updates once is not asked again in this run. Meant:
// anotherProjectForgetsWhatWasKnownOfUpdates.
void LauncherService::forgetUpdates() {
    updateAvailable = false;
    snapshot = UpdateSnapshot();
    updateCheckDone = false;
    promptMode = UpdatePromptMode::None;
    updateSummary.clear();
    remindLater = false;
    countdownPaused = false;
}

QString LauncherService::normalizeProjectPath(const QString &path) {
    return normalizedProjectPath(path);
}
