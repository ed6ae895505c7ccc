#include "quorvanectl/analysis/json_cursor.h"

#include <QVector>

namespace ctl {
namespace {

bool endsLine(QChar unit) {
    return unit == QLatin1Char('\n') || unit == QLatin1Char('\r');
}

bool endsJsonWord(QChar unit) {
    return unit.isSpace() || QStringLiteral(",:[]{}\"").contains(unit);
}

// One pass from the beginning to the place.
class JsonCursorScan {
public:
    JsonCursorScan(const QString &text, int index)
        : json(text)
        , end(qBound(0, index, text.size())) {}

    JsonCursor cursor() {
        result.from = result.to = end;
        while (at < end && !isFound)
            takeOne(json.at(at));
        if (!isFound && end < json.size() && !endsJsonWord(json.at(end)))
            takeWord();
        if (!levels.isEmpty())
            tellLevel(levels.last());
        return result;
    }

private:
    enum class Expects { Key, Colon, Value, Comma };
    struct Level {
        bool isObject = false;
        Expects expects = Expects::Value;
        QString key;
        QStringList keys; // those before it
    };

    void takeOne(QChar sign) {
        if (sign == QLatin1Char('"'))
            takeText();
        else if (endsJsonWord(sign))
            takeSign(sign);
        else
            takeWord();
    }

    // A line's end closes a text that was left open, so that no more is lost than its line.
    void takeText() {
        const int start = at++;
        while (at < json.size() && json.at(at) != QLatin1Char('"') && !endsLine(json.at(at)))
            at += json.at(at) == QLatin1Char('\\') ? 2 : 1;
        at = qMin(at, json.size());
        const bool isClosed = at < json.size() && json.at(at) == QLatin1Char('"');
        const QString content = json.mid(start + 1, at - start - 1);
        at += isClosed ? 1 : 0;
        if (at > end || (at == end && !isClosed))
            found(start, at);
        else
            takeValue(content);
    }

    void takeWord() {
        const int start = at;
        while (at < json.size() && !endsJsonWord(json.at(at)))
            ++at;
        if (at >= end)
            found(start, at);
        else
            takeValue(json.mid(start, at - start));
    }

    void found(int from, int to) {
        isFound = true;
        result.from = from;
        result.to = to;
    }

    // Or a key.
    void takeValue(const QString &content) {
        if (levels.isEmpty())
            return;
        Level &level = levels.last();
        if (level.expects == Expects::Key)
            level.key = content;
        level.expects = level.expects == Expects::Key ? Expects::Colon : Expects::Comma;
    }

    void takeSign(QChar sign) {
        ++at;
        if (sign == QLatin1Char('{') || sign == QLatin1Char('['))
            levels.append({sign == QLatin1Char('{'),
                           sign == QLatin1Char('{') ? Expects::Key : Expects::Value,
                           {},
                           {}});
        else if (sign == QLatin1Char('}') || sign == QLatin1Char(']'))
            leave();
        else if (!levels.isEmpty() && sign == QLatin1Char(':') && levels.last().isObject)
            levels.last().expects = Expects::Value;
        else if (!levels.isEmpty() && sign == QLatin1Char(','))
            takeComma(levels.last());
    }

    void leave() {
        if (!levels.isEmpty())
            levels.removeLast();
        takeValue({});
    }

    static void takeComma(Level &level) {
        level.keys.append(level.key);
        level.expects = level.isObject ? Expects::Key : Expects::Value;
    }

    void tellLevel(const Level &level) {
        for (int i = 0; i + 1 < levels.size(); ++i)
            result.path.append(stepInto(levels.at(i)));
        result.isKey = level.expects == Expects::Key;
        result.isValue = level.expects == Expects::Value;
        if (result.isKey) {
            result.keysBefore = level.keys;
            result.hasColon = hasColonBehind(result.to);
        } else {
            result.path.append(stepInto(level));
        }
    }

    static QString stepInto(const Level &level) {
        return level.isObject ? level.key : QStringLiteral("[]");
    }

    [[nodiscard]] bool hasColonBehind(int index) const {
        while (index < json.size() && json.at(index).isSpace())
            ++index;
        return index < json.size() && json.at(index) == QLatin1Char(':');
    }

    const QString &json;
    const int end;
    int at = 0;
    bool isFound = false;
    QVector<Level> levels;
    JsonCursor result;
};

} // namespace

JsonCursor cursorInJson(const QString &json, int index) {
    return JsonCursorScan(json, index).cursor();
}

} // namespace ctl
