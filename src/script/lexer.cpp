#include "script/lexer.h"

#include "script/token_scan.h"

#include <algorithm>
#include <limits>

namespace ast {
namespace {

// A guess at the number of tokens saves the copies of a growing vector. It is bounded, since a huge
// text need not hold a single token.
constexpr int unitsOfToken = 3;
constexpr int mostReserved = 4 * 1024 * 1024;

} // namespace

Lexer::Lexer(const QString &text)
    : source(text) {}

std::vector<Token> Lexer::tokenize(QString *error) {
    std::vector<Token> tokens;
    tokens.reserve(size_t(std::min(source.size() / unitsOfToken + 1, mostReserved)));
    TokenScan scan(source);
    const bool isKnown = scan.read(tokens, std::numeric_limits<qint32>::max());
    pos = scan.position();
    line = scan.line();
    column = scan.column();
    if (isKnown)
        return tokens;
    if (error != nullptr)
        *error = scan.unknownCharacter();
    return {};
}

} // namespace ast
