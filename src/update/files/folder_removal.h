// Removing a folder that is empty.
#pragma once

#include <QString>

// Removes the folder, or on Windows the link to one; a mark that only keeps it from being removed does
// not. False if it is not empty or may not be removed; a mark is then as it was. Any thread.
[[nodiscard]] bool removeEmptyFolder(const QString &folder);
