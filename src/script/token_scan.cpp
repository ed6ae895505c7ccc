// One token after another. Every token keeps inside its line but for literals and Newline itself, so a
// column is the distance from the start of the line.
#include "script/token_scan.h"

#include "library/function_library.h"

#include <algorithm>
#include <utility>

namespace ast {
namespace {

struct Operator {
    qint32 kind = -1;
    QString text;
};

// The operators of two characters; a kind of -1 is no match.
Operator twoCharacterOperator(char16_t first, char16_t second) {
    switch (first) {
    case '=':
        return second == '=' ? Operator{EqualEqual, QStringLiteral("==")} : Operator();
    case '!':
        return second == '=' ? Operator{NotEqual, QStringLiteral("!=")} : Operator();
    case '<':
        return second == '=' ? Operator{LessEqual, QStringLiteral("<=")} : Operator();
    case '>':
        return second == '=' ? Operator{GreaterEqual, QStringLiteral(">=")} : Operator();
    case '&':
        return second == '&' ? Operator{AndAnd, QStringLiteral("&&")} : Operator();
    case '|':
        return second == '|' ? Operator{OrOr, QStringLiteral("||")} : Operator();
    case '+':
        return second == '+' ? Operator{PlusPlus, QStringLiteral("++")} : Operator();
    case '-':
        return second == '-' ? Operator{MinusMinus, QStringLiteral("--")} : Operator();
    default:
        return {};
    }
}

Operator oneCharacterOperator(char16_t character) {
    switch (character) {
    case '!':
        return {Not, QStringLiteral("!")};
    case '#':
        return {Hash, QStringLiteral("#")};
    case '%':
        return {Percent, QStringLiteral("%")};
    case '(':
        return {LParen, QStringLiteral("(")};
    case ')':
        return {RParen, QStringLiteral(")")};
    case '*':
        return {Star, QStringLiteral("*")};
    case '+':
        return {Plus, QStringLiteral("+")};
    case ',':
        return {Comma, QStringLiteral(",")};
    case '-':
        return {Minus, QStringLiteral("-")};
    case '.':
        return {Dot, QStringLiteral(".")};
    case '/':
        return {Slash, QStringLiteral("/")};
    case ':':
        return {Colon, QStringLiteral(":")};
    case ';':
        return {Semicolon, QStringLiteral(";")};
    case '<':
        return {Less, QStringLiteral("<")};
    case '=':
        return {Assign, QStringLiteral("=")};
    case '>':
        return {Greater, QStringLiteral(">")};
    case '[':
        return {LBracket, QStringLiteral("[")};
    case ']':
        return {RBracket, QStringLiteral("]")};
    case '{':
        return {LBrace, QStringLiteral("{")};
    case '}':
        return {RBrace, QStringLiteral("}")};
    default:
        return {};
    }
}

bool isBlank(QChar character) {
    return character == QLatin1Char(' ') || character == QLatin1Char('\t') ||
           character == QLatin1Char('\r');
}

} // namespace

TokenScan::TokenScan(const QString &text)
    : source(text)
    , textEnd(source.constData() + source.size())
    , at(source.constData())
    , lineStart(at) {}

bool TokenScan::read(std::vector<Token> &tokens, std::size_t most) {
    result = &tokens;
    for (std::size_t end = tokens.size() + most; tokens.size() < end;) {
        while (at != textEnd && isBlank(*at))
            ++at;
        tokenLine = lineNumber;
        tokenColumn = column();
        if (at == textEnd) {
            append(Eof, QString());
            return true;
        }
        if (!readOne())
            return false;
    }
    return true;
}

qint32 TokenScan::position() const {
    return qint32(at - source.constData());
}

QString TokenScan::unknownCharacter() const {
    return QStringLiteral("Unknown character '%1' at %2:%3")
        .arg(QString(*at), QString::number(line()), QString::number(column()));
}

bool TokenScan::readOne() {
    const QChar first = *at;
    if (first == QLatin1Char('\n'))
        readLineFeed();
    else if (first == QLatin1Char('/') && second() == u'/')
        skipComment();
    else if (first.isLetter() || first == QLatin1Char('_'))
        readWord();
    else if (first.isDigit())
        readNumber();
    else if (first == QLatin1Char('"'))
        readString();
    else if (first == QLatin1Char('\''))
        readCharacter();
    else
        return readOperator();
    return true;
}

// The unit after the next one; 0 at the end of the text, which matches nothing.
char16_t TokenScan::second() const {
    return at + 1 == textEnd ? u'\0' : at[1].unicode();
}

void TokenScan::append(qint32 kind, QString text) {
    result->push_back({kind, std::move(text), tokenLine, tokenColumn});
}

void TokenScan::readLineFeed() {
    ++at;
    append(Newline, QStringLiteral("\n"));
    ++lineNumber;
    lineStart = at;
}

void TokenScan::skipComment() {
    at = std::find(at, textEnd, QLatin1Char('\n'));
}

void TokenScan::consume() {
    if (*at++ == QLatin1Char('\n')) {
        ++lineNumber;
        lineStart = at;
    }
}

// The shared spelling of the units from `start` to here.
Spelling &TokenScan::spelling(const QChar *start) {
    quint32 hash = 0;
    for (const QChar *unit = start; unit != at; ++unit)
        hash = (hash ^ unit->unicode()) * 0x9e3779b1U;
    return spellings.find(start, qint32(at - start), hash ^ (hash >> 15));
}

void TokenScan::readWord() {
    const QChar *start = at;
    while (at != textEnd && (at->isLetterOrNumber() || *at == QLatin1Char('_')))
        ++at;
    Spelling &word = spelling(start);
    if (word.kind < 0) {
        const auto keyword = FunctionLibrary::instance().tokenKindOf(word.text);
        word.kind = keyword.first ? keyword.second : qint32(Identifier);
    }
    append(word.kind, word.text);
}

void TokenScan::readNumber() {
    const QChar *start = at;
    bool hasDot = false;
    for (; at != textEnd; ++at) {
        if (!at->isDigit() && (hasDot || *at != QLatin1Char('.')))
            break;
        hasDot = hasDot || *at == QLatin1Char('.');
    }
    append(hasDot ? FloatLiteral : IntLiteral, spelling(start).text);
}

void TokenScan::readString() {
    const QChar *start = at++;
    while (at != textEnd) {
        const QChar unit = *at;
        consume();
        if (unit == QLatin1Char('"'))
            break;
        if (unit == QLatin1Char('\\') && at != textEnd)
            consume();
    }
    append(StringLiteral, spelling(start).text);
}

// A backslash has no meaning here, which differs from strings on purpose.
void TokenScan::readCharacter() {
    const QChar *start = at++;
    while (at != textEnd) {
        const QChar unit = *at;
        consume();
        if (unit == QLatin1Char('\''))
            break;
    }
    append(CharLiteral, spelling(start).text);
}

bool TokenScan::readOperator() {
    qint32 length = 2;
    Operator found = twoCharacterOperator(at->unicode(), second());
    if (found.kind < 0) {
        length = 1;
        found = oneCharacterOperator(at->unicode());
    }
    if (found.kind < 0)
        return false;
    at += length;
    append(found.kind, std::move(found.text));
    return true;
}

} // namespace ast
