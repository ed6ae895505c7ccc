// What the words and signs of a script are, and which stretches of it belong together: told by its tokens
// alone, so that a text in which something is wrong has them too.
#pragma once

#include "quorvanectl/analysis/script_symbols.h"

#include <QString>
#include <QVector>

namespace ctl {

struct ScriptWord {
    // The order is that of the names that editors are told.
    enum class Kind {
        Keyword,
        Type,
        Function,
        Variable,
        Property,
        Number,
        Text,
        Operator,
        Comment
    };
    Kind kind;
    Stretch at; // of a text it may go over several lines
};

// In the order of the text. A name before a parenthesis is a function, one behind a dot a property.
// Brackets and what divides have none.
[[nodiscard]] QVector<ScriptWord> wordsIn(const QString &text);

struct Fold {
    enum class Kind { Braces, Comments, Imports };
    Kind kind;
    Stretch at; // of braces from the one to the other, both among it
};

// By their starts: braces, comments that stand in lines of their own one below the other, and imports that
// do. Those of one line are among them.
[[nodiscard]] QVector<Fold> foldsIn(const QString &text);

} // namespace ctl
