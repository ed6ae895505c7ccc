// Letting the disk begin early with what is written.
#pragma once

#include <QtGlobal>

// So much of one file is begun with at a time.
inline constexpr qint64 writeOutPiece = 16 << 20; // bytes

// Lets the disk begin with what was written to the open file so far: whoever waits for it later waits less,
// since the system itself would begin only after half a minute, or at a tenth of the memory. Does not wait,
// and promises nothing. `descriptor` is the C library's. Any thread.
void beginWritingOut(int descriptor);
