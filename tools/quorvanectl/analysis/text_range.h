// A stretch of a text, as editors mark it.
#pragma once

#include "quorvanectl/files/json_input.h"

#include <QString>

namespace ctl {

// Both ends count as TextPlace does, from 1 and in UTF-16 units; the second lies behind the stretch.
struct TextRange {
    TextPlace from;
    TextPlace to;
};

[[nodiscard]] inline bool operator==(const TextPlace &one, const TextPlace &other) {
    return one.line == other.line && one.column == other.column;
}
[[nodiscard]] inline bool operator==(const TextRange &one, const TextRange &other) {
    return one.from == other.from && one.to == other.to;
}

// A stretch that stays on its line.
[[nodiscard]] inline TextRange onLine(int line, int column, int units) {
    return {{line, column}, {line, column + units}};
}

// The index of a place's unit; of one behind the last line it is counted from that line.
[[nodiscard]] int indexOf(const QString &text, const TextPlace &place);

// Of the JSON value that begins at this place: a text with its quotes, a number or a word as a whole, of
// an object or an array the bracket that opens it.
[[nodiscard]] TextRange valueRange(const QString &json, const TextPlace &from);

} // namespace ctl
