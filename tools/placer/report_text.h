// What came of a placing, in the form that the installer's script can read.
#pragma once

#include "placer/placing.h"

#include <QByteArray>

namespace placer {

// Lines in UTF-16, little-endian, behind a byte-order mark; each a letter, a blank and a text:
//     V version in force
//     U run that installed it
//     N name of a file that has NAME.new beside it
//     A name of what was put aside
//     K another key stays
//     L path of what was left behind
//     R reason why it is not done
[[nodiscard]] QByteArray reportText(const Report &report);

} // namespace placer
