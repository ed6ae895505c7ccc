// What an editor asks of the names in an open text.
#include "quorvanectl/analysis/workspace.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace ctl {
namespace {

// A path in a text is not unquoted by anybody, so such a script cannot be named.
bool canBeImported(const QString &path) {
    return !path.contains(QLatin1Char('"')) && !path.contains(QLatin1Char('\\'));
}

int lineAt(const QString &text, int index) {
    return text.leftRef(index).count(QLatin1Char('\n')) + 1;
}

QString declarationOf(const ScriptName &name) {
    if (name.kind == ScriptName::Kind::Function)
        return QStringLiteral("function %1(%2)")
            .arg(name.name, name.parameters.join(QLatin1String(", ")));
    return QStringLiteral("%1%2 %3").arg(
        name.kind == ScriptName::Kind::Global ? QStringLiteral("global ") : QString(), name.type,
        name.name);
}

ScriptName functionName(const DeclaredFunction &function) {
    ScriptName name;
    name.kind = ScriptName::Kind::Function;
    name.name = function.name;
    name.parameters = function.parameters;
    return name;
}

// The names of a function's parameters, without their types.
QStringList parameterNames(const ScriptName &function) {
    QStringList names;
    for (const QString &parameter : function.parameters)
        names.append(parameter.section(QLatin1Char(' '), -1));
    return names;
}

QString snippetOf(const ScriptName &function) {
    QStringList places = parameterNames(function);
    for (int i = 0; i < places.size(); ++i)
        places[i] = QStringLiteral("${%1:%2}").arg(QString::number(i + 1), places.at(i));
    return QStringLiteral("%1(%2)").arg(function.name, places.join(QLatin1String(", ")));
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

// The open file's own first, then what its imports and its project bring.
QVector<Workspace::KnownName> Workspace::knownNames(const QString &path, int index) {
    QVector<KnownName> names;
    const std::shared_ptr<const ScriptSymbols> symbols = symbolsOf(path);
    for (const int number : namesKnownAt(*symbols, index))
        names.append({symbols->names.at(number), path, 0});
    addImported(path, &names);
    addGlobals(path, &names);
    return names;
}

// Of functions of one name the one comes first that the fewest imports lead to, as calls find it.
void Workspace::addImported(const QString &path, QVector<KnownName> *names) {
    QStringList queue{path};
    QSet<QString> seen{path};
    for (int next = 0; next < queue.size(); ++next) {
        const QString script = queue.at(next);
        const ScriptExports exports = store.exportsOf(script);
        for (const DeclaredFunction &function : exports.functions) {
            if (script != path)
                names->append({functionName(function), script, function.line});
        }
        for (const QString &import : exports.imports) {
            if (seen.contains(import))
                continue;
            seen.insert(import);
            queue.append(import);
        }
    }
}

// Of an open script those that it had before it was spoilt; of the others what is kept of them.
void Workspace::addGlobals(const QString &path, QVector<KnownName> *names) {
    for (const QString &script : listedScripts(path)) {
        if (script == path)
            continue;
        if (isOpen(script)) {
            const std::shared_ptr<const ScriptSymbols> symbols = symbolsOf(script);
            for (const ScriptName &name : symbols->names) {
                if (name.kind == ScriptName::Kind::Global)
                    names->append({name, script, 0});
            }
            continue;
        }
        const std::shared_ptr<const ScriptSummary> summary = store.summaryOf(script);
        for (int i = 0; i < summary->facts.globals.size(); ++i) {
            const ast::GlobalDeclaration &global = summary->facts.globals.at(i);
            ScriptName name;
            name.kind = ScriptName::Kind::Global;
            name.name = global.name;
            name.type = summary->globalTypes.value(i);
            names->append({name, script, global.line});
        }
    }
}

// A request may come before the first findings.
QStringList Workspace::listedScripts(const QString &scriptPath) {
    const QString project = projectOf(scriptPath);
    if (project.isEmpty())
        return {};
    if (!placeOf(project).isLookedInto)
        (void)findings();
    return placeOf(project).scripts;
}

// That of the project, or of the script itself where there is none: as seen from there a file is shown.
QDir Workspace::folderAround(const QString &path) {
    const QString project = projectOf(path);
    return QFileInfo(project.isEmpty() ? path : project).absoluteDir();
}

Proposal Workspace::proposalOf(const ScriptName &name, bool isOwn) {
    Proposal proposal{Proposal::Kind::Variable, name.name, name.name, {}, declarationOf(name), {}};
    if (name.kind == ScriptName::Kind::Function) {
        proposal.kind = isOwn ? Proposal::Kind::Function : Proposal::Kind::ImportedFunction;
        proposal.text =
            QStringLiteral("%1(%2)").arg(name.name, parameterNames(name).join(QLatin1String(", ")));
        if (!name.parameters.isEmpty())
            proposal.snippet = snippetOf(name);
    } else if (name.kind == ScriptName::Kind::Global) {
        proposal.kind = Proposal::Kind::Global;
    }
    return proposal;
}

NameRecord Workspace::recordOf(const KnownName &declared, const QString &path) {
    NameRecord record;
    record.signature = declarationOf(declared.name);
    for (const QString &parameter : declared.name.parameters)
        record.parameters.append({parameter, {}});
    const int line = declared.line > 0 ? declared.line
                     : isOpen(declared.file)
                         ? lineAt(texts.value(declared.file), declared.name.at.from)
                         : 0;
    record.place = folderAround(path).relativeFilePath(declared.file);
    if (line > 0)
        record.place += QStringLiteral(":%1").arg(line);
    return record;
}

// A function and a variable may have one name: a call means the first, all else the second.
std::optional<NameRecord> Workspace::recordOfName(const QString &path, int index,
                                                  const QString &name, bool isCall) {
    const QVector<KnownName> names = knownNames(path, index);
    const auto declared = std::find_if(names.begin(), names.end(), [&](const KnownName &it) {
        return it.name.name == name && (it.name.kind == ScriptName::Kind::Function) == isCall;
    });
    if (declared != names.end())
        return recordOf(*declared, path);
    return libraryFunctionRecord(name); // one without arguments is called by its bare name
}

QVector<Proposal> Workspace::proposedNames(const QString &path, int index) {
    const QDir folder = folderAround(path);
    QVector<Proposal> proposals;
    QString file; // the names of one come together
    QString shown;
    const QVector<KnownName> names = knownNames(path, index);
    proposals.reserve(names.size());
    for (const KnownName &declared : names) {
        Proposal proposal = proposalOf(declared.name, declared.file == path);
        if (declared.file != path && declared.file != file) {
            file = declared.file;
            shown = folder.relativeFilePath(file);
        }
        if (declared.file != path)
            proposal.description = shown;
        proposals.append(proposal);
    }
    return proposals;
}

Proposals Workspace::proposalsAt(const QString &path, int index) {
    const QString text = texts.value(path);
    if (text.size() > largestScript)
        return {index, index, {}};
    if (isProjectFile(path))
        return projectProposals(text, index);
    const ScriptCursor cursor = cursorIn(text, index);
    if (cursor.within == ScriptCursor::Within::ImportPath)
        return importProposals(cursor, importablePaths(path));
    if (cursor.within == ScriptCursor::Within::Code)
        return codeProposals(cursor, proposedNames(path, index));
    return {cursor.from, cursor.to, {}};
}

std::optional<NameRecord> Workspace::recordAt(const QString &path, int index) {
    const QString text = texts.value(path);
    if (text.size() > largestScript)
        return std::nullopt;
    if (isProjectFile(path))
        return keyRecord(text, index);
    const ScriptCursor cursor = cursorIn(text, index);
    const bool isName = cursor.within == ScriptCursor::Within::Code ||
                        cursor.within == ScriptCursor::Within::NewName;
    const QString name = text.mid(cursor.from, cursor.to - cursor.from);
    if (!isName || name.isEmpty())
        return std::nullopt;
    std::optional<NameRecord> record = recordOfName(path, index, name, cursor.isCalled);
    if (record) {
        record->from = cursor.from;
        record->to = cursor.to;
    }
    return record;
}

std::optional<CallRecord> Workspace::callAt(const QString &path, int index) {
    const QString text = texts.value(path);
    if (isProjectFile(path) || text.size() > largestScript)
        return std::nullopt;
    const ScriptCursor cursor = cursorIn(text, index);
    if (cursor.callee.isEmpty() || cursor.within == ScriptCursor::Within::Comment)
        return std::nullopt;
    const std::optional<NameRecord> function = recordOfName(path, index, cursor.callee, true);
    return function ? std::make_optional(CallRecord{*function, cursor.argument}) : std::nullopt;
}

} // namespace ctl
