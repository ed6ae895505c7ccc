// A clause: a stretch of a script's tokens that is read as a text of its own.
//
// A clause's text is its tokens joined by single blanks and trimmed, and the rules of the language
// are told in terms of a second lexer that runs over that text. Tokens that came from a lexer come
// out of the second one unchanged but for their positions and the blanks that the text loses at its
// ends. So nothing is joined and lexed again: the tokens at hand become those of the text.
#pragma once

#include "script/recent_texts.h"
#include "script/token.h"

#include <QString>

#include <vector>

namespace ast {

// The tokens [first, last) of a vector that outlives the clause, as lexing its text gives them, but
// without Eof.
struct Clause {
    Token *first;
    Token *last;
};

// Makes a clause of tokens that one run of a lexer gave, Eof not among them. The tokens themselves
// change: they take the positions that they have in the clause's text.
[[nodiscard]] Clause makeClause(Token *first, Token *last);

// The clause less the line feeds at its ends, which its text loses.
[[nodiscard]] Clause withoutNewlines(Clause clause);

// The token texts joined by single blanks.
[[nodiscard]] QString joinedText(const Clause &clause, RecentTexts &texts);

// The tokens that lexing the clause's text and `tail` behind it gives. `tail` is empty or ";".
[[nodiscard]] std::vector<Token> tokensOf(const Clause &clause, const QString &tail = QString());

} // namespace ast
