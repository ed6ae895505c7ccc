#include "quorvanectl/analysis/project_view.h"

#include "project/project_validator.h"
#include "quorvanectl/files/json_places.h"
#include "script/project_checks.h"
#include "update/files/memory_guard.h"
#include "update/files/project_path.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

#include <algorithm>

namespace ctl {
namespace {

// A place in a script that takes part in a finding.
struct ScriptPlace {
    QString file;
    QString shown;
    TextRange at;
};

// A name that a thousand scripts declare is one mistake: this many of the others are told beside each.
constexpr int mostRelated = 20;

// The scripts of one look: each is asked for once, so that a file that changes meanwhile counts as it
// was.
class Summaries {
public:
    explicit Summaries(ScriptStore &of)
        : store(of) {}

    const ScriptSummary &of(const QString &filePath) {
        const QString path = QDir::cleanPath(filePath);
        auto known = summaries.constFind(path);
        if (known == summaries.constEnd())
            known = summaries.insert(path, store.summaryOf(path));
        return **known;
    }

private:
    ScriptStore &store;
    QHash<QString, std::shared_ptr<const ScriptSummary>> summaries;
};

// Where the findings across scripts go.
class ScriptPlaces {
public:
    ScriptPlaces(const std::vector<ast::ListedScript> &listed, Summaries &summariesOfListed)
        : scripts(listed)
        , summaries(summariesOfListed) {}

    QVector<ScriptPlace> ofGlobal(const QString &name) {
        if (globals.isEmpty())
            gatherGlobals();
        return globals.value(name);
    }

    // The imports along the first circle, each in the script that it leaves.
    QVector<ScriptPlace> ofCircle() {
        ast::ImportGraph graph;
        for (const ast::ListedScript &script : scripts) {
            for (const QString &target : script.facts.imports)
                graph[script.absolutePath].insert(target);
        }
        QVector<ScriptPlace> places;
        QSet<QString> finished;
        for (const ast::ListedScript &script : scripts) {
            QSet<QString> onPath;
            QStringList closing;
            if (!ast::findImportCycle(script.absolutePath, graph, onPath, finished, &closing))
                continue;
            const QStringList circle = circleThrough(closing.value(0), graph);
            for (int i = 0; i < circle.size(); ++i)
                takeImport(circle.at(i), circle.at((i + 1) % circle.size()), &places);
            break;
        }
        return places;
    }

private:
    // Each file of the list once: what is listed twice declares nothing twice.
    void gatherGlobals() {
        QSet<QString> seen;
        for (const ast::ListedScript &script : scripts) {
            const QString file = QDir::cleanPath(script.filePath);
            if (seen.contains(file))
                continue;
            seen.insert(file);
            const ScriptSummary &summary = summaries.of(file);
            for (int i = 0; i < summary.facts.globals.size(); ++i)
                globals[summary.facts.globals.at(i).name].append(
                    {file, script.path, summary.globals.value(i)});
        }
    }

    // The shortest way from a script back to itself, the script first.
    static QStringList circleThrough(const QString &start, const ast::ImportGraph &graph) {
        QHash<QString, QString> cameFrom;
        QStringList queue{start};
        for (int next = 0; next < queue.size(); ++next) {
            const QString node = queue.at(next);
            QStringList targets = graph.value(node).values();
            if (targets.contains(start))
                return fromFirst(wayTo(node, start, cameFrom));
            targets.sort();
            for (const QString &target : targets) {
                if (cameFrom.contains(target))
                    continue;
                cameFrom.insert(target, node);
                queue.append(target);
            }
        }
        return {};
    }

    // The search may meet a circle anywhere; it is told from the same script each time.
    static QStringList fromFirst(QStringList circle) {
        std::rotate(circle.begin(), std::min_element(circle.begin(), circle.end()), circle.end());
        return circle;
    }

    static QStringList wayTo(QString node, const QString &start,
                             const QHash<QString, QString> &cameFrom) {
        QStringList way{node};
        while (node != start) {
            node = cameFrom.value(node);
            way.prepend(node);
        }
        return way;
    }

    void takeImport(const QString &from, const QString &to, QVector<ScriptPlace> *places) {
        for (const ast::ListedScript &script : scripts) {
            if (script.absolutePath != from)
                continue;
            const QString file = QDir::cleanPath(script.filePath);
            for (const NamedRange &import : summaries.of(file).imports) {
                if (import.name == to) {
                    places->append({file, script.path, import.at});
                    return;
                }
            }
        }
    }

    const std::vector<ast::ListedScript> &scripts;
    Summaries &summaries;
    QHash<QString, QVector<ScriptPlace>> globals;
};

// One look at a project, from its issues to the places that show them.
class Look {
public:
    Look(const ProjectInput &project, ScriptStore &store)
        : input(project)
        , summaries(store) {}

