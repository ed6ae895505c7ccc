// What an editor asks of the names in an open text.
#include "quorvanectl/analysis/workspace.h"

#include <QDir>
#include <QFileInfo>

namespace ctl {
namespace {

// A path in a text is not unquoted by anybody, so such a script cannot be named.
bool canBeImported(const QString &path) {
    return !path.contains(QLatin1Char('"')) && !path.contains(QLatin1Char('\\'));
}

} // namespace

// The scripts in the folder of its project, from its own, in the order of their names.
QStringList Workspace::importablePaths(const QString &scriptPath) {
    QStringList paths;
    const QString project = projectOf(scriptPath);
    if (project.isEmpty())
        return paths;
    const QDir folder = QFileInfo(scriptPath).absoluteDir();
    for (const QString &script : placeOf(project).scriptsBelow) {
        const QString path = folder.relativeFilePath(script);
        if (QDir::cleanPath(script) != scriptPath && canBeImported(path))
            paths.append(path);
    }
    paths.sort();
    return paths;
}

Proposals Workspace::proposalsAt(const QString &path, int index) {
    const QString text = texts.value(path);
    if (isProjectFile(path))
        return projectProposals(text, index);
    const ScriptCursor cursor = cursorIn(text, index);
    if (cursor.within == ScriptCursor::Within::ImportPath)
        return importProposals(cursor, importablePaths(path));
    if (cursor.within == ScriptCursor::Within::Code)
        return codeProposals(cursor, {});
    return {cursor.from, cursor.to, {}};
}

std::optional<NameRecord> Workspace::recordAt(const QString &path, int index) {
    const QString text = texts.value(path);
    if (isProjectFile(path))
        return keyRecord(text, index);
    const ScriptCursor cursor = cursorIn(text, index);
    if (cursor.within != ScriptCursor::Within::Code)
        return std::nullopt;
    std::optional<NameRecord> record =
        libraryFunctionRecord(text.mid(cursor.from, cursor.to - cursor.from));
    if (record) {
        record->from = cursor.from;
        record->to = cursor.to;
    }
    return record;
}

std::optional<CallRecord> Workspace::callAt(const QString &path, int index) {
    if (isProjectFile(path))
        return std::nullopt;
    const ScriptCursor cursor = cursorIn(texts.value(path), index);
    const std::optional<NameRecord> function = libraryFunctionRecord(cursor.callee);
    if (!function || cursor.within == ScriptCursor::Within::Comment)
        return std::nullopt;
    return CallRecord{*function, cursor.argument};
}

} // namespace ctl
