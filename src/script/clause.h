// A clause: a stretch of a script's tokens that is read as a text of its own.
//
// A clause's text is its tokens joined by single blanks, and the rules of the language are told in
// terms of a second lexer that runs over that text. Tokens that came from a lexer come out of the
// second one unchanged but for their positions, so the clause is read from the tokens at hand and
// its positions are counted along, without joining and lexing it again.
#pragma once

#include "script/token.h"

#include <QString>

#include <vector>

namespace ast {

// A place in a text, counted as the lexer counts.
struct TextPosition {
    qint32 line = 1;
    qint32 column = 1;

    // Moves over a token's text and the blank behind it.
    void stepOver(const Token &token);
};

// The tokens [first, last) of a vector that outlives the clause.
struct Clause {
    const Token *first;
    const Token *last;
    // Whether a second lexing gives these very tokens again. Then no Newline stands at either end
    // of the clause, since the text is trimmed.
    bool lexesAlike;
};

// `fromLexer` tells that the tokens came out of one run of a lexer.
[[nodiscard]] Clause makeClause(const Token *first, const Token *last, bool fromLexer);

// The token texts joined by single blanks, trimmed.
[[nodiscard]] QString joinedText(const Clause &clause);

// The tokens that lexing the clause's text and `tail` behind it gives; empty on a lexical error,
// with the message in `error`. `tail` is empty or ";".
[[nodiscard]] std::vector<Token> lexAgain(const Clause &clause, const QString &tail,
                                          QString *error = nullptr);

} // namespace ast
