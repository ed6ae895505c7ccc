// Whether the selected project can run: the validator's findings and the core plug-in.
#include "launcher/launcher_service.h"

#include "frame/app_paths.h"
#include "project/core_plugin.h"
#include "project/project_validator.h"
#include "update/files/failure.h"

#include <QFileInfo>

bool LauncherService::runPrecheck(QString *error) const {
    const auto refuse = [error](const QString &text) {
        appendLaunchLog(text);
        return fail(text, error);
    };
    const QString log = AppPaths::launchLogPath();
    if (!QFileInfo::exists(projectPath))
        return refuse(QStringLiteral("Project file not found: %1\nLog: %2").arg(projectPath, log));

    const QVector<ProjectIssue> issues = validateProjectFile(projectPath);
    QStringList errors = errorLines(issues);
    const QStringList warnings = warningLines(issues);
    QString missing;
    if (!skipCorePluginPrecheck && !hasCorePlugin(AppPaths::pluginsDirectory(), &missing))
        errors.append(missing);
    if (!errors.isEmpty())
        return refuse(tr("项目预检失败：\n%1\n日志：%2").arg(errors.join(QLatin1Char('\n')), log));
    // Warnings are for the log alone: they do not stop an operator.
    if (!warnings.isEmpty())
        appendLaunchLog(
            QStringLiteral("Precheck warnings:\n%1").arg(warnings.join(QLatin1Char('\n'))));
    appendLaunchLog(QStringLiteral("Precheck passed for %1").arg(projectPath));
    return true;
}
