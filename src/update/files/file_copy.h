// The platform's way of copying a file, and of waiting until copies are on the disk.
#pragma once

#include <QString>

// Copies a file to a place where nothing is, permissions included. After a failure a part of it may
// lie there. The system writes the copy to the disk in its own time. Any thread.
[[nodiscard]] bool copyFileContent(const QString &source, const QString &destination);

// Waits until all that lies in `folder` is on the disk, so that a power cut cannot take it back: by the
// whole volume, or file by file. False if that failed, or `folder` or a file cannot be opened. Any thread.
[[nodiscard]] bool flushFolder(const QString &folder);
