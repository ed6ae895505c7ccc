#include "script/clause.h"

#include <QVarLengthArray>

#include <utility>

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
    // Looked at as const: else the token would leave the string that it shares for a copy.
    if (first != last && std::as_const(last[-1].text).back().isSpace())
        last[-1].text = last[-1].text.trimmed();
    TextPosition position;
    for (Token *token = first; token != last; ++token) {
        token->line = position.line;
        token->column = position.column;
        position.stepOver(*token);
    }
    return {first, last};
}

QString joinedText(const Clause &clause, RecentTexts &texts) {
    if (clause.first == clause.last)
        return QString();
    if (clause.last - clause.first == 1)
        return clause.first->text;
    QVarLengthArray<QChar, 256> units;
    quint32 hash = 0;
    for (const Token *token = clause.first; token != clause.last; ++token) {
        if (token != clause.first)
            units.append(QLatin1Char(' '));
        units.append(token->text.constData(), token->text.size());
        // Equal spellings mostly share their memory, but need not: the ends and the length tell enough.
        hash = (hash ^ quint32(token->text.size()) ^
                (quint32(units[units.size() - 1].unicode()) << 16)) *
               0x9e3779b1U;
    }
    return texts.find(units.constData(), units.size(), hash);
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
