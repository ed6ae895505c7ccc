// One token after another. Every token keeps inside its line but for literals and Newline itself, so a
// column is the distance from the start of the line.
#include "script/token_scan.h"

#include "library/function_library.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace ast {
namespace {

// What a token that begins with this character is.
enum class Start : quint8 {
    Unknown,
    Blank,
    LineFeed,
    Slash,
    Word,
    Digit,
    Quote,
    Apostrophe,
    Operator
};

struct Spelled {
    qint32 kind;
    const char16_t *text;
};

constexpr Spelled oneCharacterOperators[] = {
    {Not, u"!"},      {Hash, u"#"},     {Percent, u"%"}, {LParen, u"("}, {RParen, u")"},
    {Star, u"*"},     {Plus, u"+"},     {Comma, u","},   {Minus, u"-"},  {Dot, u"."},
    {Slash, u"/"},    {Colon, u":"},    {Less, u"<"},    {Assign, u"="}, {Greater, u">"},
    {LBracket, u"["}, {RBracket, u"]"}, {LBrace, u"{"},  {RBrace, u"}"}, {Semicolon, u";"},
};
constexpr Spelled twoCharacterOperators[] = {
    {EqualEqual, u"=="}, {NotEqual, u"!="}, {LessEqual, u"<="}, {GreaterEqual, u">="},
    {AndAnd, u"&&"},     {OrOr, u"||"},     {PlusPlus, u"++"},  {MinusMinus, u"--"},
};

constexpr int ascii = 128;

struct Characters {
    Start start[ascii] = {};
    // The operator of this character alone, and of it with the other one behind it; 0 is none.
    quint8 alone[ascii] = {};
    quint8 with[ascii] = {};
    char16_t other[ascii] = {};

    constexpr Characters() {
        for (int unit = 'a'; unit <= 'z'; ++unit)
            start[unit] = start[unit - 'a' + 'A'] = Start::Word;
        start[int('_')] = Start::Word;
        for (int unit = '0'; unit <= '9'; ++unit)
            start[unit] = Start::Digit;
        start[int(' ')] = start[int('\t')] = start[int('\r')] = Start::Blank;
        start[int('\n')] = Start::LineFeed;
        for (const Spelled &spelled : oneCharacterOperators) {
            start[spelled.text[0]] = Start::Operator;
            alone[spelled.text[0]] = quint8(spelled.kind);
        }
        for (const Spelled &spelled : twoCharacterOperators) {
            start[spelled.text[0]] = Start::Operator;
            with[spelled.text[0]] = quint8(spelled.kind);
            other[spelled.text[0]] = spelled.text[1];
        }
        start[int('/')] = Start::Slash;
        start[int('"')] = Start::Quote;
        start[int('\'')] = Start::Apostrophe;
    }
};
constexpr Characters characters;

Start startOf(QChar first) {
    if (first.unicode() < ascii)
        return characters.start[first.unicode()];
    if (first.isLetter())
        return Start::Word;
    return first.isDigit() ? Start::Digit : Start::Unknown;
}

// By their kinds. Literals, whose copies nobody counts.
const QString *fixedTexts() {
    static const std::vector<QString> texts = [] {
        std::vector<QString> list(Hash + 1);
        list[Newline] = QStringLiteral("\n");
        list[LParen] = QStringLiteral("(");
        list[RParen] = QStringLiteral(")");
        list[LBrace] = QStringLiteral("{");
        list[RBrace] = QStringLiteral("}");
        list[LBracket] = QStringLiteral("[");
        list[RBracket] = QStringLiteral("]");
        list[Semicolon] = QStringLiteral(";");
        list[Comma] = QStringLiteral(",");
        list[Colon] = QStringLiteral(":");
        list[Dot] = QStringLiteral(".");
        list[Plus] = QStringLiteral("+");
        list[Minus] = QStringLiteral("-");
        list[Star] = QStringLiteral("*");
        list[Slash] = QStringLiteral("/");
        list[Percent] = QStringLiteral("%");
        list[Assign] = QStringLiteral("=");
        list[Less] = QStringLiteral("<");
        list[Greater] = QStringLiteral(">");
        list[Not] = QStringLiteral("!");
        list[Hash] = QStringLiteral("#");
        list[EqualEqual] = QStringLiteral("==");
        list[NotEqual] = QStringLiteral("!=");
        list[LessEqual] = QStringLiteral("<=");
        list[GreaterEqual] = QStringLiteral(">=");
        list[AndAnd] = QStringLiteral("&&");
        list[OrOr] = QStringLiteral("||");
        list[PlusPlus] = QStringLiteral("++");
        list[MinusMinus] = QStringLiteral("--");
        return list;
    }();
    return texts.data();
}

bool isWordPart(QChar character) {
    if (character.unicode() >= ascii)
        return character.isLetterOrNumber();
    const Start start = characters.start[character.unicode()];
    return start == Start::Word || start == Start::Digit;
}

quint32 mixed(quint32 hash, QChar unit) {
    return (hash ^ unit.unicode()) * 0x9e3779b1U;
}

} // namespace

TokenScan::TokenScan(const QString &text)
    : source(text)
    , textEnd(source.constData() + source.size())
    , at(source.constData())
    , lineStart(at)
    , fixed(fixedTexts()) {}

bool TokenScan::read(std::vector<Token> &tokens, std::size_t most) {
    result = &tokens;
    for (std::size_t end = tokens.size() + most; tokens.size() < end;) {
        Start start = Start::Unknown;
        while (at != textEnd && (start = startOf(*at)) == Start::Blank)
            ++at;
        tokenLine = lineNumber;
        tokenColumn = column();
        if (at == textEnd) {
            append(Eof, QString());
            return true;
        }
        switch (start) {
        case Start::LineFeed:
            readLineFeed();
            break;
        case Start::Slash:
            if (second() == u'/')
                skipComment();
            else
                (void)readOperator();
            break;
        case Start::Word:
            readWord();
            break;
        case Start::Digit:
            readNumber();
            break;
        case Start::Quote:
            readString();
            break;
        case Start::Apostrophe:
            readCharacter();
            break;
        default:
            if (start != Start::Operator || !readOperator())
                return false;
            break;
        }
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

// The unit after the next one; 0 at the end of the text, which matches nothing.
char16_t TokenScan::second() const {
    return at + 1 == textEnd ? u'\0' : at[1].unicode();
}

void TokenScan::append(qint32 kind, const QString &text) {
    result->push_back({kind, text, tokenLine, tokenColumn});
}

void TokenScan::readLineFeed() {
    ++at;
    append(Newline, fixed[Newline]);
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
    return spelling(start, std::accumulate(start, at, quint32(0), mixed));
}

Spelling &TokenScan::spelling(const QChar *start, quint32 hash) {
    return spellings.find(start, qint32(at - start), hash ^ (hash >> 15));
}

void TokenScan::readWord() {
    const QChar *start = at;
    quint32 hash = 0;
    for (; at != textEnd && isWordPart(*at); ++at)
        hash = mixed(hash, *at);
    Spelling &word = spelling(start, hash);
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

// False if the character means nothing alone and does not stand before the one that it needs.
bool TokenScan::readOperator() {
    const char16_t first = at->unicode();
    const bool isTwo = characters.with[first] != 0 && second() == characters.other[first];
    const qint32 kind = isTwo ? characters.with[first] : characters.alone[first];
    if (kind == 0)
        return false;
    at += isTwo ? 2 : 1;
    append(kind, fixed[kind]);
    return true;
}

} // namespace ast
