// Turns the text of a script, or of one clause of it, into tokens.
#pragma once

#include "script/token.h"

#include <QString>

#include <vector>

namespace ast {

// A lexer is used once. Any thread; FunctionLibrary must have been loaded.
//
// Every token's text is its source spelling, and lexing the tokens' texts joined by blanks gives
// the same kinds again. Comments ("//" to the end of the line) give no token; line feeds do, since
// they end statements.
class Lexer {
public:
    explicit Lexer(const QString &text);

    // The tokens, the last one Eof; `error` is left alone. On an unknown character an empty vector
    // (no Eof either), and "Unknown character '%1' at %2:%3" in `error`. A string or a character
    // literal that is still open at the end of the text is no error.
    [[nodiscard]] std::vector<Token> tokenize(QString *error = nullptr);

    QString source;
    // Index of the next UTF-16 unit, and its position.
    qint32 pos = 0;
    qint32 line = 1;
    qint32 column = 1;
};

} // namespace ast
