// Appends to a file so that several threads and processes can write to it at once.
#pragma once

#include <QByteArray>
#include <QString>

// Opens or creates the file at `path`, adds `text` at its end in one write and closes it. Line
// feeds become the line ends of the platform. False if the file could not be opened or not wholly
// written, or if a pipe or a device is in its place. Any thread; writers never overwrite each other.
[[nodiscard]] bool appendToFile(const QString &path, const QByteArray &text);
