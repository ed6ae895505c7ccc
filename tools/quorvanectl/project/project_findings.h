// Everything that can be found in a project: what the launcher's check of it finds, and the syntax
// errors of its scripts, which the launcher passes over.
#pragma once

#include "project/project_validator.h"
#include "quorvanectl/files/json_input.h"
#include "quorvanectl/project/script_report.h"

#include <vector>

namespace ctl {

// Where an issue lies.
struct IssuePlace {
    QString script; // the file of the script that it speaks of; empty: it lies in the project file
    QString shown;  // the file as text shows it
    TextPlace at;   // in the project file: of the value, or of what the value is missing in
};

struct ProjectFindings {
    QString projectPath;          // as given
    QVector<ProjectIssue> issues; // of the validator, in its own order
    QVector<IssuePlace> places;   // of each of these issues
    QString corePluginFault;      // the launcher's text; empty: it is there, or was not looked for
    // Of each registered script that there is, under its path as registered; each file once.
    std::vector<ScriptReport> scripts;

    // With the missing core plug-in as the last one, an error with no path.
    [[nodiscard]] QVector<ProjectIssue> allIssues() const;
    [[nodiscard]] int issueCount(qint32 severity) const;
    [[nodiscard]] int scriptErrorCount() const;
    [[nodiscard]] int scriptWarningCount() const;
    [[nodiscard]] bool hasErrors() const { return issueCount(0) + scriptErrorCount() > 0; }
};

// Looks at the project. A project file that holds no JSON object leaves the validator's one issue, with
// its place, beside the error. An empty `pluginFolder` leaves the core plug-in alone. False, with a line in
// `error`, if the project file or one of its scripts cannot be read or used. The function library
// must be loaded.
[[nodiscard]] bool findAll(const QString &projectPath, const QString &pluginFolder,
                           ProjectFindings *findings, QString *error);

// The object in a project file. False, with a line in `error` as of findAll(), if there is none.
[[nodiscard]] bool readProjectObject(const QString &projectPath, QJsonObject *project,
                                     QString *error);

// The issues as the launcher's check says them, errors or warnings, each behind its place in the form
// "path:line:column: ", as editors and terminals open it.
[[nodiscard]] QStringList issueLines(const ProjectFindings &findings, qint32 severity);

} // namespace ctl
