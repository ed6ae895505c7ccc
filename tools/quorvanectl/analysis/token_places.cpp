#include "quorvanectl/analysis/token_places.h"

#include "script/lexer.h"

#include <algorithm>
#include <utility>

namespace ctl {
namespace {

bool endsStatement(qint32 kind) {
    return kind == ast::Newline || kind == ast::RBrace || kind == ast::Semicolon;
}

// How much deeper a token of this kind leads into brackets.
int depthStep(qint32 kind) {
    switch (kind) {
    case ast::LParen:
    case ast::LBracket:
    case ast::LBrace:
        return 1;
    case ast::RParen:
    case ast::RBracket:
    case ast::RBrace:
        return -1;
    default:
        return 0;
    }
}

} // namespace

TokenPlaces::TokenPlaces(const QString &text)
    : tokens(ast::Lexer(text).tokenize())
    , lines{0}
    , braces(tokens.size(), -1) {
    for (int feed = text.indexOf(QLatin1Char('\n')); feed >= 0;
         feed = text.indexOf(QLatin1Char('\n'), feed + 1))
        lines.push_back(feed + 1);
    std::vector<int> open;
    for (int number = 0; number < count(); ++number) {
        const qint32 kind = tokens[size_t(number)].kind;
        if (kind == ast::LBrace)
            open.push_back(number);
        if (kind != ast::RBrace || open.empty())
            continue;
        braces[size_t(open.back())] = number;
        open.pop_back();
    }
}

const ast::Token &TokenPlaces::at(int number) const {
    static const ast::Token none;
    return number < 0 || number >= count() ? none : tokens[size_t(number)];
}

Stretch TokenPlaces::stretchOf(int number) const {
    const ast::Token &token = at(number);
    const int from = lines[size_t(token.line - 1)] + token.column - 1;
    return {from, from + token.text.size()};
}

int TokenPlaces::find(int line, int column) const {
    const auto found = std::lower_bound(tokens.begin(), tokens.end(), std::make_pair(line, column),
                                        [](const ast::Token &token, const auto &place) {
                                            return std::make_pair(token.line, token.column) < place;
                                        });
    return int(found - tokens.begin());
}

int TokenPlaces::closingBrace(int number) const {
    const int closing = braces[size_t(number)];
    return closing < 0 ? lastToken() : closing;
}

int TokenPlaces::closingParenthesis(int number) const {
    int depth = 0;
    for (int next = number; next <= lastToken(); ++next) {
        const qint32 kind = kindOf(next);
        depth += int(kind == ast::LParen) - int(kind == ast::RParen);
        if (depth == 0)
            return next;
    }
    return lastToken();
}

int TokenPlaces::endOfBody(int number) const {
    int next = number + 1;
    while (kindOf(next) == ast::Newline)
        ++next;
    if (kindOf(next) == ast::LBrace)
        return closingBrace(next);
    int depth = 0;
    while (next <= lastToken() && (depth > 0 || !endsStatement(kindOf(next)))) {
        depth += depthStep(kindOf(next));
        ++next;
    }
    return next - 1;
}

} // namespace ctl
