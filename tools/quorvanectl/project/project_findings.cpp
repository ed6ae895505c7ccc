#include "quorvanectl/project/project_findings.h"

#include "project/core_plugin.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/files/json_input.h"
#include "update/files/project_path.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>

#include <algorithm>

namespace ctl {
namespace {

// The object in the file. A file that holds none is refused in the validator's words.
bool readProject(const QString &path, QJsonObject *project, QString *error) {
    const QString text = readText(path, error);
    if (text.isNull())
        return false;
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
    *project = document.object();
    if (document.isObject())
        return true;
    const QVector<ProjectIssue> issues = validateProjectText(text, path);
    const QString place = placeOfJsonFault(text);
    // Of JSON that is no object the validator gives the parser's word, which finds no fault.
    *error = QStringLiteral("%1: %2 (%3)")
                 .arg(path, issues.value(0).message,
                      place.isNull() ? QStringLiteral("it is no JSON object") : place);
    return false;
}

bool checkScripts(const QDir &folder, const QJsonArray &scripts, ProjectFindings *findings,
                  QString *error) {
    QSet<QString> checked;
    for (const QJsonValue &entry : scripts) {
        const QString path = entry.toObject().value(QLatin1String("path")).toString();
        const QString file = locatedPath(folder, path);
        // One that is missing is an issue of the validator.
        if (path.isEmpty() || checked.contains(file) || !QFileInfo::exists(file))
            continue;
        checked.insert(file);
        const QString text = readText(file, error);
        ScriptReport report;
        if (text.isNull() || !checkText(path, text, &report, error))
            return false;
        findings->scripts.push_back(report);
    }
    return true;
}

} // namespace

QVector<ProjectIssue> ProjectFindings::allIssues() const {
    QVector<ProjectIssue> all = issues;
    if (!corePluginFault.isEmpty())
        all.append({0, {}, corePluginFault});
    return all;
}

int ProjectFindings::issueCount(qint32 severity) const {
    const QVector<ProjectIssue> all = allIssues();
    return int(std::count_if(all.begin(), all.end(), [severity](const ProjectIssue &issue) {
        return isError(issue) == (severity == 0);
    }));
}

int ProjectFindings::scriptErrorCount() const {
    int count = 0;
    for (const ScriptReport &script : scripts)
        count += script.result.errorCount;
    return count;
}

bool findAll(const QString &projectPath, const QString &pluginFolder, ProjectFindings *findings,
             QString *error) {
    QJsonObject project;
    if (!canBeNamed(projectPath, error) || !readProject(projectPath, &project, error))
        return false;
    findings->projectPath = projectPath;
    const QDir folder(QFileInfo(projectPath).absolutePath());
    const QJsonArray scripts = project.value(QLatin1String("scripts")).toArray();
    // Before the validator, which would read a file of any size.
    if (!checkScripts(folder, scripts, findings, error))
        return false;
    findings->issues = validateProjectFile(projectPath);
    if (!pluginFolder.isEmpty())
        (void)hasCorePlugin(pluginFolder, &findings->corePluginFault);
    return true;
}

QStringList issueLines(const ProjectFindings &findings, qint32 severity) {
    if (severity != 0)
        return warningLines(findings.issues);
    QStringList lines = errorLines(findings.issues);
    // The launcher says a missing plug-in in a bare line, below the others.
    if (!findings.corePluginFault.isEmpty())
        lines.append(findings.corePluginFault);
    return lines;
}

} // namespace ctl
