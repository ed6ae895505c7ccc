#include "quorvanectl/project/script_warnings.h"

#include "script/lexer.h"

#include <algorithm>
#include <map>
#include <utility>

namespace ctl {
namespace {

// A script that ends in the middle of a million of them has one mistake.
constexpr size_t mostBrackets = 20;

using Warnings = std::vector<ast::ScriptDiagnostic>;

ast::ScriptDiagnostic warningAt(const ast::Token &token, const char *code, const QString &message) {
    ast::ScriptDiagnostic warning;
    warning.line = token.line;
    warning.column = token.column;
    warning.severity = 1;
    warning.code = QLatin1String(code);
    warning.message = message;
    return warning;
}

// A backslash takes the next sign with it in a string, and means nothing in a character.
bool isOpenLiteral(const ast::Token &token) {
    if (token.kind == ast::CharLiteral)
        return token.text.size() < 2 || !token.text.endsWith(QLatin1Char('\''));
    if (token.kind != ast::StringLiteral)
        return false;
    int at = 1;
    while (at < token.text.size() && token.text.at(at) != QLatin1Char('"'))
        at += token.text.at(at) == QLatin1Char('\\') ? 2 : 1;
    return at >= token.text.size();
}

// The opening bracket that a token closes; -1 if it closes none.
qint32 openerOf(qint32 kind) {
    switch (kind) {
    case ast::RParen:
        return ast::LParen;
    case ast::RBrace:
        return ast::LBrace;
    case ast::RBracket:
        return ast::LBracket;
    default:
        return -1;
    }
}

bool isOpener(qint32 kind) {
    return kind == ast::LParen || kind == ast::LBrace || kind == ast::LBracket;
}

// The brackets of a script, one after the other.
class Brackets {
public:
    // A bracket of another kind that closes over an open one leaves that open for good: "( }". One that
    // closes nothing is no matter of this check.
    void take(const ast::Token &token) {
        if (isOpener(token.kind)) {
            open.push_back(&token);
            ++counts[token.kind];
            return;
        }
        const qint32 opener = openerOf(token.kind);
        if (opener < 0 || counts[opener] == 0)
            return;
        for (; open.back()->kind != opener; drop())
            neverClosed.push_back(open.back());
        drop();
    }

    // The first ones of all that stay open, in the order of the text.
    std::vector<const ast::Token *> stillOpen() {
        neverClosed.insert(neverClosed.end(), open.begin(), open.end());
        std::sort(neverClosed.begin(), neverClosed.end());
        neverClosed.resize(std::min(neverClosed.size(), mostBrackets));
        return neverClosed;
    }

private:
    void drop() {
        --counts[open.back()->kind];
        open.pop_back();
    }

    std::vector<const ast::Token *> open; // into one vector, so their addresses are in order
    std::vector<const ast::Token *> neverClosed;
    std::map<qint32, int> counts;
};

void warnOfBrackets(const std::vector<ast::Token> &tokens, Warnings *warnings) {
    Brackets brackets;
    for (const ast::Token &token : tokens)
        brackets.take(token);
    for (const ast::Token *token : brackets.stillOpen())
        warnings->push_back(warningAt(
            *token, openBracketCode,
            QStringLiteral("this '%1' is still open at the end of the file").arg(token->text)));
}

// Only the last token before the end can be open: a literal takes all that is left.
void warnOfString(const std::vector<ast::Token> &tokens, Warnings *warnings) {
    if (tokens.size() < 2 || !isOpenLiteral(tokens[tokens.size() - 2]))
        return;
    warnings->push_back(warningAt(
        tokens[tokens.size() - 2], openStringCode,
        QStringLiteral("the text that begins here is still open at the end of the file")));
}

void warnOfStatement(const QString &leftBehind, Warnings *warnings) {
    if (leftBehind.isEmpty())
        return;
    ast::Token place;
    place.line = place.column = 1;
    ast::extractPosition(leftBehind, &place.line, &place.column);
    warnings->push_back(warningAt(place, incompleteCode, ast::friendlyMessage(leftBehind)));
}

} // namespace

std::vector<ast::ScriptDiagnostic> scriptWarnings(const QString &text, const QString &leftBehind) {
    QString lexicalError;
    const std::vector<ast::Token> tokens = ast::Lexer(text).tokenize(&lexicalError);
    Warnings warnings;
    warnOfString(tokens, &warnings);
    warnOfBrackets(tokens, &warnings);
    warnOfStatement(leftBehind, &warnings);
    std::stable_sort(warnings.begin(), warnings.end(), [](const auto &one, const auto &other) {
        return std::make_pair(one.line, one.column) < std::make_pair(other.line, other.column);
    });
    return warnings;
}

} // namespace ctl
