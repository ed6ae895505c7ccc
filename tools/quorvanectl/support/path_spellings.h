// How else people, programs and the system itself may write a folder's path.
#pragma once

#include <QRegularExpression>
#include <QStringList>

namespace ctl {

// Finds the folder, which has an absolute path with slashes and is no root: each step of it by any of its
// names, with either separator, which JSON writes twice.
[[nodiscard]] QRegularExpression everySpellingOf(const QString &folder);

// --- for path_spellings.cpp, by path_spellings_portable.cpp and path_spellings_windows.cpp ----------

// The same folder by other names: on Windows each of its steps may go by a short one.
[[nodiscard]] QStringList otherSpellings(const QString &folder);

// Whether the case of letters counts in a path.
extern const QRegularExpression::PatternOption pathsAreRead;

} // namespace ctl
