#include "quorvanectl/analysis/script_cursor.h"

#include "library/function_library.h"
#include "script/token.h"

#include <QVector>

#include <algorithm>

namespace ctl {
namespace {

bool isWordPart(QChar unit) {
    return unit == QLatin1Char('_') || unit.isLetterOrNumber();
}

struct Word {
    int from = 0;
    int to = 0;
    [[nodiscard]] bool isEmpty() const { return from == to; }
};

// One pass from the beginning to the place.
class CursorScan {
public:
    CursorScan(const QString &script, int index)
        : text(script)
        , end(qBound(0, index, script.size())) {}

    ScriptCursor cursor() {
        result.from = result.to = end;
        while (at < end && !isFound)
            takeOne(text.at(at));
        if (!isFound && end < text.size() && isWordPart(text.at(end)))
            takeWord();
        result.isCalled = opensBehind(result.to);
        tellCall();
        return result;
    }

private:
    void takeOne(QChar sign) {
        if (sign == QLatin1Char('/') && text.midRef(at + 1, 1) == QLatin1String("/"))
            takeComment();
        else if (sign == QLatin1Char('"') || sign == QLatin1Char('\''))
            takeLiteral(sign);
        else if (isWordPart(sign))
            takeWord();
        else
            takeSign(sign);
    }

    void found(ScriptCursor::Within within, int from, int to) {
        isFound = true;
        result.within = within;
        result.from = from;
        result.to = to;
    }

    void takeComment() {
        const int behind = text.indexOf(QLatin1Char('\n'), at);
        at = behind < 0 ? text.size() : behind;
        if (at >= end)
            found(ScriptCursor::Within::Comment, end, end);
    }

    // A backslash takes the next unit with it in a text and has no meaning in a character, as for the lexer.
    void takeLiteral(QChar quote) {
        const int start = at++;
        while (at < text.size() && text.at(at) != quote) {
            const bool isEscape = text.at(at) == QLatin1Char('\\') && quote == QLatin1Char('"');
            at += isEscape ? 2 : 1;
        }
        const bool isClosed = at < text.size();
        if (at >= end)
            foundLiteral(start + 1, isClosed ? at : text.size());
        ++at;
        forgetWords();
    }

    void foundLiteral(int from, int to) {
        const bool isImport = kindOf(last) == ast::KwImport && lineEndBehind(from) >= end;
        found(isImport ? ScriptCursor::Within::ImportPath : ScriptCursor::Within::Text, from,
              qMin(to, lineEndBehind(end)));
    }

    // As editors count lines, which is more often than the language does.
    [[nodiscard]] int lineEndBehind(int index) const {
        const auto *const unit = std::find_if(text.begin() + index, text.end(), [](QChar it) {
            return it == QLatin1Char('\n') || it == QLatin1Char('\r');
        });
        return int(unit - text.begin());
    }

    // A number too, with the point in it.
    void takeWord() {
        const int start = at;
        const bool isNumber = text.at(at).isDigit();
        while (at < text.size() &&
               (isWordPart(text.at(at)) || (isNumber && text.at(at) == QLatin1Char('.'))))
            ++at;
        if (at >= end)
            found(isNumber ? ScriptCursor::Within::Number : withinWord(), start, at);
        beforeLast = last;
        last = {start, at};
        isBehindDot = false;
    }

    [[nodiscard]] ScriptCursor::Within withinWord() const {
        const qint32 kind = kindOf(last);
        if (isBehindDot)
            return ScriptCursor::Within::Member;
        return (kind >= ast::KwInt && kind <= ast::KwChar) || kind == ast::KwFunction
                   ? ScriptCursor::Within::NewName
                   : ScriptCursor::Within::Code;
    }

    void takeSign(QChar sign) {
        ++at;
        if (sign == QLatin1Char('\n') || !sign.isSpace()) {
            takeBracket(sign);
            forgetWords();
            isBehindDot = sign == QLatin1Char('.');
        }
        if (at == end) // no word has begun yet
            result.within = withinWord();
    }

    void takeBracket(QChar sign) {
        if (sign == QLatin1Char('('))
            levels.append({calledName(), 0, kindOf(last) == ast::KwFor});
        else if (sign == QLatin1Char('['))
            levels.append({{}, 0, false});
        else if (sign == QLatin1Char(',') && !levels.isEmpty())
            ++levels.last().argument;
        else if ((sign == QLatin1Char(')') || sign == QLatin1Char(']')) && !levels.isEmpty())
            levels.removeLast();
        else if (sign == QLatin1Char('{') || sign == QLatin1Char('}'))
            levels.clear(); // what is open above is not yet finished
        else if (sign == QLatin1Char(';'))
            leaveStatement();
    }

    // Semicolons stand in the parentheses of "for" alone.
    void leaveStatement() {
        while (!levels.isEmpty() && !levels.last().isFor)
            levels.removeLast();
    }

    // The word before a parenthesis, unless it is declared or means something to the language.
    [[nodiscard]] Word calledName() const {
        const qint32 kind = kindOf(last);
        return kind == ast::Identifier && kindOf(beforeLast) != ast::KwFunction ? last : Word();
    }

    // Eof for no word.
    [[nodiscard]] qint32 kindOf(const Word &word) const {
        if (word.isEmpty())
            return ast::Eof;
        const auto keyword = FunctionLibrary::instance().tokenKindOf(textOf(word));
        return keyword.first ? keyword.second : qint32(ast::Identifier);
    }

    [[nodiscard]] QString textOf(const Word &word) const {
        return text.mid(word.from, word.to - word.from);
    }

    void forgetWords() { last = beforeLast = Word(); }

    [[nodiscard]] bool opensBehind(int index) const {
        while (index < text.size() && text.at(index) != QLatin1Char('\n') &&
               text.at(index).isSpace())
            ++index;
        return index < text.size() && text.at(index) == QLatin1Char('(');
    }

    void tellCall() {
        for (auto level = levels.crbegin(); level != levels.crend(); ++level) {
            if (level->callee.isEmpty())
                continue;
            result.callee = textOf(level->callee);
            result.argument = level->argument;
            return;
        }
    }

    struct Level {
        Word callee;
        int argument;
        bool isFor;
    };

    const QString &text;
    const int end;
    int at = 0;
    bool isFound = false;
    bool isBehindDot = false;
    Word last; // the word just before, with nothing but blanks between
    Word beforeLast;
    QVector<Level> levels;
    ScriptCursor result;
};

} // namespace

ScriptCursor cursorIn(const QString &script, int index) {
    return CursorScan(script, index).cursor();
}

} // namespace ctl
