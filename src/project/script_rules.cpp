#include "project/validation_rules.h"

#include "script/project_checks.h"
#include "update/files/memory_guard.h"
#include "update/files/project_path.h"
#include "update/files/text_file.h"

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
            names += name;
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
        const QString path = ast::cleanedPath(run.folder.relativeFilePath(files.next()));
        if (!run.scriptPaths.contains(path))
            addWarning(run, QStringLiteral("scripts"),
                       QStringLiteral("磁盘上的脚本未登记到 scripts[]：%1").arg(path));
    }
}

// A script that is missing or cannot be read has no globals; the first has been reported.
void checkGlobalNames(Run &run) {
    for (const QJsonValue &script : qAsConst(run.scripts)) {
        const QString path = textOf(script.toObject(), "path");
        if (path.isEmpty())
            continue;
        const QString file = ast::locatedPath(run.folder, path);
        const QStringList names =
            unlessOutOfMemory([&] { return badlyNamedGlobals(readTextFile(file)); }, QStringList());
        for (const QString &name : names)
            addWarning(run, path,
                       QStringLiteral("global 变量 '%1' 不符合 {camId}_{metric} 命名").arg(name));
    }
}

void checkImports(Run &run) {
    takeOver(run, ast::checkImportGraph(run.projectPath, run.scripts));
}

void checkDuplicateGlobals(Run &run) {
    takeOver(run, ast::checkCrossScriptGlobals(run.projectPath, run.scripts));
}

} // namespace validator
