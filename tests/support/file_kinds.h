// What a folder can hold beside plain files and folders, made in the system's own way.
#pragma once

#include <QString>

namespace support {

// A link at `path` that leads to `target`. False where there are none: Wine makes no links, and
// shows one that Linux made as what it leads to.
[[nodiscard]] bool makeLink(const QString &target, const QString &path);

// A pipe with a name in a folder. False where there are none.
[[nodiscard]] bool makePipe(const QString &path);

// Marks the file as hidden where the name alone, with its dot in front, does not say so.
void hide(const QString &path);

// Whether permissions can keep this user from a file or a folder.
[[nodiscard]] bool permissionsKeepOut();

} // namespace support
