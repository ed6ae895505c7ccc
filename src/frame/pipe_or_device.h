// What may lie under a file's name and never answers.
#pragma once

#include <QString>

// Whether a pipe or a device lies there, or a link leads to one: opening the one would wait for its other
// end, and reading the other might never end. Not so of a file, a folder, and where nothing lies. Any
// thread.
[[nodiscard]] bool isPipeOrDevice(const QString &path);
