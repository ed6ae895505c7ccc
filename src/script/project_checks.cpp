#include "script/project_checks.h"

#include "script/lexer.h"
#include "script/parser.h"
#include "update/files/memory_guard.h"
#include "update/files/project_path.h"
#include "update/files/text_file.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonObject>

#include <algorithm>
#include <utility>
#include <vector>

namespace ast {
namespace {

struct ListedScript {
    QString path;         // as written in the array
    QString absolutePath; // as written, seen from the project's folder
    QString filePath;     // where the file lies
};

std::vector<ListedScript> listedScripts(const QDir &folder, const QJsonArray &scripts) {
    std::vector<ListedScript> listed;
    for (const QJsonValue &entry : scripts) {
        const QString path = entry.toObject().value(QLatin1String("path")).toString();
        if (!path.isEmpty())
            listed.push_back({path, folder.absoluteFilePath(path), locatedPath(folder, path)});
    }
    return listed;
}

QDir folderOf(const QString &projectPath) {
    return QDir(QFileInfo(projectPath).absolutePath());
}

void addError(ScriptCheckResult *result, qint32 line, const QString &code, const QString &message) {
    ScriptDiagnostic finding;
    finding.line = line;
    finding.code = code;
    finding.message = message;
    result->diagnostics.push_back(finding);
    ++result->errorCount;
    result->passed = false;
}

// Null where the text does not lex or parse. What the parser leaves behind beside a program is of
// no interest here.
std::shared_ptr<Program> parsedText(const QString &text) {
    QString lexicalError;
    std::vector<Token> tokens = Lexer(text).tokenize(&lexicalError);
    if (!lexicalError.isEmpty())
        return nullptr;
    QString syntaxError;
    return Parser(std::move(tokens), TokenOrigin::Lexer).parseProgram(&syntaxError);
}

QStringList importsOf(const QString &scriptPath) {
    QStringList imports;
    const QString text = readTextFile(scriptPath);
    const std::shared_ptr<Program> program = text.isNull() ? nullptr : parsedText(text);
    if (program == nullptr)
        return imports;
    const QDir folder = QFileInfo(scriptPath).absoluteDir();
    for (const std::shared_ptr<Stmt> &statement : program->statements) {
        const auto *const import = dynamic_cast<const ImportStmt *>(statement.get());
        if (import != nullptr && !isRootedPath(import->path))
            imports += QDir::cleanPath(folder.absoluteFilePath(slashedPath(import->path)));
    }
    return imports;
}

ImportGraph importGraph(const QString &projectPath, const QJsonArray &scripts) {
    const QDir folder = folderOf(projectPath);
    ImportGraph graph;
    for (const ListedScript &script : listedScripts(folder, scripts)) {
        QSet<QString> &targets = graph[script.absolutePath];
        for (const QString &target : collectImports(script.filePath, folder.path()))
            targets.insert(target);
    }
    return graph;
}

struct GlobalDefinition {
    QString path;
    qint32 line;
};

using Definitions = std::vector<GlobalDefinition>;

struct NamedDefinition {
    QString name;
    GlobalDefinition definition;
};

std::vector<NamedDefinition> globalsOf(const ListedScript &script) {
    std::vector<NamedDefinition> globals;
    const QString text = readTextFile(script.filePath);
    if (text.isNull())
        return globals;
    ScriptCheckContext context = makeCheckContext(text);
    std::shared_ptr<Program> program;
    // The finding of a script that does not parse goes with the context: this check only counts.
    if (!checkScript(context, &program))
        return globals;
    for (const std::shared_ptr<Stmt> &statement : program->statements) {
        const auto *const declaration = dynamic_cast<const VarDeclStmt *>(statement.get());
        if (declaration != nullptr && declaration->isGlobal)
            globals.push_back({declaration->name, {script.path, declaration->line}});
    }
    return globals;
}

bool spansScripts(const Definitions &definitions) {
    return std::any_of(definitions.cbegin(), definitions.cend(), [&](const GlobalDefinition &it) {
        return it.path != definitions.front().path;
    });
}

QString placesOf(const Definitions &definitions) {
    QStringList places;
    for (const GlobalDefinition &definition : definitions)
        places += QStringLiteral("%1:%2").arg(definition.path, QString::number(definition.line));
    return places.join(QStringLiteral(", "));
}

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

// One step of the search: a node on the path, and where its imports stand.
struct SearchStep {
    QString node;
    QSet<QString> imports; // shares the graph's data, so the iterator below stays good
    QSet<QString>::const_iterator next;
};

} // namespace

ScriptCheckResult checkImportGraph(const QString &projectPath, const QJsonArray &scripts) {
    const ImportGraph graph = importGraph(projectPath, scripts);
    ScriptCheckResult result;
    QSet<QString> finished;
    for (auto node = graph.keyBegin(); node != graph.keyEnd(); ++node) {
        QSet<QString> onPath;
        if (findImportCycle(*node, graph, onPath, finished)) {
            addError(&result, 1, QStringLiteral("YS404"), QStringLiteral("检测到 import 循环依赖"));
            break;
        }
    }
    return result;
}

ScriptCheckResult checkCrossScriptGlobals(const QString &projectPath, const QJsonArray &scripts) {
    QHash<QString, Definitions> table;
    for (const ListedScript &script : listedScripts(folderOf(projectPath), scripts)) {
        const auto globals =
            unlessOutOfMemory([&] { return globalsOf(script); }, std::vector<NamedDefinition>());
        for (const NamedDefinition &global : globals)
            table[global.name].push_back(global.definition);
    }
    ScriptCheckResult result;
    for (auto global = table.cbegin(); global != table.cend(); ++global) {
        const Definitions &definitions = global.value();
        if (spansScripts(definitions))
            addError(&result, definitions.front().line, QStringLiteral("YS408"),
                     QStringLiteral("跨脚本 global '%1' 重复定义：%2")
                         .arg(global.key(), placesOf(definitions)));
    }
    return result;
}

QStringList collectImports(const QString &scriptPath, const QString &projectFolder) {
    Q_UNUSED(projectFolder)
    return unlessOutOfMemory([&] { return importsOf(scriptPath); }, QStringList());
}

bool findImportCycle(const QString &node, const ImportGraph &graph, QSet<QString> &onPath,
                     QSet<QString> &finished, QStringList *path) {
    std::vector<SearchStep> steps;
    // True if `reached` closes a cycle; else a step is added for a node that is not known yet.
    const auto visit = [&](const QString &reached) {
        if (onPath.contains(reached)) {
            if (path != nullptr)
                path->append(reached);
            return true;
        }
        if (!finished.contains(reached)) {
            onPath.insert(reached);
            SearchStep step{reached, graph.value(reached), {}};
            step.next = step.imports.cbegin();
            steps.push_back(std::move(step));
        }
        return false;
    };
    if (visit(node))
        return true;
    while (!steps.empty()) {
        SearchStep &step = steps.back();
        if (step.next != step.imports.cend()) {
            const QString reached = *step.next++;
            if (visit(reached))
                return true;
        } else {
            onPath.remove(step.node);
            finished.insert(step.node);
            steps.pop_back();
        }
    }
    return false;
}

bool isRootedPath(const QString &path) {
    if (isSeparator(path, 0))
        return true;
    return isDriveLetter(path) && isSeparator(path, 2);
}

} // namespace ast
