#include "script/text_parser.h"

#include "script/token_scan.h"

#include <algorithm>

namespace ast {
namespace {

constexpr std::size_t stretch = 1024; // tokens

// Whether no unknown character stands in what the parser left unread.
bool readRest(TokenScan &scan, std::vector<Token> &tokens) {
    do {
        tokens.clear();
        if (!scan.read(tokens, stretch))
            return false;
    } while (tokens.back().kind != Eof);
    return true;
}

} // namespace

ParsedText parseText(const QString &text, Detail detail) {
    TokenScan scan(text);
    Parser parser(scan, detail);
    ParsedText parsed;
    parsed.program = parser.parseProgram(&parsed.syntaxError);
    // An unknown character comes before all that the parser found, even before it.
    const bool isKnown =
        !parser.metUnknown && (parser.tokens.back().kind == Eof || readRest(scan, parser.tokens));
    return isKnown ? parsed : ParsedText{nullptr, scan.unknownCharacter(), QString()};
}

// The parser meets the end of the text there and gives up what it has; nobody looks at that.
void Parser::readOn(std::size_t from) {
    tokens.erase(tokens.begin(), tokens.begin() + std::ptrdiff_t(from));
    pos -= qint32(from);
    // Of a long clause all tokens are kept, so each time as many again.
    if (source->read(tokens, std::max(stretch, tokens.size())))
        return;
    metUnknown = true;
    tokens.emplace_back();
}

} // namespace ast
