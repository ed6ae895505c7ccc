#include "quorvanectl/analysis/token_places.h"

#include "script/token_scan.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace ctl {
namespace {

constexpr int mostUnknown = 100; // characters

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

int endOfLine(const QString &text, int from) {
    const int feed = text.indexOf(QLatin1Char('\n'), from);
    const int end = feed < 0 ? text.size() : feed;
    return text.at(end - 1) == QLatin1Char('\r') ? end - 1 : end;
}

} // namespace

TokenPlaces::TokenPlaces(const QString &text)
    : lines{0} {
    for (int feed = text.indexOf(QLatin1Char('\n')); feed >= 0;
         feed = text.indexOf(QLatin1Char('\n'), feed + 1))
        lines.push_back(feed + 1);
    read(text);
    matchBraces();
}

// Behind each unknown character what is left is read as a text of its own.
void TokenPlaces::read(const QString &text) {
    int start = 0;
    for (int unknown = 0; unknown < mostUnknown; ++unknown) {
        ast::TokenScan scan(text.mid(start));
        const int line = int(std::upper_bound(lines.begin(), lines.end(), start) - lines.begin());
        const int column = start - lines[size_t(line - 1)];
        const std::size_t first = tokens.size();
        const bool isWhole = scan.read(tokens, std::numeric_limits<qint32>::max());
        for (std::size_t number = first; number < tokens.size(); ++number) {
            ast::Token &token = tokens[number];
            token.column += token.line == 1 ? column : 0;
            token.line += line - 1;
        }
        if (isWhole)
            return;
        start += scan.position() + 1;
    }
    ast::Token end;
    end.line = int(lines.size());
    end.column = text.size() - lines.back() + 1;
    tokens.push_back(end);
}

// They stand between the tokens, before that of the line's end.
QVector<Stretch> TokenPlaces::commentsIn(const QString &text) const {
    QVector<Stretch> comments;
    int behind = 0;
    for (int number = 0; number < count(); ++number) {
        const Stretch token = stretchOf(number);
        const int from = text.midRef(behind, token.from - behind).indexOf(QLatin1String("//"));
        if (from >= 0)
            comments.append({behind + from, endOfLine(text, behind + from)});
        behind = token.to;
    }
    return comments;
}

void TokenPlaces::matchBraces() {
    braces.assign(tokens.size(), -1);
    std::vector<int> open;
    for (int number = 0; number < count(); ++number) {
        const qint32 kind = kindOf(number);
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
