// The server between its two streams, until the editor ends it or is gone.
#pragma once

#include <QString>

class QIODevice;

namespace ctl {

// How a conversation ended. The status is the program's: 0 told to end behind a `shutdown`, 1 told to end
// without one or the editor is gone, 2 the input cannot be read, with a line in `error`.
struct ServingEnd {
    int status = 0;
    QString error;
};

// Reads `in` on a thread of its own, which has ended when this returns: at `exit`, at the end of the
// stream or at its first fault. The function library must be loaded.
[[nodiscard]] ServingEnd serve(QIODevice &in, QIODevice &out);

} // namespace ctl
