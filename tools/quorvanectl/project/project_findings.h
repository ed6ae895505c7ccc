// Everything that can be found in a project: what the launcher's check of it finds, and the syntax
// errors of its scripts, which the launcher passes over.
#pragma once

#include "project/project_validator.h"
#include "quorvanectl/project/script_report.h"

#include <vector>

namespace ctl {

struct ProjectFindings {
    QString projectPath;          // as given
    QVector<ProjectIssue> issues; // of the validator, in its own order
    QString corePluginFault;      // the launcher's text; empty: it is there, or was not looked for
    // Of each registered script that there is, under its path as registered; each file once.
    std::vector<ScriptReport> scripts;

    // With the missing core plug-in as the last one, an error with no path.
    [[nodiscard]] QVector<ProjectIssue> allIssues() const;
    [[nodiscard]] int issueCount(qint32 severity) const;
    [[nodiscard]] int scriptErrorCount() const;
    [[nodiscard]] bool hasErrors() const { return issueCount(0) + scriptErrorCount() > 0; }
};

// Looks at the project. An empty `pluginFolder` leaves the core plug-in alone. False, with a line in
// `error`, if the project file or one of its scripts cannot be read or used. The function library
// must be loaded.
[[nodiscard]] bool findAll(const QString &projectPath, const QString &pluginFolder,
                           ProjectFindings *findings, QString *error);

// The issues as the launcher's check says them: errors first, then warnings.
[[nodiscard]] QStringList issueLines(const ProjectFindings &findings, qint32 severity);

} // namespace ctl
