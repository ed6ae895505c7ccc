#include "script/lexer.h"

#include "library/function_library.h"
#include "script/spelling_table.h"

#include <algorithm>
#include <utility>

namespace ast {
namespace {

// A guess at the number of tokens saves the copies of a growing vector. It is bounded, since a huge
// text need not hold a single token.
constexpr int unitsOfToken = 3;
constexpr int mostReserved = 4 * 1024 * 1024;

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

// One run over a text. Every token keeps inside its line but for literals and Newline itself, so a
// column is the distance from the start of the line.
class Scan {
public:
    Scan(const QString &source, std::vector<Token> &tokens)
        : textBegin(source.constData())
        , textEnd(textBegin + source.size())
        , at(textBegin)
        , lineStart(textBegin)
        , result(tokens) {}

    // False at an unknown character, which then stands at position().
    bool run() {
        for (;;) {
            while (at != textEnd && isBlank(*at))
                ++at;
            if (at == textEnd)
                return true;
            tokenLine = lineNumber;
            tokenColumn = column();
            if (!readOne())
                return false;
        }
    }

    const QChar *next() const { return at; }
    qint32 line() const { return lineNumber; }
    qint32 column() const { return qint32(at - lineStart) + 1; }

private:
    bool readOne() {
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
    char16_t second() const { return at + 1 == textEnd ? u'\0' : at[1].unicode(); }

    void append(qint32 kind, QString text) {
        result.push_back({kind, std::move(text), tokenLine, tokenColumn});
    }

    void readLineFeed() {
        ++at;
        append(Newline, QStringLiteral("\n"));
        ++lineNumber;
        lineStart = at;
    }

    void skipComment() { at = std::find(at, textEnd, QLatin1Char('\n')); }

    void consume() {
        if (*at++ == QLatin1Char('\n')) {
            ++lineNumber;
            lineStart = at;
        }
    }

    // The shared spelling of the units from `start` to here.
    Spelling &spelling(const QChar *start) {
        quint32 hash = 0;
        for (const QChar *unit = start; unit != at; ++unit)
            hash = (hash ^ unit->unicode()) * 0x9e3779b1U;
        return spellings.find(start, qint32(at - start), hash ^ (hash >> 15));
    }

    void readWord() {
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

    void readNumber() {
        const QChar *start = at;
        bool hasDot = false;
        for (; at != textEnd; ++at) {
            if (!at->isDigit() && (hasDot || *at != QLatin1Char('.')))
                break;
            hasDot = hasDot || *at == QLatin1Char('.');
        }
        append(hasDot ? FloatLiteral : IntLiteral, spelling(start).text);
    }

    void readString() {
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
    void readCharacter() {
        const QChar *start = at++;
        while (at != textEnd) {
            const QChar unit = *at;
            consume();
            if (unit == QLatin1Char('\''))
                break;
        }
        append(CharLiteral, spelling(start).text);
    }

    bool readOperator() {
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

    const QChar *textBegin;
    const QChar *textEnd;
    const QChar *at;
    const QChar *lineStart;
    qint32 lineNumber = 1;
    qint32 tokenLine = 1;
    qint32 tokenColumn = 1;
    std::vector<Token> &result;
    SpellingTable spellings;
};

} // namespace

Lexer::Lexer(const QString &text)
    : source(text) {}

std::vector<Token> Lexer::tokenize(QString *error) {
    std::vector<Token> tokens;
    tokens.reserve(size_t(std::min(source.size() / unitsOfToken + 1, mostReserved)));
    Scan scan(source, tokens);
    const bool isKnown = scan.run();
    pos = qint32(scan.next() - source.constData());
    line = scan.line();
    column = scan.column();
    if (!isKnown) {
        if (error != nullptr)
            *error =
                QStringLiteral("Unknown character '%1' at %2:%3")
                    .arg(QString(source.at(pos)), QString::number(line), QString::number(column));
        return {};
    }
    tokens.push_back({Eof, QString(), line, column});
    return tokens;
}

} // namespace ast
