// The start of the target and the report of its end.
#include "launcher/target_launch.h"

#include "frame/app_paths.h"
#include "frame/locale_manager.h"
#include "frame/program_names.h"
#include "launcher/launcher_service.h"
#include "update/files/text_file.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFileInfo>
#include <QRandomGenerator>

namespace {

constexpr int startWaitMs = 5000;
constexpr int nonceBytes = 16;

QString runtimePath() {
    return AppPaths::besideLauncher(QLatin1String(program_names::runtime));
}

QString editorPath() {
    return AppPaths::besideLauncher(QLatin1String(program_names::editor));
}

bool editorAllowed() {
    return isDevMode() || AppPaths::isRepositoryLayout();
}

} // namespace

bool isDevMode() {
    const QByteArray value = qgetenv("QUORVANE_DEV");
    return value == "1" || value.toLower() == "true";
}

QString missingTargetText(const QString &directory, bool editorAllowed, bool editorPresent) {
    if (!editorAllowed)
        return QStringLiteral("LineRunner.exe not found in %1.\n"
                              "Production layout requires Runtime (R2). "
                              "Install Runtime beside Launcher.")
            .arg(directory);
    // Out of reach today, since an editor that is present and allowed is started. Kept as the
    // answer for the day when the two rules part, and held by the test missingTargetText.
    if (editorPresent)
        return QStringLiteral("LineRunner.exe not found in %1.\n"
                              "Set QUORVANE_DEV=1 to allow Ops fallback, "
                              "or build from repository layout (auto-fallback).")
            .arg(directory);
    return QStringLiteral("Neither LineRunner.exe nor LineStudio.exe was found in %1.\n"
                          "Build the app target, then run scripts\\deploy_bin.ps1 "
                          "before testing from bin\\.")
        .arg(directory);
}

QString newLaunchNonce() {
    QByteArray bytes;
    for (int i = 0; i < nonceBytes; ++i) {
        const quint32 draw = QRandomGenerator64::global()->QRandomGenerator::generate();
        bytes.append(char(draw >> 24));
    }
    return QString::fromLatin1(bytes.toHex());
}

const char *exitSuffix(int exitCode, QProcess::ExitStatus exitStatus) {
    if (exitStatus == QProcess::CrashExit)
        return QT_TRANSLATE_NOOP("LauncherService", "（进程崩溃）");
    if (exitCode == 1)
        return QT_TRANSLATE_NOOP("LauncherService", "（可能被外部终止，如任务管理器）");
    return nullptr;
}

QString LauncherService::resolveTargetExecutable() {
    const QString runtime = runtimePath();
    if (QFileInfo::exists(runtime))
        return runtime;
    const QString editor = editorPath();
    if (QFileInfo::exists(editor) && editorAllowed())
        return editor;
    return QString();
}

void LauncherService::writeLaunchNonce(qint64 pid, const QString &nonce) {
    const QString moment = QString::number(QDateTime::currentMSecsSinceEpoch());
    (void)writeTextFile(AppPaths::launchNoncePath(pid),
                        QStringLiteral("%1\n%2\n").arg(nonce, moment));
}

QStringList LauncherService::buildLaunchArguments(const QString &nonce) const {
    QStringList arguments{
        QStringLiteral("--parent-pid=%1").arg(QCoreApplication::applicationPid()),
        QStringLiteral("--nonce=%1").arg(nonce),
        QStringLiteral("--project=%1").arg(projectPath),
        QStringLiteral("--locale=%1").arg(LocaleManager::instance().currentLocale()),
    };
    if (reloadModelsOnLaunch)
        arguments.append(QStringLiteral("--reload-models"));
    return arguments;
}

// In Monitor a second start is refused by QProcess, which is busy, and waitForStarted reports the
// running target: the flow returns to Monitor with a new nonce on the disk. The flag to reload is
// spent then too, although the running target never saw it. Meant: aManualStartWhileTheTargetRuns.
void LauncherService::launchTarget() {
    setState(State::Launch);
    const QString target = resolveTargetExecutable();
    if (target.isEmpty()) {
        failLaunch(missingTargetText(QCoreApplication::applicationDirPath(), editorAllowed(),
                                     QFileInfo::exists(editorPath())));
        return;
    }
    const QFileInfo targetFile(target);
    if (targetFile.fileName().compare(QLatin1String(program_names::editor), Qt::CaseInsensitive) ==
        0)
        appendLaunchLog(
            QStringLiteral("R1.5 dev fallback: launching LineStudio.exe (Runtime not present)."));

    const QString nonce = newLaunchNonce();
    writeLaunchNonce(QCoreApplication::applicationPid(), nonce);
    const QStringList arguments = buildLaunchArguments(nonce);
    targetProcess.setProgram(target);
    targetProcess.setArguments(arguments);
    targetProcess.setWorkingDirectory(targetFile.absolutePath());
    appendLaunchLog(
        QStringLiteral("Launching %1 %2").arg(target, arguments.join(QLatin1Char(' '))));
    targetProcess.start(QIODevice::ReadWrite);
    if (!targetProcess.waitForStarted(startWaitMs)) {
        failLaunch(
            QStringLiteral("Failed to start %1: %2").arg(target, targetProcess.errorString()));
        return;
    }
    // Spent only by a start that worked, a failed one tries again with it: aTargetThatCannotStart.
    if (arguments.contains(QStringLiteral("--reload-models")))
        reloadModelsOnLaunch = false;
    setStatus(tr("已启动 %1").arg(targetFile.fileName()));
    setState(State::Monitor);
    refreshStatus();
}

void LauncherService::failLaunch(const QString &details) {
    setState(State::Failed);
    setStatus(details);
    Q_EMIT launchFailed(details);
    appendLaunchLog(details);
}

// Nobody reads what the target prints, and QProcess would keep it for as long as the target runs.
void LauncherService::discardTargetOutput() {
    connect(&targetProcess, &QProcess::readyReadStandardOutput, this,
            [this] { targetProcess.readAllStandardOutput(); });
    connect(&targetProcess, &QProcess::readyReadStandardError, this,
            [this] { targetProcess.readAllStandardError(); });
}

void LauncherService::onTargetFinished(int exitCode, QProcess::ExitStatus exitStatus) {
    const char *const suffix = exitSuffix(exitCode, exitStatus);
    const QString code = QString::number(exitCode);
    const QString log = AppPaths::launchLogPath();
    const QString dumpLine = tr("Dump 目录：%1").arg(AppPaths::dumpsDirectory());
    const QString details = tr("目标进程已退出，代码 %1%2。\n日志：%3\n%4")
                                .arg(code, suffix ? tr(suffix) : QString(), log, dumpLine);
    // The log keeps the Chinese hint in every language. Meant: theEndInAnotherLanguage.
    appendLaunchLog(QStringLiteral("Target exited with code %1%2. Log: %3")
                        .arg(code, QString::fromUtf8(suffix), log));
    setState(State::Failed);
    setStatus(details);
    Q_EMIT targetExited(exitCode, details);
}
