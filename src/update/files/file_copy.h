// The platform's way of copying a file, of waiting until copies are on the disk, and of telling
// beforehand what cannot be removed.
#pragma once

#include <QString>

#include <filesystem>

// What lies there itself: a link is not followed. `none` if the system does not tell. Any thread.
[[nodiscard]] std::filesystem::file_type kindOf(const QString &path);

// Copies a file to a place where nothing is, permissions included. After a failure a part of it may
// lie there. The system writes the copy to the disk in its own time. Any thread.
[[nodiscard]] bool copyFileContent(const QString &source, const QString &destination);

// Waits until all that was written to the volume of `folder` is on the disk, so that a power cut
// cannot take it back. False if that failed, or `folder` cannot be opened. Any thread.
[[nodiscard]] bool flushVolume(const QString &folder);

// Whether entries may be taken out of `folder`, as far as that can be told without trying. Any thread.
[[nodiscard]] bool mayTakeFrom(const QString &folder);

// Whether the file can be opened for reading, as far as that can be told without trying. Any thread.
[[nodiscard]] bool mayRead(const QString &file);

// Whether a program holds the file or the folder open in a way that keeps it from being removed. Any
// thread.
[[nodiscard]] bool isHeld(const QString &entry);

// Whether a volume is mounted on `folder` itself, so that it cannot be removed. Any thread.
[[nodiscard]] bool isMountPoint(const QString &folder);
