// What the names in the scripts of a project stand for, and where else they stand.
//
// A global is known to all of them. A function is known to its own script and to those that import it,
// directly or by way of others; of several of one name the one that the fewest imports lead to counts.
// Places come script by script in the order of the list, each script's in the order of its text.
#pragma once

#include "quorvanectl/analysis/script_store.h"

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

namespace ctl {

struct NamePlace {
    QString file;
    Stretch at;
    bool declares = false;
    bool writes = false;
};

struct NameMeaning {
    enum class Kind {
        Local,    // of one script: `file`, and its place `number` among the names of it
        Global,   // declared or not
        Function, // of the script `file`
        NoFunction, // called, and declared in no script that is known there: one of the function library
        ImportedFile, // `file`; empty for one that is not followed
    };
    Kind kind;
    QString name;
    QString file;
    int number = -1;
    Stretch at; // the name itself, where it was asked about
};

class ProjectNames {
public:
    // The paths are absolute and cleaned. One look: scripts are asked of the store as they count now.
    ProjectNames(ScriptStore &scriptStore, const QStringList &scriptPaths);

    // Of what stands at a place or ends there; nothing if it is no name.
    [[nodiscard]] std::optional<NameMeaning> meaningAt(const QString &path, int index);
    // Of an imported file, whether or not it is there, its start.
    [[nodiscard]] QVector<NamePlace> definitionsOf(const NameMeaning &meaning);
    // Of one script, and of all: definitions among them.
    [[nodiscard]] QVector<NamePlace> placesIn(const QString &path, const NameMeaning &meaning);
    [[nodiscard]] QVector<NamePlace> placesOf(const NameMeaning &meaning);

private:
    [[nodiscard]] NameMeaning meaningOf(const QString &path, const NameUse &use);
    // The script that declares what a call in this one means; null if none does.
    [[nodiscard]] QString scriptOfFunction(const QString &path, const QString &name);
    [[nodiscard]] bool isMeant(const QString &path, const NameUse &use, const NameMeaning &meaning);

    ScriptStore &store;
    const QStringList scripts;
    // By the name of a function: scripts from which no import leads to one that declares it.
    QHash<QString, QSet<QString>> without;
};

} // namespace ctl
