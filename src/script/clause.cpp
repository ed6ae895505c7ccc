#include "script/clause.h"

#include "script/lexer.h"

#include <algorithm>
#include <limits>

namespace ast {
namespace {

bool mayHoldLineFeed(qint32 kind) {
    return kind == Newline || kind == StringLiteral || kind == CharLiteral;
}

QString joined(const Token *first, const Token *last) {
    if (last - first == 1)
        return first->text;
    qint64 length = 0;
    for (const Token *token = first; token != last; ++token)
        length += token->text.size() + 1;
    QString text;
    text.reserve(int(std::min<qint64>(length, std::numeric_limits<int>::max())));
    for (const Token *token = first; token != last; ++token) {
        if (!text.isEmpty())
            text += QLatin1Char(' ');
        text += token->text;
    }
    return text;
}

} // namespace

void TextPosition::stepOver(const Token &token) {
    const QString &text = token.text;
    const int lastFeed = mayHoldLineFeed(token.kind) ? text.lastIndexOf(QLatin1Char('\n')) : -1;
    if (lastFeed < 0) {
        column += text.size() + 1;
        return;
    }
    line += text.count(QLatin1Char('\n'));
    column = text.size() - lastFeed + 1;
}

Clause makeClause(const Token *first, const Token *last, bool fromLexer) {
    if (!fromLexer)
        return {first, last, false};
    while (first != last && first->kind == Newline)
        ++first;
    while (first != last && (last - 1)->kind == Newline)
        --last;
    // An open string at the end of the file may end in blanks, which the trimmed text loses.
    const bool losesBlanks = first != last && (last - 1)->text.back().isSpace();
    return {first, last, !losesBlanks};
}

QString joinedText(const Clause &clause) {
    QString text = joined(clause.first, clause.last);
    // A clause that lexes alike has no blank at either end.
    return clause.lexesAlike ? text : text.trimmed();
}

std::vector<Token> lexAgain(const Clause &clause, const QString &tail, QString *error) {
    if (!clause.lexesAlike)
        return Lexer(joinedText(clause) + tail).tokenize(error);
    std::vector<Token> tokens(clause.first, clause.last);
    TextPosition position;
    for (Token &token : tokens) {
        token.line = position.line;
        token.column = position.column;
        position.stepOver(token);
    }
    // No blank stands behind the last token.
    if (!tokens.empty())
        --position.column;
    if (!tail.isEmpty())
        tokens.push_back({Semicolon, tail, position.line, position.column++});
    tokens.push_back({Eof, QString(), position.line, position.column});
    return tokens;
}

} // namespace ast
