#include "quorvanectl/files/repeated_keys.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>

namespace ctl {
namespace {

// An object or array that the scan is in.
struct Level {
    QString path = {};
    bool isObject = false;
    bool expectsKey = false; // object: behind its brace or a comma
    int index = 0;           // array: of the element
    QString key = {};        // object: the last one read
    QHash<QString, TextPlace> places = {};
};

// One key may be written in several ways: "a" is "\u0061".
QString decoded(const QString &quoted) {
    if (!quoted.contains(QLatin1Char('\\')))
        return quoted.mid(1, quoted.size() - 2);
    const QByteArray array = (QLatin1Char('[') + quoted + QLatin1Char(']')).toUtf8();
    return QJsonDocument::fromJson(array).array().at(0).toString();
}

QString pathBelow(const Level &level) {
    if (!level.isObject)
        return QStringLiteral("%1[%2]").arg(level.path, QString::number(level.index));
    return level.path.isEmpty() ? level.key : level.path + QLatin1Char('.') + level.key;
}

// One pass from the beginning to the end.
class KeyScan {
public:
    explicit KeyScan(const QString &json)
        : text(json) {}

    QVector<RepeatedKey> run() {
        while (at < text.size()) {
            const char sign = text.at(at).toLatin1();
            if (sign == '"')
                takeString();
            else if (sign == '{' || sign == '[')
                enter(sign == '{');
            else if (sign == '}' || sign == ']')
                levels.removeLast();
            else if (sign == ',')
                levels.last().expectsKey = levels.last().isObject;
            if (sign == ',')
                ++levels.last().index;
            advance();
        }
        return found;
    }

private:
    void advance() {
        if (text.at(at++) == QLatin1Char('\n')) {
            ++line;
            lineStart = at;
        }
    }

    void enter(bool isObject) {
        Level inner;
        inner.path = levels.isEmpty() ? QString() : pathBelow(levels.last());
        inner.isObject = inner.expectsKey = isObject;
        levels.append(inner);
    }

    // Ends at the closing quote.
    void takeString() {
        const int start = at;
        const TextPlace place{line, at - lineStart + 1};
        do {
            if (text.at(at) == QLatin1Char('\\'))
                advance();
            advance();
        } while (text.at(at) != QLatin1Char('"'));
        if (!levels.isEmpty() && levels.last().expectsKey)
            takeKey(decoded(text.mid(start, at + 1 - start)), place);
    }

    void takeKey(const QString &key, const TextPlace &place) {
        Level &level = levels.last();
        level.expectsKey = false;
        level.key = key;
        if (level.places.contains(key))
            found.append({pathBelow(level), level.places.value(key), place});
        else
            level.places.insert(key, place);
    }

    const QString &text;
    int at = 0;
    int line = 1;
    int lineStart = 0;
    QVector<Level> levels;
    QVector<RepeatedKey> found;
};

} // namespace

QVector<RepeatedKey> repeatedKeys(const QString &json) {
    return KeyScan(json).run();
}

} // namespace ctl
