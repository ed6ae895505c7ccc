// From a name to where it is declared and used, in one script and in all of its project.
#include "quorvanectl/analysis/workspace.h"

#include "quorvanectl/files/file_access.h"
#include "quorvanectl/files/json_places.h"
#include "update/files/project_path.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

namespace ctl {
namespace {

// The globals that a project's file says its tasks write: where such a text stands, within its quotes.
QVector<NamePlace> writersOf(const QString &projectPath, const QString &text, const QString &name) {
    const QJsonArray tasks = QJsonDocument::fromJson(text.toUtf8())
                                 .object()
                                 .value(QLatin1String("tasks"))
                                 .toObject()
                                 .value(QLatin1String("subs"))
                                 .toArray();
    QStringList paths;
    for (int task = 0; task < tasks.size(); ++task) {
        const QJsonArray names =
            tasks.at(task).toObject().value(QLatin1String("writesGlobals")).toArray();
        for (int number = 0; number < names.size(); ++number) {
            if (names.at(number) == name)
                paths.append(
                    QStringLiteral("tasks.subs[%1].writesGlobals[%2]").arg(task).arg(number));
        }
    }
    QVector<NamePlace> places;
    const QVector<TextPlace> found =
        paths.isEmpty() ? QVector<TextPlace>() : placesInJson(text, paths);
    for (const TextPlace &from : found) {
        const TextRange range = valueRange(text, from);
        const int start = indexOf(text, range.from) + 1;
        const int end = start + range.to.column - range.from.column - 2;
        places.append({projectPath, {start, end}, false, false});
    }
    return places;
}

} // namespace

QStringList Workspace::scriptsAround(const QString &path) {
    const QString project = projectOf(path);
    QStringList scripts;
    QString error;
    if (!project.isEmpty()) {
        const QDir folder(QFileInfo(project).absolutePath());
        const QJsonArray listed = QJsonDocument::fromJson(projectText(project, &error).toUtf8())
                                      .object()
                                      .value(QLatin1String("scripts"))
                                      .toArray();
        for (const QJsonValue &entry : listed) {
            const QString script = entry.toObject().value(QLatin1String("path")).toString();
            if (!script.isEmpty())
                scripts.append(QDir::cleanPath(locatedPath(folder, script)));
        }
    }
    QStringList open = texts.keys();
    open.sort();
    for (const QString &text : qAsConst(open)) {
        if (!isProjectFile(text) &&
            (text == path || (!project.isEmpty() && projectOf(text) == project)))
            scripts.append(text);
    }
    scripts.removeDuplicates();
    // What they import is read with them, though nobody lists it.
    QSet<QString> seen(scripts.begin(), scripts.end());
    for (int next = 0; next < scripts.size(); ++next) {
        const auto summary = store.summaryOf(scripts.at(next));
        for (const QString &import : summary->facts.imports) {
            if (seen.contains(import) || !isThere(import))
                continue;
            seen.insert(import);
            scripts.append(import);
        }
    }
    return scripts;
}

bool Workspace::isThere(const QString &path) const {
    return isOpen(path) || QFileInfo(path).isFile();
}

QString Workspace::textNow(const QString &path) {
    QString error;
    return isOpen(path) ? texts.value(path) : readText(path, &error);
}

QVector<NamePlace> Workspace::definitionsAt(const QString &path, int index) {
    if (isProjectFile(path))
        return {};
    ProjectNames names(store, scriptsAround(path));
    const std::optional<NameMeaning> meaning = names.meaningAt(path, index);
    if (!meaning)
        return {};
    if (meaning->kind == NameMeaning::Kind::ImportedFile && !isThere(meaning->file))
        return {};
    return names.definitionsOf(*meaning);
}

QVector<NamePlace> Workspace::referencesAt(const QString &path, int index) {
    if (isProjectFile(path))
        return {};
    ProjectNames names(store, scriptsAround(path));
    const std::optional<NameMeaning> meaning = names.meaningAt(path, index);
    if (!meaning)
        return {};
    QVector<NamePlace> places = names.placesOf(*meaning);
    const QString project = projectOf(path);
    QString error;
    if (meaning->kind == NameMeaning::Kind::Global && !project.isEmpty())
        places += writersOf(project, projectText(project, &error), meaning->name);
    return places;
}

QVector<NamePlace> Workspace::highlightsAt(const QString &path, int index) {
    if (isProjectFile(path))
        return {};
    ProjectNames names(store, {path});
    const std::optional<NameMeaning> meaning = names.meaningAt(path, index);
    return meaning ? names.placesIn(path, *meaning) : QVector<NamePlace>();
}

bool Workspace::isLookedInto(const QString &path) const {
    return !isProjectFile(path) && textOf(path).size() <= largestScript;
}

QVector<ScriptWord> Workspace::wordsOf(const QString &path) const {
    return isLookedInto(path) ? wordsIn(textOf(path)) : QVector<ScriptWord>();
}

QVector<Fold> Workspace::foldsOf(const QString &path) const {
    return isLookedInto(path) ? foldsIn(textOf(path)) : QVector<Fold>();
}

std::optional<NameMeaning> Workspace::globalAt(const QString &path, int index) {
    if (isProjectFile(path))
        return std::nullopt;
    const std::optional<NameMeaning> meaning = ProjectNames(store, {path}).meaningAt(path, index);
    return meaning && meaning->kind == NameMeaning::Kind::Global ? meaning : std::nullopt;
}

} // namespace ctl
