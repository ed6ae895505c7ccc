#include "quorvanectl/analysis/text_range.h"

namespace ctl {
namespace {

// The index of a line's first unit; that of the last line for one behind it.
int startOfLine(const QString &text, int line) {
    int start = 0;
    for (int current = 1; current < line; ++current) {
        const int feed = text.indexOf(QLatin1Char('\n'), start);
        if (feed < 0)
            break;
        start = feed + 1;
    }
    return start;
}

int endOfText(const QString &json, int from) {
    int at = from + 1;
    while (at < json.size() && json.at(at) != QLatin1Char('"'))
        at += json.at(at) == QLatin1Char('\\') ? 2 : 1;
    return qMin(at + 1, json.size());
}

bool endsWord(QChar unit) {
    return unit.isSpace() || QStringLiteral(",:]}").contains(unit);
}

int endOfWord(const QString &json, int from) {
    int at = from + 1;
    while (at < json.size() && !endsWord(json.at(at)))
        ++at;
    return at;
}

} // namespace

int indexOf(const QString &text, const TextPlace &place) {
    return startOfLine(text, place.line) + place.column - 1;
}

TextRange valueRange(const QString &json, const TextPlace &from) {
    const int at = indexOf(json, from);
    if (at < 0 || at >= json.size())
        return {from, from};
    const QChar first = json.at(at);
    int end = at + 1;
    if (first == QLatin1Char('"'))
        end = endOfText(json, at);
    else if (first != QLatin1Char('{') && first != QLatin1Char('['))
        end = endOfWord(json, at);
    return onLine(from.line, from.column, end - at);
}

} // namespace ctl
