// The tokens of a script by number, and where each stands in the text.
#pragma once

#include "quorvanectl/analysis/script_symbols.h"
#include "script/token.h"

#include <QString>

#include <vector>

namespace ctl {

class TokenPlaces {
public:
    explicit TokenPlaces(const QString &text);

    // A character that the language does not know is passed over, for the first hundred of them. Eof is
    // the last one.
    [[nodiscard]] int count() const { return int(tokens.size()); }
    // Behind the end it is Eof, or before the start.
    [[nodiscard]] const ast::Token &at(int number) const;
    [[nodiscard]] qint32 kindOf(int number) const { return at(number).kind; }
    [[nodiscard]] Stretch stretchOf(int number) const;
    // The first token at this place or behind it, which count as tokens do.
    [[nodiscard]] int find(int line, int column) const;

    // Where the comments stand, in their order, without what ends their lines. `text` is the same again.
    [[nodiscard]] QVector<Stretch> commentsIn(const QString &text) const;

    // The brace that closes this one; the last token before Eof if none does.
    [[nodiscard]] int closingBrace(int number) const;
    // The last token of the body that begins behind this token: braces, or one simple statement.
    [[nodiscard]] int endOfBody(int number) const;
    // The parenthesis that closes this one, or the last token before Eof.
    [[nodiscard]] int closingParenthesis(int number) const;

private:
    void read(const QString &text);
    void matchBraces();
    [[nodiscard]] int lastToken() const { return count() - 2; }

    std::vector<ast::Token> tokens;
    std::vector<int> lines;  // the index at which each line begins
    std::vector<int> braces; // by the number of each '{' the number of its '}', else -1
};

} // namespace ctl
