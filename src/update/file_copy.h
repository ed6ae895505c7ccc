// The platform's way of copying one file.
#pragma once

#include <QString>

// Copies a file to a place where nothing is, permissions included. After a failure a part of it may
// lie there. The system writes the copy to the disk in its own time. Any thread.
[[nodiscard]] bool copyFileContent(const QString &source, const QString &destination);
