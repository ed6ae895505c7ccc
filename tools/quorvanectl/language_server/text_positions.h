// Places in a text as the protocol counts them: lines and columns from 0, columns in UTF-16 units or in
// bytes of UTF-8, and a line ends at a line feed, a carriage return or both together.
//
// The script language knows the line feed alone, so places are never carried over line by line: all go by
// way of the index into the text.
#pragma once

#include "quorvanectl/analysis/text_range.h"

#include <QJsonObject>
#include <QString>
#include <QVector>

#include <optional>

namespace ctl {

enum class ColumnUnit { Utf16, Utf8 };

struct IndexRange {
    int from;
    int to; // behind it
};

class TextPositions {
public:
    TextPositions(const QString &of, ColumnUnit countedIn);

    // A place behind its line's end is that end, one behind the text the text's end.
    [[nodiscard]] int indexAt(int line, int column) const;
    // Nothing for what is no range, or one whose end comes before its start.
    [[nodiscard]] std::optional<IndexRange> indexRange(const QJsonValue &range) const;
    // An index outside of the text is drawn into it, one between a return and its feed to the end of the line.
    [[nodiscard]] QJsonObject positionOf(int index) const;
    [[nodiscard]] QJsonObject rangeBetween(int from, int to) const; // indices
    [[nodiscard]] QJsonObject rangeOf(const TextRange &range) const;

    // The line of the protocol that an index stands in, and what of the text is in a line, without its
    // end; of a range within a line the columns that it has.
    [[nodiscard]] int lineAt(int index) const;
    [[nodiscard]] IndexRange rangeOfLine(int line) const;
    [[nodiscard]] int columns(int from, int to) const;

private:
    [[nodiscard]] int indexOf(const TextPlace &place) const;

    QString text;
    ColumnUnit unit;
    QVector<int> lines;    // the index at which each line of the protocol begins
    QVector<int> fedLines; // the same of those of the language
};

} // namespace ctl
