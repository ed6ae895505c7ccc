// How much of a text is painted and measured. A server's reason phrase may come as one line of several
// hundred thousand characters, and a layout of it takes seconds to minutes; nobody reads it to its end.
#pragma once

#include <QString>

// Characters that one paragraph hands to a layout. More than the largest window holds.
inline constexpr int mostShown = 3000;

inline constexpr QChar ellipsis(0x2026);

// The text itself, or its part with an ellipsis for what is missing: at the end, or in the middle with
// Qt::ElideMiddle. At most mostShown characters and the ellipsis; no character is split in two.
[[nodiscard]] QString shownPart(const QString &text, Qt::TextElideMode mode = Qt::ElideRight);

// The whole text, with a line break wherever a paragraph would pass mostShown characters: for a pane in
// which it can be read to its end by scrolling. No character is split in two.
[[nodiscard]] QString inShownParts(const QString &text);
