// What an editor may offer at a place of a script or of a project's file.
#pragma once

#include "quorvanectl/analysis/json_cursor.h"
#include "quorvanectl/analysis/script_cursor.h"

#include <QString>
#include <QStringList>
#include <QVector>

namespace ctl {

struct Proposal {
    // The order in which they are offered.
    enum class Kind {
        Choice, // of an argument that has a list of them
        Variable,
        Function,
        ImportedFunction,
        Global,
        LibraryFunction,
        Keyword,
        Word, // of a list of the function library, without a meaning to the language
        Script,
        Key,
        Role,
    };
    Kind kind;
    QString label;
    QString text;    // what is put in
    QString snippet; // the same with places to fill in; empty if there are none
    QString detail;
    QString description;
};

struct Proposals {
    // What they take the place of, as indices of the text; on one line.
    int from = 0;
    int to = 0;
    QVector<Proposal> list;
};

// In code: the names that are told, and what the function library has. A name is offered once.
[[nodiscard]] Proposals codeProposals(const ScriptCursor &cursor, const QVector<Proposal> &names);

// In the quotes of an import: paths as the script writes them.
[[nodiscard]] Proposals importProposals(const ScriptCursor &cursor, const QStringList &paths);

// In a project's file: keys that are not there yet, and values of which there is a list.
[[nodiscard]] Proposals projectProposals(const QString &json, int index);

} // namespace ctl
