#include "window/shown_part.h"

namespace {

// The whole characters among the first `most` units, and among the last.
QString beginning(const QString &text, int most) {
    return text.left(text.at(most - 1).isHighSurrogate() ? most - 1 : most);
}

QString ending(const QString &text, int most) {
    return text.right(text.at(text.size() - most).isLowSurrogate() ? most - 1 : most);
}

} // namespace

QString shownPart(const QString &text, Qt::TextElideMode mode) {
    if (text.size() <= mostShown)
        return text;
    if (mode == Qt::ElideMiddle)
        return beginning(text, mostShown / 2) + ellipsis + ending(text, mostShown / 2);
    return beginning(text, mostShown) + ellipsis;
}

QString inShownParts(const QString &text) {
    const QLatin1Char lineBreak('\n');
    QString result;
    int paragraph = 0; // characters of it so far
    for (int i = 0; i < text.size(); ++i) {
        const bool whole = paragraph < (text.at(i).isHighSurrogate() ? mostShown - 1 : mostShown);
        if (text.at(i) != lineBreak && !whole) {
            result += lineBreak;
            paragraph = 0;
        }
        result += text.at(i);
        paragraph = text.at(i) == lineBreak ? 0 : paragraph + 1;
    }
    return result;
}
