// The rules of the validator, each a function that reads the project and appends what it finds.
//
// The order in which they run, and so the order of the findings, is the list in
// project_validator.cpp. No rule looks at the findings of another.
#pragma once

#include "project/project_validator.h"
#include "script/script_facts.h"

#include <QDir>
#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QSet>
#include <QStringList>

#include <vector>

namespace validator {

inline constexpr qint32 errorSeverity = 0;
inline constexpr qint32 warningSeverity = 1;

// What one run works on. The rules read everything above `issues` and append to it.
struct Run {
    QString projectPath;
    ProjectSources sources;
    QDir folder;
    QJsonObject root;
    QJsonArray scripts;
    QSet<QString> scriptIds;   // as written
    QSet<QString> scriptPaths; // cleaned
    // What one reading of the listed scripts told; readScripts() fills both.
    std::vector<ast::ListedScript> listedScripts;
    QHash<QString, QVector<BadName>> badNames; // by the path of a script's file
    QVector<ProjectIssue> issues;
};

inline void addError(Run &run, const QString &path, const QString &message) {
    run.issues.append({errorSeverity, path, message});
}

inline void addWarning(Run &run, const QString &path, const QString &message) {
    run.issues.append({warningSeverity, path, message});
}

// Missing, empty and of another type are one case: empty text.
inline QString textOf(const QJsonObject &object, const char *key) {
    return object.value(QLatin1String(key)).toString();
}

// The rule on the names of globals, {camId}_{metric}, which only ever leads to a warning.
[[nodiscard]] bool followsGlobalNaming(const QString &name);

// What the document says, and the files that it names: document_rules.cpp.
void checkSchemaVersion(Run &run);
void checkProject(Run &run);
void checkScriptsGiven(Run &run);
void checkScripts(Run &run);
void checkTasks(Run &run);
void checkCameras(Run &run);
void checkModelRunner(Run &run);
void checkModelConfigs(Run &run);
void checkProcessGroups(Run &run);

// The scripts on the disk and what stands in them: script_rules.cpp.
[[nodiscard]] ProjectSources theDisk();
void checkUnregisteredScripts(Run &run);
// Reads every listed script once, for the three rules below that look into them.
void readScripts(Run &run);
void checkGlobalNames(Run &run);
void checkImports(Run &run);
void checkDuplicateGlobals(Run &run);

} // namespace validator
