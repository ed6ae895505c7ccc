// The lock file of a process that is no more.
#pragma once

#include <QString>

// Removes the lock file at `path` if its process is gone; false if it is not, or that cannot be told.
// A process writes into its lock file who it is, just after it has made it: with `textIsDue` a file
// without that text counts as one of a process that was killed in between. Any thread.
[[nodiscard]] bool removeLeftLock(const QString &path, bool textIsDue);

// Lets everybody who may enter the folder read the lock file, to tell whether its process is gone.
void showLock(const QString &path);
