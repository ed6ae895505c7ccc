// Everything that is open in an editor, and the projects around it.
//
// Texts come as the editor has them; what follows from them is asked with findings(). Nothing is
// written. One thread.
#pragma once

#include "quorvanectl/analysis/finding.h"
#include "quorvanectl/analysis/name_record.h"
#include "quorvanectl/analysis/project_names.h"
#include "quorvanectl/analysis/proposals.h"
#include "quorvanectl/analysis/script_store.h"
#include "quorvanectl/analysis/script_words.h"

#include <QDir>
#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace ctl {

inline constexpr char renamesGlobalsAlone[] = "only a global can be renamed";

// What takes the place of a global's name: each of the places, or none with the reason.
struct GlobalRename {
    QString refusal;
    QVector<NamePlace> places;
};

class Workspace {
public:
    // Told while the scripts of a project are read for the first time, if it is set: before each of them,
    // and once they all are.
    using Reading = std::function<void(const QString &projectPath, int read, int all)>;
    Reading reading;

    // A text as it is now, of a file that may or may not be there. Its path is absolute, or an
    // address of what has no file yet; a name with the
    // suffix ".yslib" is a project's file, any other a script.
    void open(const QString &path, const QString &text);
    void change(const QString &path, const QString &text);
    void close(const QString &path);
    // Something may have changed on the disk: this file, or a folder.
    void diskChanged(const QString &path);

    [[nodiscard]] bool isOpen(const QString &path) const;
    // The text that is open; null if none is.
    [[nodiscard]] QString textOf(const QString &path) const;

    // Of one open script: what it says by itself, the first thing that one wants to see.
    [[nodiscard]] QVector<Finding> ownFindings(const QString &path);
    // Of every file that shows one: the open scripts' own findings, then those of the projects that the
    // open files belong to.
    [[nodiscard]] FindingsByFile findings();
    // The names of a script, open or not.
    [[nodiscard]] std::shared_ptr<const ScriptSymbols> symbolsOf(const QString &path) {
        return store.symbolsOf(path);
    }
    // The project that a script belongs to, or the project's file itself; empty if there is none.
    [[nodiscard]] QString projectOf(const QString &path);
    // workspace_names.cpp: of an open text, at an index of it. What may be put in there; what the name
    // there stands for, and the function whose call is open there, if either is known.
    [[nodiscard]] Proposals proposalsAt(const QString &path, int index);
    [[nodiscard]] std::optional<NameRecord> recordAt(const QString &path, int index);
    [[nodiscard]] std::optional<CallRecord> callAt(const QString &path, int index);
    // workspace_navigation.cpp: what stands at an index of a script. Where it is declared; where it stands
    // in all scripts of the project, a global in the project's file too; where in this script alone.
    [[nodiscard]] QVector<NamePlace> definitionsAt(const QString &path, int index);
    [[nodiscard]] QVector<NamePlace> referencesAt(const QString &path, int index);
    [[nodiscard]] QVector<NamePlace> highlightsAt(const QString &path, int index);
    // The global that stands there, if one does; and where another name is to be put in its place, in
    // workspace_rename.cpp.
    [[nodiscard]] std::optional<NameMeaning> globalAt(const QString &path, int index);
    [[nodiscard]] GlobalRename renameAt(const QString &path, int index, const QString &newName);
    // The words of an open script, and what of it an editor may fold; nothing of a project's file.
    [[nodiscard]] QVector<ScriptWord> wordsOf(const QString &path) const;
    [[nodiscard]] QVector<Fold> foldsOf(const QString &path) const;
    // How many scripts were looked into so far.
    [[nodiscard]] int summaryCount() const { return store.summaryCount(); }

private:
    struct KnownProject {
        QStringList scriptsBelow;
        // The listed ones, when it was last looked into.
        QStringList scripts = {};
        bool isLookedInto = false;
    };
    // A name that counts at a place of a script, and where it is declared.
    struct KnownName {
        ScriptName name;
        QString file;
        int line; // 0 where it has to be looked for
    };

    QString projectText(const QString &path, QString *error);
    void addProject(const QString &path, FindingsByFile *all, QSet<QString> *used);
    KnownProject &placeOf(const QString &projectPath);
    void readAhead(const QString &path, const QString &text);
    void forgetPlaces();
    QStringList importablePaths(const QString &scriptPath);
    QVector<KnownName> knownNames(const QString &path, int index);
    void addImported(const QString &path, QVector<KnownName> *names);
    void addGlobals(const QString &path, QVector<KnownName> *names);
    QStringList listedScripts(const QString &scriptPath);
    QVector<Proposal> proposedNames(const QString &path, int index);
    static Proposal proposalOf(const ScriptName &name, bool isOwn);
    NameRecord recordOf(const KnownName &declared, const QString &path);
    QDir folderAround(const QString &path);
    std::optional<NameRecord> recordOfName(const QString &path, int index, const QString &name,
                                           bool isCall);
    QStringList scriptsAround(const QString &path);
    bool isLookedInto(const QString &path) const;
    bool isThere(const QString &path) const;
    QString textNow(const QString &path);
    QString faultOfProject(const QString &project);
    QString faultOfScript(const QString &script, const QStringList &names);

    ScriptStore store;
    QHash<QString, QString> texts;      // of the open files
    QHash<QString, QString> projects;   // of a script: its project
    QHash<QString, KnownProject> known; // by the path of the project's file
    QSet<QString> readBefore;           // projects
};

[[nodiscard]] bool isProjectFile(const QString &path);

} // namespace ctl
