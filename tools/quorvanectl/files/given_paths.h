// Paths as a user writes them. given_paths_portable.cpp, given_paths_windows.cpp.
#pragma once

#include <QString>

namespace ctl {

// What this system has against making a file or folder of that path, as one line about it; empty for nothing.
// Qt passes over what Windows does to names: it would make files that the user cannot open or remove, or that
// hide in another one as a stream.
[[nodiscard]] QString pathFault(const QString &path);

// The argument of a command line without the mark that takes away the limit of a path's length on Windows,
// which Qt sets by itself, and reads of a path on a server as a part of its name. Also behind `--option=`.
[[nodiscard]] QString withoutLengthMark(const QString &argument);

} // namespace ctl
