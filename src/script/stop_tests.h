// Where the clauses of a statement end.
#pragma once

#include "script/token.h"

namespace ast {

inline bool isStatementEnd(const Token &token) {
    return token.kind == Newline || token.kind == RBrace || token.kind == Semicolon;
}
inline bool isCloseParen(const Token &token) {
    return token.kind == RParen;
}
inline bool isSemicolon(const Token &token) {
    return token.kind == Semicolon;
}
inline bool isCloseBracket(const Token &token) {
    return token.kind == RBracket;
}
inline bool isColon(const Token &token) {
    return token.kind == Colon;
}
inline bool isGreater(const Token &token) {
    return token.kind == Greater;
}

} // namespace ast
