// What the checks of a project want to know of a script: gathered by one reading of its file and kept
// without its text and its tree, so that a project of any number of scripts needs the memory of one.
//
// Free functions without state, for any thread once the function library is loaded.
#pragma once

#include <QJsonArray>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <vector>

namespace ast {

struct GlobalDeclaration {
    QString name;
    qint32 line;
};

// Of the direct statements of a script alone, in their order. Both lists are empty for a script that
// is missing, unreadable, too large for memory or does not parse.
struct ScriptFacts {
    // Cleaned absolute paths, resolved against the script's own folder; rooted paths are left out.
    QStringList imports;
    QVector<GlobalDeclaration> globals;
};

// An entry of a project's `scripts` array.
struct ListedScript {
    QString path;         // as written in the array
    QString absolutePath; // as written, seen from the project's folder
    QString filePath;     // where the file lies
    ScriptFacts facts;
};

struct Program;

// What the direct statements of a parsed script tell; its imports count from where `filePath` lies.
[[nodiscard]] ScriptFacts factsOf(const QString &filePath, const Program &program);

// The facts of the script in a file, from wherever they are known.
using FactsReader = std::function<ScriptFacts(const QString &filePath)>;

// The entries that are objects with a path, in order, each with its facts. A file is asked for once,
// however often it is listed under the same spelling.
[[nodiscard]] std::vector<ListedScript>
listScripts(const QString &projectPath, const QJsonArray &scripts, const FactsReader &factsOfFile);

// Sees the text of a script while it is at hand, and the path of its file.
using TextReader = std::function<void(const QString &filePath, const QString &text)>;

// The same from the files themselves. Each is opened once; `alsoRead`, if given, then gets its text.
[[nodiscard]] std::vector<ListedScript> readListedScripts(const QString &projectPath,
                                                          const QJsonArray &scripts,
                                                          const TextReader &alsoRead = {});

// The facts of the one script at `filePath`.
[[nodiscard]] ScriptFacts readScriptFacts(const QString &filePath, const TextReader &alsoRead = {});

// Whether a path starts with a separator of either kind, or with a drive letter, a colon and one.
[[nodiscard]] bool isRootedPath(const QString &path);

} // namespace ast
