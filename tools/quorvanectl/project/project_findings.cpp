#include "quorvanectl/project/project_findings.h"

#include "project/core_plugin.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/files/json_input.h"
#include "quorvanectl/files/json_places.h"
#include "update/files/project_path.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>

#include <algorithm>

namespace ctl {
namespace {

// The validator's one issue of a file that holds no object.
void takeFault(const QString &path, const QString &text, ProjectFindings *findings) {
    const std::optional<TextPlace> fault = jsonFault(text);
    const TextPlace place = fault ? *fault : placesInJson(text, {QString()}).value(0);
    findings->projectPath = path;
    findings->issues = validateProjectText(text, path);
    findings->places = {{QString(), path, place}};
}

// The object in the file. A file that holds none is refused in the validator's words.
bool readProject(const QString &path, QString *text, ProjectFindings *findings, QString *error) {
    *text = readText(path, error);
    if (text->isNull())
        return false;
    if (QJsonDocument::fromJson(text->toUtf8()).isObject())
        return true;
    takeFault(path, *text, findings);
    const QString place = placeOfJsonFault(*text);
    // Of JSON that is no object the validator gives the parser's word, which finds no fault.
    *error = QStringLiteral("%1: %2 (%3)")
                 .arg(path, findings->issues.value(0).message,
                      place.isNull() ? QStringLiteral("it is no JSON object") : place);
    return false;
}

// The file that the project names so, with the folder as the project's path has it: a path that can be
// opened from where the command runs.
QString pathFromHere(const QString &projectPath, const QString &path) {
    const QFileInfo project(projectPath);
    const QString inside = project.absolutePath() + QLatin1Char('/');
    QString file = QDir::fromNativeSeparators(locatedPath(QDir(project.absolutePath()), path));
    if (!file.startsWith(inside))
        return file;
    file.remove(0, inside.size());
    while (file.startsWith(QLatin1String("./")))
        file.remove(0, 2);
    const QString folder = project.path();
    if (folder == QLatin1String("."))
        return file;
    return folder.endsWith(QLatin1Char('/')) ? folder + file : folder + QLatin1Char('/') + file;
}

// The path of an issue leads into the document, or names a script.
IssuePlace placeOf(const QString &projectPath, const QString &path, const TextPlace &at) {
    const QString script = locatedPath(QDir(QFileInfo(projectPath).absolutePath()), path);
    if (!path.isEmpty() && QFileInfo(script).isFile())
        return {script, pathFromHere(projectPath, path), {}};
    return {QString(), projectPath, at};
}

QVector<IssuePlace> placesOf(const QString &projectPath, const QString &text,
                             const QVector<ProjectIssue> &issues) {
    QStringList paths;
    for (const ProjectIssue &issue : issues)
        paths.append(issue.path);
    const QVector<TextPlace> values = placesInJson(text, paths);
    QVector<IssuePlace> places;
    for (int i = 0; i < paths.size(); ++i)
        places.append(placeOf(projectPath, paths.at(i), values.at(i)));
    return places;
}

// "line.yslib:3:5: "; empty where no file is known.
QString prefixOf(const IssuePlace &place) {
    if (place.shown.isEmpty())
        return QString();
    if (place.at.line == 0)
        return QStringLiteral("%1: ").arg(place.shown);
    return QStringLiteral("%1:%2:%3: ")
        .arg(place.shown, QString::number(place.at.line), QString::number(place.at.column));
}

bool checkScripts(const QString &projectPath, const QJsonArray &scripts, ProjectFindings *findings,
                  QString *error) {
    const QDir folder(QFileInfo(projectPath).absolutePath());
    QSet<QString> checked;
    for (const QJsonValue &entry : scripts) {
        const QString path = entry.toObject().value(QLatin1String("path")).toString();
        const QString file = locatedPath(folder, path);
        const QString one = QFileInfo(file).canonicalFilePath(); // of all its spellings
        // One that is missing is an issue of the validator.
        if (path.isEmpty() || checked.contains(one) || !QFileInfo::exists(file))
            continue;
        checked.insert(one);
        const QString text = readText(file, error);
        ScriptReport report;
        if (text.isNull() || !checkText(path, text, &report, error))
            return false;
        report.shownPath = pathFromHere(projectPath, path);
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

int ProjectFindings::scriptWarningCount() const {
    int count = 0;
    for (const ScriptReport &script : scripts)
        count += int(script.warnings.size());
    return count;
}

bool findAll(const QString &projectPath, const QString &pluginFolder, ProjectFindings *findings,
             QString *error) {
    QString text;
    if (!canBeNamed(projectPath, error) || !readProject(projectPath, &text, findings, error))
        return false;
    findings->projectPath = projectPath;
    const QJsonObject project = QJsonDocument::fromJson(text.toUtf8()).object();
    // Before the validator, which would read a file of any size.
    if (!checkScripts(projectPath, project.value(QLatin1String("scripts")).toArray(), findings,
                      error))
        return false;
    findings->issues = validateProjectFile(projectPath);
    findings->places = placesOf(projectPath, text, findings->issues);
    if (!pluginFolder.isEmpty())
        (void)hasCorePlugin(pluginFolder, &findings->corePluginFault);
    return true;
}

bool readProjectObject(const QString &projectPath, QJsonObject *project, QString *error) {
    QString text;
    ProjectFindings findings;
    if (!canBeNamed(projectPath, error) || !readProject(projectPath, &text, &findings, error))
        return false;
    *project = QJsonDocument::fromJson(text.toUtf8()).object();
    return true;
}

QStringList issueLines(const ProjectFindings &findings, qint32 severity) {
    QStringList lines;
    for (int i = 0; i < findings.issues.size(); ++i) {
        const ProjectIssue &issue = findings.issues.at(i);
        if (isError(issue) == (severity == 0))
            lines.append(prefixOf(findings.places.value(i)) + formatProjectIssues({issue}));
    }
    // The launcher says a missing plug-in in a bare line, below the others.
    if (severity == 0 && !findings.corePluginFault.isEmpty())
        lines.append(findings.corePluginFault);
    return lines;
}

} // namespace ctl
