#include "script/script_facts.h"

#include "script/text_parser.h"
#include "update/files/memory_guard.h"
#include "update/files/project_path.h"
#include "update/files/text_file.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QJsonObject>

#include <utility>

namespace ast {
namespace {

bool isSeparator(const QString &path, int index) {
    return index < path.size() &&
           (path.at(index) == QLatin1Char('/') || path.at(index) == QLatin1Char('\\'));
}

bool isDriveLetter(const QString &path) {
    if (path.size() < 2 || path.at(1) != QLatin1Char(':'))
        return false;
    const ushort letter = path.at(0).toLower().unicode();
    return path.at(0).unicode() < 0x80 && letter >= 'a' && letter <= 'z';
}

} // namespace

ScriptFacts factsOf(const QString &filePath, const Program &program) {
    ScriptFacts facts;
    const QDir folder = QFileInfo(filePath).absoluteDir();
    for (const std::shared_ptr<Stmt> &statement : program.statements) {
        const auto *const import = dynamic_cast<const ImportStmt *>(statement.get());
        if (import != nullptr && !isRootedPath(import->path))
            facts.imports.append(
                QDir::cleanPath(folder.absoluteFilePath(slashedPath(import->path))));
        const auto *const declaration = dynamic_cast<const VarDeclStmt *>(statement.get());
        if (declaration != nullptr && declaration->isGlobal)
            facts.globals.append({declaration->name, declaration->line});
    }
    return facts;
}

std::vector<ListedScript> listScripts(const QString &projectPath, const QJsonArray &scripts,
                                      const FactsReader &factsOfFile) {
    const QDir folder(QFileInfo(projectPath).absolutePath());
    std::vector<ListedScript> listed;
    QHash<QString, ScriptFacts> known;
    for (const QJsonValue &entry : scripts) {
        const QString path = entry.toObject().value(QLatin1String("path")).toString();
        if (path.isEmpty())
            continue;
        const QString file = locatedPath(folder, path);
        if (!known.contains(file))
            known.insert(file, factsOfFile(file));
        listed.push_back({path, folder.absoluteFilePath(path), file, known.value(file)});
    }
    return listed;
}

std::vector<ListedScript> readListedScripts(const QString &projectPath, const QJsonArray &scripts,
                                            const TextReader &alsoRead) {
    return listScripts(projectPath, scripts, [&alsoRead](const QString &file) {
        return readScriptFacts(file, alsoRead);
    });
}

ScriptFacts readScriptFacts(const QString &filePath, const TextReader &alsoRead) {
    const auto read = [&] {
        const QString text = readTextFile(filePath);
        if (text.isNull())
            return ScriptFacts();
        if (alsoRead)
            alsoRead(filePath, text);
        // Nothing that a clause says is asked for, nor what the parser leaves behind beside a program.
        const std::shared_ptr<Program> program = parseText(text, Detail::Outline).program;
        return program == nullptr ? ScriptFacts() : factsOf(filePath, *program);
    };
    return unlessOutOfMemory(read, ScriptFacts());
}

bool isRootedPath(const QString &path) {
    if (isSeparator(path, 0))
        return true;
    return isDriveLetter(path) && isSeparator(path, 2);
}

} // namespace ast
