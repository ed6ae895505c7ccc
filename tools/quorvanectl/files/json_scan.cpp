#include "quorvanectl/files/json_scan.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QVector>

namespace ctl {
namespace {

// One key may be written in several ways: "a" is "\u0061".
QString decoded(const QString &quoted) {
    if (!quoted.contains(QLatin1Char('\\')))
        return quoted.mid(1, quoted.size() - 2);
    const QByteArray array = (QLatin1Char('[') + quoted + QLatin1Char(']')).toUtf8();
    return QJsonDocument::fromJson(array).array().at(0).toString();
}

bool endsWord(QChar unit) {
    return unit.isSpace() || unit == QLatin1Char(',') || unit == QLatin1Char(']') ||
           unit == QLatin1Char('}');
}

// One pass from the beginning to the end.
class Scan {
public:
    Scan(const QString &json, const JsonVisitor &callbacks)
        : text(json)
        , visitor(callbacks) {}

    void run() {
        while (at < text.size()) {
            takeOne(text.at(at));
            advance();
        }
    }

private:
    // Ends at the last unit of what it took.
    void takeOne(QChar sign) {
        if (sign == QLatin1Char('"'))
            takeString();
        else if (sign == QLatin1Char('{') || sign == QLatin1Char('['))
            enter(sign == QLatin1Char('{'));
        else if (sign == QLatin1Char('}') || sign == QLatin1Char(']'))
            levels.removeLast();
        else if (sign == QLatin1Char(','))
            takeComma(levels.last());
        else if (sign.isLetterOrNumber() ||
                 sign == QLatin1Char('-')) // a mark at the beginning is none
            takeWord();
    }

    void advance() {
        if (text.at(at++) == QLatin1Char('\n')) {
            ++line;
            lineStart = at;
        }
    }

    [[nodiscard]] TextPlace here() const { return {line, at - lineStart + 1}; }

    void tellValue(const TextPlace &place) {
        if (visitor.value)
            visitor.value(levels.isEmpty() ? nullptr : &levels.last(), place);
    }

    static void takeComma(JsonLevel &level) {
        level.expectsKey = level.isObject;
        ++level.index;
    }

    void enter(bool isObject) {
        tellValue(here());
        JsonLevel inner;
        if (!levels.isEmpty()) {
            inner.path = pathBelow(levels.last());
            inner.isPlain = isPlainBelow(levels.last());
        }
        inner.isObject = inner.expectsKey = isObject;
        levels.append(inner);
    }

    // A number, true, false or null.
    void takeWord() {
        tellValue(here());
        while (at + 1 < text.size() && !endsWord(text.at(at + 1)))
            ++at;
    }

    // Ends at the closing quote.
    void takeString() {
        const int start = at;
        const TextPlace place = here();
        do {
            if (text.at(at) == QLatin1Char('\\'))
                advance();
            advance();
        } while (text.at(at) != QLatin1Char('"'));
        if (!levels.isEmpty() && levels.last().expectsKey)
            takeKey(levels.last(), decoded(text.mid(start, at + 1 - start)), place);
        else
            tellValue(place);
    }

    void takeKey(JsonLevel &level, const QString &key, const TextPlace &place) {
        level.expectsKey = false;
        level.key = key;
        if (visitor.key)
            visitor.key(level, place);
    }

    const QString &text;
    const JsonVisitor &visitor;
    int at = 0;
    int line = 1;
    int lineStart = 0;
    QVector<JsonLevel> levels;
};

} // namespace

QString pathBelow(const JsonLevel &level) {
    if (!level.isObject)
        return QStringLiteral("%1[%2]").arg(level.path, QString::number(level.index));
    return level.path.isEmpty() ? level.key : level.path + QLatin1Char('.') + level.key;
}

bool isPlainBelow(const JsonLevel &level) {
    return level.isPlain && !level.key.contains(QLatin1Char('.')) &&
           !level.key.contains(QLatin1Char('['));
}

void scanJson(const QString &json, const JsonVisitor &visitor) {
    Scan(json, visitor).run();
}

} // namespace ctl
