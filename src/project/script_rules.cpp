// The rules on the scripts that lie on the disk, and on what stands in the registered ones.
#include "project/validation_rules.h"

#include "script/project_checks.h"
#include "update/files/memory_guard.h"
#include "update/files/project_path.h"

#include <QDirIterator>
#include <QRegularExpression>

namespace validator {
namespace {

// A scan of the text: a declaration in a comment counts as well, and one of a type that the
// expression does not list is not seen.
QStringList badlyNamedGlobals(const QString &text) {
    static const QRegularExpression declaration(
        QStringLiteral("\\bglobal\\s+(?:int|bool|float|string|char)\\s+([A-Za-z_][A-Za-z0-9_]*)"));
    QStringList names;
    QRegularExpressionMatchIterator matches = declaration.globalMatch(text);
    while (matches.hasNext()) {
        const QString name = matches.next().captured(1);
        if (!followsGlobalNaming(name))
            names.append(name);
    }
    return names;
}

// The issue does not say which script the finding comes from, unless the message does.
void takeOver(Run &run, const ast::ScriptCheckResult &result) {
    for (const ast::ScriptDiagnostic &finding : result.diagnostics) {
        const qint32 severity = finding.severity == 0 ? errorSeverity : warningSeverity;
        run.issues.append({severity, QStringLiteral("scripts"), finding.message});
    }
}

} // namespace

// The name filter ignores case, the comparison does not: a registered main.ys does not cover
// MAIN.YS.
void checkUnregisteredScripts(Run &run) {
    if (run.scriptPaths.isEmpty())
        return;
    QDirIterator files(run.folder.path(), {QStringLiteral("*.ys")}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = cleanedPath(run.folder.relativeFilePath(files.next()));
        if (!run.scriptPaths.contains(path))
            addWarning(run, QStringLiteral("scripts"),
                       QStringLiteral("磁盘上的脚本未登记到 scripts[]：%1").arg(path));
    }
}

void readScripts(Run &run) {
    // Of a script that does not parse too.
    const auto scan = [&run](const QString &file, const QString &text) {
        run.badNames.insert(
            file, unlessOutOfMemory([&] { return badlyNamedGlobals(text); }, QStringList()));
    };
    run.listedScripts = ast::readListedScripts(run.projectPath, run.scripts, scan);
}

// A script that is missing or cannot be read has no globals; the first has been reported.
void checkGlobalNames(Run &run) {
    for (const ast::ListedScript &script : run.listedScripts) {
        for (const QString &name : run.badNames.value(script.filePath))
            addWarning(run, script.path,
                       QStringLiteral("global 变量 '%1' 不符合 {camId}_{metric} 命名").arg(name));
    }
}

void checkImports(Run &run) {
    takeOver(run, ast::checkImportGraph(run.listedScripts));
}

void checkDuplicateGlobals(Run &run) {
    takeOver(run, ast::checkCrossScriptGlobals(run.listedScripts));
}

} // namespace validator
