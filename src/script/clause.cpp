#include "script/clause.h"

#include <algorithm>
#include <limits>
#include <new>

namespace ast {
namespace {

bool mayHoldLineFeed(qint32 kind) {
    return kind == Newline || kind == StringLiteral || kind == CharLiteral;
}

// A place in a text, counted as the lexer counts.
struct TextPosition {
    qint32 line = 1;
    qint32 column = 1;

    // Moves over a token's text and the blank behind it.
    void stepOver(const Token &token) {
        const QString &text = token.text;
        const int lastFeed = mayHoldLineFeed(token.kind) ? text.lastIndexOf(QLatin1Char('\n')) : -1;
        if (lastFeed < 0) {
            column += text.size() + 1;
            return;
        }
        line += text.count(QLatin1Char('\n'));
        column = text.size() - lastFeed + 1;
    }
};

} // namespace

Clause withoutNewlines(Clause clause) {
    while (clause.first != clause.last && clause.first->kind == Newline)
        ++clause.first;
    while (clause.first != clause.last && (clause.last - 1)->kind == Newline)
        --clause.last;
    return clause;
}

Clause makeClause(Token *begin, Token *end) {
    const auto [first, last] = withoutNewlines({begin, end});
    // An open literal at the end of the file may end in blanks, which the trimmed text loses. No other
    // token ends in one.
    if (first != last && last[-1].text.back().isSpace())
        last[-1].text = last[-1].text.trimmed();
    TextPosition position;
    for (Token *token = first; token != last; ++token) {
        token->line = position.line;
        token->column = position.column;
        position.stepOver(*token);
    }
    return {first, last};
}

QString joinedText(const Clause &clause) {
    if (clause.last - clause.first == 1)
        return clause.first->text;
    qint64 length = 0;
    for (const Token *token = clause.first; token != clause.last; ++token)
        length += token->text.size() + 1;
    if (length == 0)
        return QString();
    if (length > std::numeric_limits<int>::max())
        throw std::bad_alloc(); // as where memory ends
    QString text(int(length) - 1, Qt::Uninitialized);
    QChar *next = text.data();
    for (const Token *token = clause.first; token != clause.last; ++token) {
        if (token != clause.first)
            *next++ = QLatin1Char(' ');
        next = std::copy(token->text.cbegin(), token->text.cend(), next);
    }
    return text;
}

std::vector<Token> tokensOf(const Clause &clause, const QString &tail) {
    std::vector<Token> tokens(clause.first, clause.last);
    TextPosition end;
    if (!tokens.empty()) {
        end = {tokens.back().line, tokens.back().column};
        end.stepOver(tokens.back());
        --end.column; // no blank stands behind the last token
    }
    if (!tail.isEmpty())
        tokens.push_back({Semicolon, tail, end.line, end.column++});
    tokens.push_back({Eof, QString(), end.line, end.column});
    return tokens;
}

} // namespace ast
