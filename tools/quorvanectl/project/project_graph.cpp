#include "quorvanectl/project/project_graph.h"

#include "quorvanectl/files/file_access.h"
#include "quorvanectl/project/project_findings.h"
#include "update/files/project_path.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QSet>

#include <algorithm>

namespace ctl {
namespace {

// --- the scripts --------------------------------------------------------------------------------

// Scripts by the cleaned path of their file: one that is registered twice is one.
class GraphBuilder {
public:
    GraphBuilder(const QString &projectPath, ProjectGraph *result)
        : folder(QFileInfo(projectPath).absolutePath())
        , graph(*result) {}

    // Its number, new or known.
    int add(const QString &file) {
        const auto known = numbers.constFind(file);
        if (known != numbers.constEnd())
            return *known;
        GraphScript script;
        script.path = folder.relativeFilePath(file);
        if (!QFileInfo::exists(file))
            script.remarks.append(QStringLiteral("missing"));
        graph.scripts.push_back(script);
        const int number = int(graph.scripts.size()) - 1;
        numbers.insert(file, number);
        return number;
    }

    void addImports(int from, const QStringList &files) {
        QSet<int> known;
        for (const QString &file : files) {
            const int before = int(graph.scripts.size());
            const int to = add(file);
            if (to == before)
                graph.scripts[size_t(to)].remarks.prepend(QStringLiteral("not registered"));
            if (!known.contains(to))
                graph.scripts[size_t(from)].imports.append(to);
            known.insert(to);
        }
    }

private:
    QDir folder;
    ProjectGraph &graph;
    QHash<QString, int> numbers;
};

bool hasSyntaxError(const QString &file, bool *has, QString *error) {
    const QString text = readText(file, error);
    ScriptReport report;
    if (text.isNull() || !checkText(file, text, &report, error))
        return false;
    *has = !report.result.passed;
    return true;
}

// A registered script, without its imports, which may lead to one that is registered behind it.
bool addRegistered(const ast::ListedScript &listed, const QString &role, GraphBuilder *builder,
                   ProjectGraph *graph, QString *error) {
    const int before = int(graph->scripts.size());
    const int number = builder->add(QDir::cleanPath(listed.filePath));
    GraphScript &script = graph->scripts[size_t(number)];
    if (number < before)
        return true;
    script.role = role;
    script.globals = listed.facts.globals;
    for (const ast::GlobalDeclaration &global : listed.facts.globals)
        graph->definitions[global.name].append({number, global.line});
    bool isBroken = false;
    if (script.remarks.isEmpty() && !hasSyntaxError(listed.filePath, &isBroken, error))
        return false;
    if (isBroken)
        script.remarks.append(QStringLiteral("has a syntax error"));
    return true;
}

// Before the scripts are read by what would read a file of any size, or wait for a pipe.
bool areUsable(const QString &projectPath, const QJsonArray &scripts, QString *error) {
    const QDir folder(QFileInfo(projectPath).absolutePath());
    return std::all_of(scripts.begin(), scripts.end(), [&](const QJsonValue &entry) {
        const QString path = entry.toObject().value(QLatin1String("path")).toString();
        const QString file = locatedPath(folder, path);
        return path.isEmpty() || !QFileInfo::exists(file) || isUsableFile(file, error);
    });
}

// --- circles ------------------------------------------------------------------------------------

// The strongly connected parts of the graph, by two walks: one along the imports that notes in which
// order scripts are done, and one against them that gathers. Neither takes more stack for a longer chain.
class Circles {
public:
    explicit Circles(const ProjectGraph &of)
        : graph(of)
        , importers(int(of.scripts.size()))
        , isSeen(int(of.scripts.size()), false)
        , circles(int(of.scripts.size()), -1) {}

    QVector<int> find() {
        const int count = importers.size();
        for (int i = 0; i < count; ++i) {
            for (const int to : importsOf(i))
                importers[to].append(i);
        }
        for (int i = 0; i < count; ++i)
            walkFrom(i);
        isSeen.fill(false);
        int found = 0;
        for (auto script = order.crbegin(); script != order.crend(); ++script)
            found += gatherFrom(*script, found) ? 1 : 0;
        return inOrder();
    }

private:
    struct Step {
        int script;
        int next;
    };

