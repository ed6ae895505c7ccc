// The rules on the scripts that lie on the disk, and on what stands in the registered ones.
#include "project/validation_rules.h"

#include "script/project_checks.h"
#include "update/files/memory_guard.h"
#include "update/files/project_path.h"

#include <QDirIterator>
#include <QRegularExpression>

namespace validator {
namespace {

ScriptContent readContent(const QString &filePath) {
    ScriptContent content;
    // Of a script that does not parse too.
    content.facts = ast::readScriptFacts(filePath, [&](const QString &, const QString &text) {
        content.badNames =
            unlessOutOfMemory([&] { return badlyNamedGlobals(text); }, QVector<BadName>());
    });
    return content;
}

// The issue does not say which script the finding comes from, unless the message does.
void takeOver(Run &run, const ast::ScriptCheckResult &result) {
    for (const ast::ScriptDiagnostic &finding : result.diagnostics) {
        const qint32 severity = finding.severity == 0 ? errorSeverity : warningSeverity;
        run.issues.append({severity, QStringLiteral("scripts"), finding.message});
    }
}

} // namespace

ProjectSources theDisk() {
    return {readContent, scriptsOnDisk};
}

// The name filter ignores case, the comparison does not: a registered main.ys does not cover
// MAIN.YS.
void checkUnregisteredScripts(Run &run) {
    if (run.scriptPaths.isEmpty())
        return;
    const QStringList files = run.sources.scriptsBelow(run.folder.path());
    for (const QString &file : files) {
        const QString path = cleanedPath(run.folder.relativeFilePath(file));
        if (!run.scriptPaths.contains(path))
            addWarning(run, QStringLiteral("scripts"),
                       QStringLiteral("磁盘上的脚本未登记到 scripts[]：%1").arg(path));
    }
}

void readScripts(Run &run) {
    const auto read = [&run](const QString &file) {
        const ScriptContent content = run.sources.scriptAt(file);
        run.badNames.insert(file, content.badNames);
        return content.facts;
    };
    run.listedScripts = ast::listScripts(run.projectPath, run.scripts, read);
}

// A script that is missing or cannot be read has no globals; the first has been reported.
void checkGlobalNames(Run &run) {
    for (const ast::ListedScript &script : run.listedScripts) {
        for (const BadName &global : run.badNames.value(script.filePath))
            addWarning(
                run, script.path,
                QStringLiteral("global 变量 '%1' 不符合 {camId}_{metric} 命名").arg(global.name));
    }
}

void checkImports(Run &run) {
    takeOver(run, ast::checkImportGraph(run.listedScripts));
}

void checkDuplicateGlobals(Run &run) {
    takeOver(run, ast::checkCrossScriptGlobals(run.listedScripts));
}

} // namespace validator

QVector<BadName> badlyNamedGlobals(const QString &text) {
    static const QRegularExpression declaration(
        QStringLiteral("\\bglobal\\s+(?:int|bool|float|string|char)\\s+([A-Za-z_][A-Za-z0-9_]*)"));
    QVector<BadName> names;
    QRegularExpressionMatchIterator matches = declaration.globalMatch(text);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        if (!validator::followsGlobalNaming(match.captured(1)))
            names.append({match.captured(1), match.capturedStart(1)});
    }
    return names;
}

QStringList scriptsOnDisk(const QString &folder) {
    QDirIterator files(folder, {QStringLiteral("*.ys")}, QDir::Files, QDirIterator::Subdirectories);
    QStringList paths;
    while (files.hasNext())
        paths.append(files.next());
    return paths;
}
