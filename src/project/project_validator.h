// Decides nothing, finds everything: the list of what is wrong with a project.
//
// Its rules look at the .yslib document, at the files that it names, at the scripts that
// lie beside it and, through script/project_checks.h, into the scripts. All rules run whatever was
// found before; only a document that cannot be read at all stops them. The caller looks at the
// severities: any error means that the project cannot run, warnings never do. A script with a
// syntax error is no finding.
//
// Runs on the caller's thread and blocks it, the parsing of all scripts included. Holds nothing
// between two runs and changes nothing; the function library must be loaded. The messages are
// Chinese in every locale.
#pragma once

#include "script/script_facts.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>

struct ProjectIssue {
    qint32 severity = 0; // 0 error, 1 warning
    // Where it lies: a path into the document such as "tasks.subs[1].entryScriptId", "yslib" for
    // the file as a whole, "scripts" for the registry as a whole, or a script's path as written.
    QString path;
    QString message;
};

// Whether the issue is an error, which keeps the project from running; any other is a warning.
[[nodiscard]] inline bool isError(const ProjectIssue &issue) {
    return issue.severity == 0;
}

// The findings for the .yslib file at `projectPath`, in the order in which the rules fired; empty
// for a clean project. A file that cannot be read, or that memory does not suffice for, is one
// finding.
[[nodiscard]] QVector<ProjectIssue> validateProjectFile(const QString &projectPath);

// The same for a text in memory. `projectPath` says where its paths count from; the file itself
// need not exist.
[[nodiscard]] QVector<ProjectIssue> validateProjectText(const QString &text,
                                                        const QString &projectPath);

// A name of a global that breaks the naming rule, and where it stands.
struct BadName {
    QString name;
    int at; // index into the text of the script
};

// The badly named globals of a script, in the order of its text. A scan of that text: a declaration in
// a comment counts as well, and one of a type that the scan does not know is not seen.
[[nodiscard]] QVector<BadName> badlyNamedGlobals(const QString &text);

// What the rules want to know of a script.
struct ScriptContent {
    ast::ScriptFacts facts;
    QVector<BadName> badNames;
};

// What the rules look into, in place of the disk: for who holds texts that are not saved yet, or has
// kept what it read. Whether a file that the project names exists is asked of the disk all the same.
struct ProjectSources {
    // Nothing is known of a script that is missing or cannot be read.
    std::function<ScriptContent(const QString &filePath)> scriptAt;
    // The full paths of the scripts in this folder and all below it.
    std::function<QStringList(const QString &folder)> scriptsBelow;
};

// The scripts on the disk as the rules see them.
[[nodiscard]] QStringList scriptsOnDisk(const QString &folder);

[[nodiscard]] QVector<ProjectIssue>
validateProjectText(const QString &text, const QString &projectPath, const ProjectSources &sources);

// One line for each issue, "[Error] path: message" or "[Warning] path: message", for logs and
// message boxes. No line feed after the last.
[[nodiscard]] QString formatProjectIssues(const QVector<ProjectIssue> &issues);

// The errors among the issues, and the others, each as its own line of that form.
[[nodiscard]] QStringList errorLines(const QVector<ProjectIssue> &issues);
[[nodiscard]] QStringList warningLines(const QVector<ProjectIssue> &issues);

// Whether one of the issues is an error.
[[nodiscard]] bool hasErrors(const QVector<ProjectIssue> &issues);
