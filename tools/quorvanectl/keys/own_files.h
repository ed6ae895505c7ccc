// Files that are made for their owner alone. own_files_portable.cpp, own_files_windows.cpp.
#pragma once

#include <QByteArray>
#include <QString>

namespace ctl {

enum class Readers { Owner, Everybody };

// Writes a file, never over one that is there, not even over one that appeared a moment ago. One for its owner
// alone is so from the moment it exists: by its mode, or by a list of rights that nothing is inherited into;
// where the volume keeps no such list, none is written. Nothing is left of a file that could not be
// written whole.
[[nodiscard]] bool writeNewFile(const QString &path, const QByteArray &content, Readers readers,
                                QString *error);

// Whether somebody else than its owner and whoever runs the system may read the file. False where that
// cannot be found out.
[[nodiscard]] bool othersMayRead(const QString &path);

} // namespace ctl
