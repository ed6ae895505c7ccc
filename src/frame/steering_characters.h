// Characters of a foreign text that are not shown but steer what shows them: a terminal, or the order in
// which the rest of a line is read.
#pragma once

#include <QChar>
#include <QString>

// Whether it is a control character (line feeds and tabs are) or a mark that turns the direction of writing,
// by which a name could show as another one.
[[nodiscard]] bool steersDisplay(QChar unit);

// Its spelling in JSON: "\u202e".
[[nodiscard]] QString unicodeEscape(QChar unit);