    ProjectView view() {
        sources.scriptAt = [this](const QString &file) {
            const ScriptSummary &summary = summaries.of(file);
            return ScriptContent{summary.facts, summary.scanned};
        };
        sources.scriptsBelow = [this](const QString &) { return input.scriptsBelow; };
        issues = validateProjectText(input.text, input.path, sources);
        const QJsonDocument document = QJsonDocument::fromJson(input.text.toUtf8());
        if (!document.isObject())
            placeFault();
        else
            placeIssues(document.object().value(QLatin1String("scripts")).toArray());
        return result;
    }

private:
    // The one issue of a file that holds no object.
    void placeFault() {
        const std::optional<TextPlace> fault = jsonFault(input.text);
        const TextPlace at = fault ? *fault : placesInJson(input.text, {QString()}).value(0);
        for (const ProjectIssue &issue : qAsConst(issues))
            show(input.path, {valueRange(input.text, at), isError(issue), {}, issue.message, {}});
    }

    void placeIssues(const QJsonArray &scripts) {
        const auto factsOf = [this](const QString &file) { return sources.scriptAt(file).facts; };
        scriptList = placesInJson(input.text, {QStringLiteral("scripts")}).value(0);
        listed = ast::listScripts(input.path, scripts, factsOf);
        for (const ast::ListedScript &script : listed)
            result.scripts.append(QDir::cleanPath(script.filePath));
        const ast::ScriptCheckResult circle = ast::checkImportGraph(listed);
        const ast::ScriptCheckResult globals = ast::checkCrossScriptGlobals(listed);
        // They are the validator's last ones, in the order of its rules.
        const int across = int(circle.diagnostics.size() + globals.diagnostics.size());
        placeOwn(issues.mid(0, issues.size() - across));
        ScriptPlaces places(listed, summaries);
        for (const ast::ScriptDiagnostic &finding : circle.diagnostics)
            showAcross(finding, places.ofCircle());
        for (const ast::ScriptDiagnostic &finding : globals.diagnostics)
            showAcross(finding, places.ofGlobal(finding.message.section(QLatin1Char('\''), 1, 1)));
    }

    // Those of the document, and of the naming rule, whose path is that of a script.
    void placeOwn(const QVector<ProjectIssue> &own) {
        QStringList paths;
        for (const ProjectIssue &issue : own)
            paths.append(issue.path);
        const QVector<TextPlace> values = placesInJson(input.text, paths);
        const int named = namingIssues();
        for (int i = 0; i < own.size(); ++i) {
            const ProjectIssue &issue = own.at(i);
            if (i < own.size() - named)
                show(input.path,
                     {valueRange(input.text, values.at(i)), isError(issue), {}, issue.message, {}});
        }
        showNaming(own.mid(own.size() - named));
    }

    // How many of the issues the naming rule made: one for each badly named global of each entry, and
    // they stand behind all others.
    int namingIssues() {
        int count = 0;
        for (const ast::ListedScript &script : listed)
            count += summaries.of(script.filePath).badNames.size();
        return count;
    }

    void showNaming(const QVector<ProjectIssue> &naming) {
        int next = 0;
        QSet<QString> seen;
        for (const ast::ListedScript &script : listed) {
            const QString file = QDir::cleanPath(script.filePath);
            const QVector<NamedRange> names = summaries.of(file).badNames;
            for (const NamedRange &global : names) {
                const ProjectIssue issue = naming.value(next++);
                // A script that is listed twice shows it once.
                if (!seen.contains(file))
                    show(file, {global.at, isError(issue), {}, issue.message, {}});
            }
            seen.insert(file);
        }
    }

    // In each of the places, with the others beside it.
    void showAcross(const ast::ScriptDiagnostic &finding, const QVector<ScriptPlace> &places) {
        // Entries that lead to one file by several spellings may close a circle that no import shows.
        if (places.isEmpty())
            show(input.path, {valueRange(input.text, scriptList),
                              finding.severity == 0,
                              finding.code,
                              finding.message,
                              {}});
        for (int i = 0; i < places.size(); ++i) {
            Finding shown{
                places.at(i).at, finding.severity == 0, finding.code, finding.message, {}};
            for (int other = 0; other < qMin(places.size(), mostRelated); ++other) {
                const ScriptPlace &place = places.at(other);
                if (other != i)
                    shown.related.append(
                        {place.file, place.at,
                         QStringLiteral("%1:%2").arg(place.shown).arg(place.at.from.line)});
            }
            show(places.at(i).file, shown);
        }
    }

    void show(const QString &file, const Finding &finding) {
        result.findings[file].append(finding);
    }

    const ProjectInput &input;
    Summaries summaries;
    ProjectSources sources;
    QVector<ProjectIssue> issues;
    TextPlace scriptList; // in the project file
    std::vector<ast::ListedScript> listed;
    ProjectView result;
};

} // namespace

ProjectView viewOf(const ProjectInput &project, ScriptStore &store) {
    return unlessOutOfMemory([&] { return Look(project, store).view(); }, ProjectView());
}

} // namespace ctl