    const QVector<int> &importsOf(int script) const {
        return graph.scripts[size_t(script)].imports;
    }

    void walkFrom(int start) {
        if (isSeen.at(start))
            return;
        isSeen[start] = true;
        std::vector<Step> steps{{start, 0}};
        while (!steps.empty()) {
            Step &step = steps.back();
            const QVector<int> &imports = importsOf(step.script);
            if (step.next == imports.size()) {
                order.append(step.script);
                steps.pop_back();
                continue;
            }
            const int to = imports.at(step.next++);
            if (!isSeen.at(to)) {
                isSeen[to] = true;
                steps.push_back({to, 0});
            }
        }
    }

    // Whether the part is a circle: of several scripts, or of one that imports itself.
    bool gatherFrom(int start, int number) {
        if (isSeen.at(start))
            return false;
        isSeen[start] = true;
        QVector<int> part{start};
        for (int i = 0; i < part.size(); ++i) {
            for (const int from : importers.at(part.at(i))) {
                if (!isSeen.at(from)) {
                    isSeen[from] = true;
                    part.append(from);
                }
            }
        }
        if (part.size() == 1 && !importsOf(start).contains(start))
            return false;
        for (const int script : part)
            circles[script] = number;
        return true;
    }

    // Numbered by the first script of each.
    QVector<int> inOrder() const {
        QHash<int, int> numbers;
        QVector<int> ordered;
        for (const int circle : circles) {
            if (circle >= 0 && !numbers.contains(circle))
                numbers.insert(circle, numbers.size());
            ordered.append(numbers.value(circle, -1));
        }
        return ordered;
    }

    const ProjectGraph &graph;
    QVector<QVector<int>> importers;
    QVector<bool> isSeen;
    QVector<int> circles;
    QVector<int> order;
};

} // namespace

bool ProjectGraph::isInCircle(int from, int to) const {
    return circles.at(from) >= 0 && circles.at(from) == circles.at(to);
}

QStringList ProjectGraph::otherDefinitions(int script, const QString &global) const {
    QStringList places;
    for (const GlobalPlace &place : definitions.value(global)) {
        if (place.script != script)
            places.append(QStringLiteral("%1:%2").arg(scripts[size_t(place.script)].path,
                                                      QString::number(place.line)));
    }
    return places;
}

int ProjectGraph::importCount() const {
    int count = 0;
    for (const GraphScript &script : scripts)
        count += script.imports.size();
    return count;
}

int ProjectGraph::globalCount() const {
    int count = 0;
    for (const GraphScript &script : scripts)
        count += script.globals.size();
    return count;
}

int ProjectGraph::circleCount() const {
    return circles.isEmpty() ? 0 : *std::max_element(circles.begin(), circles.end()) + 1;
}

bool readGraph(const QString &projectPath, ProjectGraph *graph, QString *error) {
    QJsonObject project;
    if (!readProjectObject(projectPath, &project, error))
        return false;
    const QJsonArray entries = project.value(QLatin1String("scripts")).toArray();
    if (!areUsable(projectPath, entries, error))
        return false;
    graph->projectPath = projectPath;
    QStringList roles; // of the entries that are listed: those with a path
    for (const QJsonValue &entry : entries) {
        if (!entry.toObject().value(QLatin1String("path")).toString().isEmpty())
            roles.append(entry.toObject().value(QLatin1String("role")).toString());
    }
    GraphBuilder builder(projectPath, graph);
    const std::vector<ast::ListedScript> listed = ast::readListedScripts(projectPath, entries);
    for (size_t i = 0; i < listed.size(); ++i) {
        if (!addRegistered(listed[i], roles.value(int(i)), &builder, graph, error))
            return false;
    }
    QSet<int> done;
    for (const ast::ListedScript &script : listed) {
        const int number = builder.add(QDir::cleanPath(script.filePath));
        if (!done.contains(number))
            builder.addImports(number, script.facts.imports);
        done.insert(number);
    }
    graph->circles = Circles(*graph).find();
    return true;
}

} // namespace ctl
