#include "script/project_checks.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace ast {
namespace {

void addError(ScriptCheckResult *result, qint32 line, const QString &code, const QString &message) {
    ScriptDiagnostic finding;
    finding.line = line;
    finding.code = code;
    finding.message = message;
    result->diagnostics.push_back(finding);
    ++result->errorCount;
    result->passed = false;
}

ImportGraph importGraph(const std::vector<ListedScript> &scripts) {
    ImportGraph graph;
    for (const ListedScript &script : scripts) {
        QSet<QString> &targets = graph[script.absolutePath];
        for (const QString &target : script.facts.imports)
            targets.insert(target);
    }
    return graph;
}

struct GlobalDefinition {
    QString path;
    qint32 line;
};

using Definitions = std::vector<GlobalDefinition>;

bool spansScripts(const Definitions &definitions) {
    return std::any_of(definitions.cbegin(), definitions.cend(), [&](const GlobalDefinition &it) {
        return it.path != definitions.front().path;
    });
}

QString placesOf(const Definitions &definitions) {
    QStringList places;
    for (const GlobalDefinition &definition : definitions)
        places.append(
            QStringLiteral("%1:%2").arg(definition.path, QString::number(definition.line)));
    return places.join(QStringLiteral(", "));
}

// One step of the search: a node on the path, and where its imports stand.
struct SearchStep {
    QString node;
    QSet<QString> imports; // shares the graph's data, so the iterator below stays good
    QSet<QString>::const_iterator next;
};

} // namespace

ScriptCheckResult checkImportGraph(const QString &projectPath, const QJsonArray &scripts) {
    return checkImportGraph(readListedScripts(projectPath, scripts));
}

ScriptCheckResult checkImportGraph(const std::vector<ListedScript> &scripts) {
    const ImportGraph graph = importGraph(scripts);
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
    return checkCrossScriptGlobals(readListedScripts(projectPath, scripts));
}

ScriptCheckResult checkCrossScriptGlobals(const std::vector<ListedScript> &scripts) {
    QHash<QString, Definitions> table;
    for (const ListedScript &script : scripts) {
        for (const GlobalDeclaration &global : script.facts.globals)
            table[global.name].push_back({script.path, global.line});
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
    return readScriptFacts(scriptPath).imports;
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

} // namespace ast
