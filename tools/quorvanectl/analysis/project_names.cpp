#include "quorvanectl/analysis/project_names.h"

#include <algorithm>

namespace ctl {
namespace {

using Meant = NameMeaning::Kind;

bool declaresFunction(const ScriptExports &exports, const QString &name) {
    return std::any_of(exports.functions.begin(), exports.functions.end(),
                       [&](const DeclaredFunction &it) { return it.name == name; });
}

NamePlace placeOf(const QString &file, const NameUse &use) {
    return {file, use.at, use.declares, use.writes};
}

// Those of one text that may touch a place: the first that does not end before it.
template<typename Placed>
const Placed *placedAt(const QVector<Placed> &list, int index) {
    const auto found = std::lower_bound(list.begin(), list.end(), index,
                                        [](const Placed &it, int at) { return it.at.to < at; });
    return found != list.end() && touches(found->at, index) ? &*found : nullptr;
}

} // namespace

ProjectNames::ProjectNames(ScriptStore &scriptStore, const QStringList &scriptPaths)
    : store(scriptStore)
    , scripts(scriptPaths) {}

std::optional<NameMeaning> ProjectNames::meaningAt(const QString &path, int index) {
    const auto symbols = store.symbolsOf(path);
    const NamedImport *const import = placedAt(symbols->imports, index);
    if (import != nullptr)
        return NameMeaning{Meant::ImportedFile, import->written, import->path, -1, import->at};
    const NameUse *const use = placedAt(symbols->uses, index);
    if (use == nullptr)
        return std::nullopt;
    return meaningOf(path, *use);
}

NameMeaning ProjectNames::meaningOf(const QString &path, const NameUse &use) {
    const auto symbols = store.symbolsOf(path);
    if (use.meaning < 0 && !use.isCall)
        return {Meant::Global, use.name, {}, -1, use.at};
    if (use.meaning < 0) {
        const QString file = scriptOfFunction(path, use.name);
        return {file.isNull() ? Meant::NoFunction : Meant::Function, use.name, file, -1, use.at};
    }
    switch (symbols->names.at(use.meaning).kind) {
    case ScriptName::Kind::Function:
        return {Meant::Function, use.name, path, -1, use.at};
    case ScriptName::Kind::Global:
        return {Meant::Global, use.name, {}, -1, use.at};
    default:
        return {Meant::Local, use.name, path, use.meaning, use.at};
    }
}

QString ProjectNames::scriptOfFunction(const QString &path, const QString &name) {
    QSet<QString> &known = without[name];
    if (known.contains(path))
        return {};
    QStringList queue{path};
    QSet<QString> seen{path};
    for (int next = 0; next < queue.size(); ++next) {
        const QString script = queue.at(next);
        const ScriptExports exports = store.exportsOf(script);
        if (declaresFunction(exports, name))
            return script;
        for (const QString &import : exports.imports) {
            if (seen.contains(import) || known.contains(import))
                continue;
            seen.insert(import);
            queue.append(import);
        }
    }
    known += seen;
    return {};
}

QVector<NamePlace> ProjectNames::definitionsOf(const NameMeaning &meaning) {
    if (meaning.kind == Meant::ImportedFile)
        return meaning.file.isEmpty() ? QVector<NamePlace>()
                                      : QVector<NamePlace>{{meaning.file, {0, 0}, true, false}};
    if (meaning.kind == Meant::NoFunction)
        return {};
    QVector<NamePlace> places =
        meaning.file.isEmpty() ? placesOf(meaning) : placesIn(meaning.file, meaning);
    places.erase(std::remove_if(places.begin(), places.end(),
                                [](const NamePlace &place) { return !place.declares; }),
                 places.end());
    return places;
}

QVector<NamePlace> ProjectNames::placesIn(const QString &path, const NameMeaning &meaning) {
    QVector<NamePlace> places;
    const auto symbols = store.symbolsOf(path);
    if (meaning.kind == Meant::ImportedFile) {
        for (const NamedImport &import : symbols->imports) {
            if (!import.path.isEmpty() && import.path == meaning.file)
                places.append({path, import.at, false, false});
        }
        return places;
    }
    // What a call that the script does not declare means there, is the same for all of a name.
    std::optional<bool> isImported;
    for (const NameUse &use : symbols->uses) {
        if (use.name != meaning.name)
            continue;
        const bool isElsewhere = use.isCall && use.meaning < 0;
        if (isElsewhere && !isImported)
            isImported = isMeant(path, use, meaning);
        if (isElsewhere ? *isImported : isMeant(path, use, meaning))
            places.append(placeOf(path, use));
    }
    return places;
}

bool ProjectNames::isMeant(const QString &path, const NameUse &use, const NameMeaning &meaning) {
    const NameMeaning its = meaningOf(path, use);
    return its.kind == meaning.kind && its.file == meaning.file && its.number == meaning.number;
}

QVector<NamePlace> ProjectNames::placesOf(const NameMeaning &meaning) {
    if (meaning.kind == Meant::Local)
        return placesIn(meaning.file, meaning);
    QStringList all = scripts;
    // What is imported need not be a script of the project.
    if (meaning.kind == Meant::Function && !all.contains(meaning.file))
        all.append(meaning.file);
    QVector<NamePlace> places;
    for (const QString &path : qAsConst(all))
        places += placesIn(path, meaning);
    return places;
}

} // namespace ctl
