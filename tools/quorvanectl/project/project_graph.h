// How the scripts of a project hang together: who imports whom, which globals are defined where, and
// which imports run in a circle.
#pragma once

#include "script/script_facts.h"

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVector>

#include <vector>

namespace ctl {

struct GraphScript {
    QString path; // seen from the project's folder
    QString role; // as registered; empty for one that is only imported
    // What is to be said of it: "not registered", "missing", "has a syntax error".
    QStringList remarks;
    QVector<ast::GlobalDeclaration> globals;
    QVector<int> imports; // indices of scripts, each once, in the order of the script
};

struct GlobalPlace {
    int script;
    qint32 line;
};

struct ProjectGraph {
    QString projectPath; // as given
    std::vector<GraphScript>
        scripts; // the registered ones in their order, then those only imported
    QHash<QString, QVector<GlobalPlace>> definitions; // of each global, in the order of the scripts
    // Of each script: the circle of imports that it is in, counted from 0; -1 if it is in none.
    QVector<int> circles;

    // Whether this import closes or goes on in a circle.
    [[nodiscard]] bool isInCircle(int from, int to) const;
    // "b.ys:3" for each definition of the global in another script.
    [[nodiscard]] QStringList otherDefinitions(int script, const QString &global) const;
    [[nodiscard]] int importCount() const;
    [[nodiscard]] int globalCount() const;
    [[nodiscard]] int circleCount() const;
};

// Reads the project and its registered scripts; what a script only imports is named and not read, as the
// launcher does. A script with a syntax error shows neither imports nor globals. False, with a line in
// `error`, if the project file or a script cannot be read. The function library must be loaded.
[[nodiscard]] bool readGraph(const QString &projectPath, ProjectGraph *graph, QString *error);

} // namespace ctl
