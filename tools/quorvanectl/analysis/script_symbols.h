// The names of a script: what it declares, where each name is used, and what it imports.
//
// A declared variable is known from its declaration to the end of the braces around it, a parameter in
// its function, that of a "for" in its loop; one that no braces hold, and a function, in the whole script.
// An inner one hides an outer one of the same name. What a call names is a function, what else a name
// stands for is a variable. The names behind a dot are not looked into.
#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

namespace ast {
struct Program;
}

namespace ctl {

// A stretch of a text by the indices of its UTF-16 units; `to` lies behind it.
struct Stretch {
    int from = 0;
    int to = 0;
};

[[nodiscard]] inline bool operator==(const Stretch &one, const Stretch &other) {
    return one.from == other.from && one.to == other.to;
}

// Whether a place is in the stretch or at either end of it, as a cursor is.
[[nodiscard]] inline bool touches(const Stretch &stretch, int index) {
    return stretch.from <= index && index <= stretch.to;
}

struct ScriptName {
    enum class Kind {
        Function,
        Parameter,
        Local,
        Variable, // of the whole script
        Global,   // of all scripts of the project
    };
    Kind kind;
    QString name;
    QString type;           // of a variable
    QStringList parameters; // of a function, such as "int image"
    Stretch at;             // the name, where it is declared
    Stretch visible;        // where it is known
    Stretch whole; // of a function from its keyword to its last brace, of a variable the name
};

struct NameUse {
    QString name;
    Stretch at;
    bool isCall = false;
    bool declares = false;
    bool writes = false; // declares, assigns or counts; an element of an array counts as read
    // Its place in ScriptSymbols::names; -1 for what this script does not declare. What is declared
    // twice is the first of both.
    int meaning = -1;
};

struct NamedImport {
    QString path;    // cleaned and absolute; empty for a rooted one, which is not followed
    QString written; // with its quotes
    Stretch at;
};

// Each list in the order of the text.
struct ScriptSymbols {
    QVector<ScriptName> names;
    QVector<NameUse> uses; // declarations among them
    QVector<NamedImport> imports;
};

// Of a text and the tree that was made of it. Imports count from the folder of `filePath`. Takes no
// stack however deep the tree is.
[[nodiscard]] ScriptSymbols symbolsOf(const QString &filePath, const QString &text,
                                      const ast::Program &program);

// Of a text alone: nothing of one that does not parse, is larger than a script may be, or for which memory
// does not suffice.
[[nodiscard]] ScriptSymbols symbolsIn(const QString &filePath, const QString &text);

// The names that are known at a place, by their places in `names`: the innermost and latest first, and
// of equal names the one that counts there. A function and a variable may have the same one.
[[nodiscard]] QVector<int> namesKnownAt(const ScriptSymbols &symbols, int index);

} // namespace ctl
