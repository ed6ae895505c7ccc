// The tokens of a script.
#pragma once

#include <QString>

#include <vector>

namespace ast {

// The numbers are part of the design: the keyword table of the function library stores them.
enum TokenKind : qint32 {
    Eof = 0,
    Newline = 1,
    Identifier = 2,
    IntLiteral = 3,
    FloatLiteral = 4,
    StringLiteral = 5,
    CharLiteral = 6,
    KwIf = 7,
    KwElse = 8,
    KwFor = 9,
    KwWhile = 10,
    KwSwitch = 11,
    KwCase = 12,
    KwDefault = 13,
    KwBreak = 14,
    KwContinue = 15,
    KwInt = 16,
    KwBool = 17,
    KwFloat = 18,
    KwString = 19,
    KwChar = 20,
    KwStatic = 21,
    KwGlobal = 22,
    KwInclude = 23,
    KwImport = 24,
    KwFunction = 25,
    KwReturn = 26,
    LParen = 27,
    RParen = 28,
    LBrace = 29,
    RBrace = 30,
    LBracket = 31,
    RBracket = 32,
    Semicolon = 33,
    Comma = 34,
    Colon = 35,
    Dot = 36,
    Plus = 37,
    Minus = 38,
    Star = 39,
    Slash = 40,
    Percent = 41,
    Assign = 42,
    EqualEqual = 43,
    NotEqual = 44,
    Less = 45,
    Greater = 46,
    LessEqual = 47,
    GreaterEqual = 48,
    AndAnd = 49,
    OrOr = 50,
    Not = 51,
    PlusPlus = 52,
    MinusMinus = 53,
    Hash = 54,
};

struct Token {
    // A value of TokenKind.
    qint32 kind = Eof;
    // The source spelling, unchanged: quotes and backslashes stay. A line feed for Newline, empty
    // for Eof.
    QString text;
    // Position of the first character, both from 1; columns count UTF-16 units.
    qint32 line = 1;
    qint32 column = 1;
};

inline bool operator==(const Token &a, const Token &b) {
    return a.kind == b.kind && a.text == b.text && a.line == b.line && a.column == b.column;
}
inline bool operator!=(const Token &a, const Token &b) {
    return !(a == b);
}

} // namespace ast
