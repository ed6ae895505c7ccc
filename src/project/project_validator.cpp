// The order of the rules, and what stops a run before the first.
#include "project/project_validator.h"

#include "project/validation_rules.h"
#include "update/files/memory_guard.h"
#include "update/files/project_path.h"
#include "update/files/text_file.h"

#include <QFileInfo>
#include <QJsonDocument>

#include <algorithm>
#include <cerrno>

using validator::Run;

namespace {

// In the order in which their findings stand.
using Rule = void (*)(Run &run);
const Rule rules[] = {
    validator::checkSchemaVersion,
    validator::checkProject,
    validator::checkScriptsGiven,
    validator::checkScripts,
    validator::checkTasks,
    validator::checkCameras,
    validator::checkModelRunner,
    validator::checkModelConfigs,
    validator::checkUnregisteredScripts,
    validator::checkProcessGroups,
    validator::checkGlobalNames,
    validator::checkImports,
    validator::checkDuplicateGlobals,
};

Run makeRun(const QJsonObject &root, const QString &projectPath, const ProjectSources &sources) {
    Run run;
    run.projectPath = projectPath;
    run.sources = sources;
    run.folder = QDir(QFileInfo(projectPath).absolutePath());
    run.root = root;
    run.scripts = root.value(QLatin1String("scripts")).toArray();
    for (const QJsonValue &script : qAsConst(run.scripts)) {
        const QString id = validator::textOf(script.toObject(), "id");
        const QString path = validator::textOf(script.toObject(), "path");
        if (!id.isEmpty())
            run.scriptIds.insert(id);
        if (!path.isEmpty())
            run.scriptPaths.insert(cleanedPath(path));
    }
    return run;
}

QVector<ProjectIssue> oneError(const QString &message) {
    return {{validator::errorSeverity, QStringLiteral("yslib"), message}};
}

QVector<ProjectIssue> unreadable(const QString &reason) {
    return oneError(QStringLiteral("无法读取 yslib：%1").arg(reason));
}

QVector<ProjectIssue> validate(const QString &text, const QString &projectPath,
                               const ProjectSources &sources) {
    // Of no other path is the folder empty; a file's own absence is no fault here.
    if (projectPath.isEmpty())
        return oneError(QStringLiteral("无效的 yslib 路径：%1").arg(projectPath));
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8(), &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return oneError(QStringLiteral("JSON 无效：%1").arg(error.errorString()));
    Run run = makeRun(document.object(), projectPath, sources);
    validator::readScripts(run);
    for (const Rule rule : rules)
        rule(run);
    return run.issues;
}

QString formatIssue(const ProjectIssue &issue) {
    const QString severity = isError(issue) ? QStringLiteral("Error") : QStringLiteral("Warning");
    if (issue.path.isEmpty())
        return QStringLiteral("[%1] %2").arg(severity, issue.message);
    return QStringLiteral("[%1] %2: %3").arg(severity, issue.path, issue.message);
}

QStringList linesOf(const QVector<ProjectIssue> &issues, bool errors) {
    QStringList lines;
    for (const ProjectIssue &issue : issues) {
        if (isError(issue) == errors)
            lines.append(formatIssue(issue));
    }
    return lines;
}

} // namespace

QVector<ProjectIssue> validateProjectFile(const QString &projectPath) {
    QString error;
    const QString text = readTextFile(projectPath, &error);
    return text.isNull() ? unreadable(error) : validateProjectText(text, projectPath);
}

QVector<ProjectIssue> validateProjectText(const QString &text, const QString &projectPath) {
    return validateProjectText(text, projectPath, validator::theDisk());
}

QVector<ProjectIssue> validateProjectText(const QString &text, const QString &projectPath,
                                          const ProjectSources &sources) {
    return unlessOutOfMemory([&] { return validate(text, projectPath, sources); },
                             unreadable(qt_error_string(ENOMEM)));
}

QString formatProjectIssues(const QVector<ProjectIssue> &issues) {
    QStringList lines;
    for (const ProjectIssue &issue : issues)
        lines.append(formatIssue(issue));
    return lines.join(QLatin1Char('\n'));
}

QStringList errorLines(const QVector<ProjectIssue> &issues) {
    return linesOf(issues, true);
}

QStringList warningLines(const QVector<ProjectIssue> &issues) {
    return linesOf(issues, false);
}

bool hasErrors(const QVector<ProjectIssue> &issues) {
    return std::any_of(issues.begin(), issues.end(), isError);
}
