// The two faults that no script shows alone: a cycle of `import` statements, and a `global` that
// two scripts declare.
//
// Both checks go by the facts of the listed scripts. Given the path of the .yslib file and its
// `scripts` array, they read and parse the script files themselves, anew at each call; who wants both
// reads the facts once and gives them to each. A script that is missing, too large for memory,
// unreadable or does not parse is passed over without a finding; so is an entry that is no object or
// has no path. On the caller's thread.
#pragma once

#include "script/script_diagnostics.h"
#include "script/script_facts.h"

#include <QHash>
#include <QJsonArray>
#include <QSet>
#include <QString>
#include <QStringList>

#include <vector>

namespace ast {

// A listed script's absolute path, not cleaned, to the cleaned absolute paths that it imports. What
// is imported but not listed occurs in values only.
using ImportGraph = QHash<QString, QSet<QString>>;

// YS404 at 1:1 if a listed script imports itself, directly or through other listed ones; at most
// one for a project.
[[nodiscard]] ScriptCheckResult checkImportGraph(const QString &projectPath,
                                                 const QJsonArray &scripts);
[[nodiscard]] ScriptCheckResult checkImportGraph(const std::vector<ListedScript> &scripts);

// YS408 for each name that direct statements of two scripts or more declare `global`. The message
// lists all declarations as "path:line".
[[nodiscard]] ScriptCheckResult checkCrossScriptGlobals(const QString &projectPath,
                                                        const QJsonArray &scripts);
[[nodiscard]] ScriptCheckResult checkCrossScriptGlobals(const std::vector<ListedScript> &scripts);

// The imports among the direct statements of a script, as cleaned absolute paths resolved against
// the script's own folder; rooted paths are left out. Empty on any failure. The project's folder
// takes no part.
[[nodiscard]] QStringList collectImports(const QString &scriptPath, const QString &projectFolder);

// Whether a cycle can be reached from `node`. `onPath` holds the nodes between the start of the
// search and `node`, `finished` those that are known to reach none; the node that closes the cycle
// is appended to `path` if one is given. Takes no stack however long the chain of imports is.
[[nodiscard]] bool findImportCycle(const QString &node, const ImportGraph &graph,
                                   QSet<QString> &onPath, QSet<QString> &finished,
                                   QStringList *path = nullptr);

} // namespace ast
