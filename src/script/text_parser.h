// Lexes and parses a script at once, with the outcome of a Lexer and a Parser one after the other: the
// tokens are read as the parser comes to them and dropped behind it, where a vector of all would take half
// as much memory as the tree.
#pragma once

#include "script/parser.h"

namespace ast {

struct ParsedText {
    // Null after a lexical error, and where the parser gives none.
    std::shared_ptr<Program> program;
    // Empty, or the message on the first unknown character, wherever in the text it stands.
    QString lexicalError;
    // What the parser says, beside a program too; empty after a lexical error.
    QString syntaxError;
};

// Any thread; FunctionLibrary must have been loaded.
[[nodiscard]] ParsedText parseText(const QString &text, Detail detail = Detail::Whole);

} // namespace ast
