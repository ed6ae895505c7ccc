#include "quorvanectl/analysis/workspace.h"

#include "quorvanectl/analysis/project_lookup.h"
#include "quorvanectl/analysis/project_view.h"
#include "quorvanectl/files/file_access.h"
#include "script/script_facts.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace ctl {

bool isProjectFile(const QString &path) {
    return path.endsWith(QLatin1String(".yslib"), Qt::CaseInsensitive);
}

void Workspace::open(const QString &path, const QString &text) {
    forgetPlaces();
    change(path, text);
}

void Workspace::change(const QString &path, const QString &text) {
    texts.insert(path, text);
    if (isProjectFile(path))
        projects.clear(); // it may list other scripts than before
    else
        store.open(path, text);
}

void Workspace::close(const QString &path) {
    forgetPlaces();
    texts.remove(path);
    store.close(path);
}

void Workspace::diskChanged(const QString &path) {
    forgetPlaces();
    store.fileChanged(path);
}

bool Workspace::isOpen(const QString &path) const {
    return texts.contains(path);
}

QString Workspace::textOf(const QString &path) const {
    return texts.value(path);
}

// What is where on the disk is looked up once, and again when an editor opens, saves or closes something
// or tells of a change: not at each edit.
void Workspace::forgetPlaces() {
    projects.clear();
    known.clear();
}

QString Workspace::projectOf(const QString &path) {
    // A text that has no file yet lies in no folder. What begins with a colon is for Qt a resource of the
    // program, and absolute.
    if (!QDir::isAbsolutePath(path) || path.startsWith(QLatin1Char(':')))
        return {};
    if (isProjectFile(path))
        return path;
    auto project = projects.constFind(path);
    if (project == projects.constEnd())
        project = projects.insert(path, projectAbove(path));
    return *project;
}

QVector<Finding> Workspace::ownFindings(const QString &path) {
    QVector<Finding> own;
    if (!store.isOpen(path))
        return own;
    const std::shared_ptr<const ScriptSummary> summary = store.summaryOf(path);
    for (const ast::ScriptDiagnostic &finding : summary->findings)
        own.append({rangeOf(finding), finding.severity == 0, finding.code, finding.message, {}});
    return own;
}

FindingsByFile Workspace::findings() {
    FindingsByFile all;
    QSet<QString> looked;
    QSet<QString> used;
    for (auto text = texts.cbegin(); text != texts.cend(); ++text) {
        const QVector<Finding> own = ownFindings(text.key());
        if (!own.isEmpty())
            all.insert(text.key(), own);
    }
    QStringList open = texts.keys();
    open.sort(); // what several projects say of one file comes in the same order each time
    for (const QString &path : open) {
        const QString project = projectOf(path);
        if (project.isEmpty() || looked.contains(project))
            continue;
        looked.insert(project);
        addProject(project, &all, &used);
    }
    store.keepOnly(used);
    return all;
}

// The reference holds until something opens, closes or changes on the disk.
Workspace::KnownProject &Workspace::placeOf(const QString &projectPath) {
    auto place = known.find(projectPath);
    if (place == known.constEnd())
        place = known.insert(projectPath, {scriptsInFolder(QFileInfo(projectPath).absolutePath())});
    return *place;
}

QString Workspace::projectText(const QString &path, QString *error) {
    const auto open = texts.constFind(path);
    return open != texts.constEnd() ? *open : readText(path, error);
}

void Workspace::addProject(const QString &path, FindingsByFile *all, QSet<QString> *used) {
    QString error;
    const QString text = projectText(path, &error);
    if (text.isNull() && !error.isEmpty()) {
        (*all)[path].append({onLine(1, 1, 1), true, {}, error, {}});
        return;
    }
    readAhead(path, text);
    KnownProject &place = placeOf(path);
    const ProjectView view = viewOf({path, text, place.scriptsBelow}, store);
    for (auto file = view.findings.cbegin(); file != view.findings.cend(); ++file)
        (*all)[file.key()].append(file.value());
    for (const QString &script : view.scripts)
        used->insert(script);
    place.scripts = view.scripts;
    place.isLookedInto = true;
}

// What is read here is kept, so that the look finds it. By one name each, as it will be asked for.
void Workspace::readAhead(const QString &path, const QString &text) {
    if (!reading || readBefore.contains(path))
        return;
    readBefore.insert(path);
    const QJsonArray scripts =
        QJsonDocument::fromJson(text.toUtf8()).object().value(QLatin1String("scripts")).toArray();
    const std::vector<ast::ListedScript> listed =
        ast::listScripts(path, scripts, [](const QString &) { return ast::ScriptFacts(); });
    const int all = int(listed.size());
    for (int i = 0; i < all; ++i) {
        reading(path, i, all);
        (void)store.summaryOf(QDir::cleanPath(listed[std::size_t(i)].filePath));
    }
    if (all > 0)
        reading(path, all, all);
}

} // namespace ctl
