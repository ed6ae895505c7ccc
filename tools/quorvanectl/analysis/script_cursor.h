// What stands around a place of a script, by its signs alone: it is asked for while one types, when no
// tree of the text can be had.
#pragma once

#include <QString>

namespace ctl {

struct ScriptCursor {
    enum class Within {
        Code,
        Number,
        Member,  // the word behind a dot
        NewName, // the word behind a type or "function"
        Comment,
        Text,       // a literal in quotes of either kind
        ImportPath, // the text behind "import"
    };
    Within within = Within::Code;
    // Indices into the script, of the word around the place or of what stands in the quotes around it; both
    // are the place itself where there is neither. Open quotes reach to the end of the line.
    int from = 0;
    int to = 0;
    bool isCalled = false; // a parenthesis opens behind the word
    // The function whose call is open around the place, and the number of the argument, from 0. Empty if
    // there is none.
    QString callee;
    int argument = 0;
};

// `index` counts UTF-16 units. The function library must be loaded.
[[nodiscard]] ScriptCursor cursorIn(const QString &script, int index);

} // namespace ctl
