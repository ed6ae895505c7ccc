#include "quorvanectl/language_server/text_positions.h"

#include <algorithm>

namespace ctl {
namespace {

const QChar lineFeed = QLatin1Char('\n');
const QChar carriageReturn = QLatin1Char('\r');

// Bytes of UTF-8 that the unit at `index` stands for: a pair has four, at its first unit.
int bytesAt(const QString &text, int index) {
    const QChar unit = text.at(index);
    if (unit.isLowSurrogate() && index > 0 && text.at(index - 1).isHighSurrogate())
        return 0;
    if (unit.isHighSurrogate() && index + 1 < text.size() && text.at(index + 1).isLowSurrogate())
        return 4;
    return unit.unicode() < 0x80 ? 1 : unit.unicode() < 0x800 ? 2 : 3;
}

// A column that is no whole number is refused with the range that it stands in.
std::optional<int> count(const QJsonObject &position, const char *key) {
    const int value = position.value(QLatin1String(key)).toInt(-1);
    return value < 0 ? std::nullopt : std::optional<int>(value);
}

} // namespace

TextPositions::TextPositions(const QString &of, ColumnUnit countedIn)
    : text(of)
    , unit(countedIn)
    , lines{0}
    , fedLines{0} {
    for (int i = 0; i < text.size(); ++i) {
        const QChar at = text.at(i);
        const bool isPair =
            at == carriageReturn && i + 1 < text.size() && text.at(i + 1) == lineFeed;
        if (at == lineFeed)
            fedLines.append(i + 1);
        if (at == lineFeed || (at == carriageReturn && !isPair))
            lines.append(i + 1);
    }
}

int TextPositions::indexAt(int line, int column) const {
    if (line >= lines.size())
        return text.size();
    const IndexRange whole = rangeOfLine(line);
    const int end = whole.to;
    int index = whole.from;
    if (unit == ColumnUnit::Utf16)
        return qMin(end, column > end - index ? end : index + column);
    for (int bytes = 0; index < end && bytes + bytesAt(text, index) <= column; ++index)
        bytes += bytesAt(text, index);
    return index;
}

std::optional<IndexRange> TextPositions::indexRange(const QJsonValue &range) const {
    const QJsonObject start = range.toObject().value(QLatin1String("start")).toObject();
    const QJsonObject end = range.toObject().value(QLatin1String("end")).toObject();
    const std::optional<int> numbers[] = {count(start, "line"), count(start, "character"),
                                          count(end, "line"), count(end, "character")};
    if (!std::all_of(std::begin(numbers), std::end(numbers),
                     [](const auto &number) { return number.has_value(); }))
        return std::nullopt;
    if (std::make_pair(*numbers[2], *numbers[3]) < std::make_pair(*numbers[0], *numbers[1]))
        return std::nullopt;
    return IndexRange{indexAt(*numbers[0], *numbers[1]), indexAt(*numbers[2], *numbers[3])};
}

int TextPositions::lineAt(int index) const {
    return int(std::upper_bound(lines.begin(), lines.end(), index) - lines.begin()) - 1;
}

IndexRange TextPositions::rangeOfLine(int line) const {
    const int from = lines.at(line);
    int end = line + 1 < lines.size() ? lines.at(line + 1) : text.size();
    while (end > from && (text.at(end - 1) == lineFeed || text.at(end - 1) == carriageReturn))
        --end;
    return {from, end};
}

int TextPositions::columns(int from, int to) const {
    if (unit == ColumnUnit::Utf16)
        return to - from;
    int bytes = 0;
    for (int i = from; i < to; ++i)
        bytes += bytesAt(text, i);
    return bytes;
}

QJsonObject TextPositions::positionOf(int index) const {
    const int within = qBound(0, index, text.size());
    const int line = lineAt(within);
    const IndexRange whole = rangeOfLine(line);
    const int column = columns(whole.from, qMin(within, whole.to));
    return {{QStringLiteral("line"), line}, {QStringLiteral("character"), column}};
}

QJsonObject TextPositions::rangeBetween(int from, int to) const {
    return {{QStringLiteral("start"), positionOf(from)}, {QStringLiteral("end"), positionOf(to)}};
}

QJsonObject TextPositions::rangeOf(const TextRange &range) const {
    return rangeBetween(indexOf(range.from), indexOf(range.to));
}

int TextPositions::indexOf(const TextPlace &place) const {
    if (place.line < 1 || place.line > fedLines.size())
        return place.line < 1 ? 0 : text.size();
    const int start = fedLines.at(place.line - 1);
    const int next = place.line < fedLines.size() ? fedLines.at(place.line) - 1 : text.size();
    return qBound(start, start + place.column - 1, next);
}

} // namespace ctl
