// What lies at a place, and what can be told beforehand of reading it and of removing it.
//
// Free functions that change nothing, for any thread.
#pragma once

#include <QString>

#include <filesystem>

class QFileInfo;

// What lies there itself: a link is not followed. `none` if the system does not tell.
[[nodiscard]] std::filesystem::file_type kindOf(const QString &path);

// Whether the entry is a link: a symbolic one or a Windows junction.
[[nodiscard]] bool isLink(const QFileInfo &info);

// The root of the volume that an existing file or folder lies on.
[[nodiscard]] QString rootOfVolume(const QString &path);

// Whether entries may be taken out of `folder`, as far as that can be told without trying.
[[nodiscard]] bool mayTakeFrom(const QString &folder);

// Whether the file can be opened for reading, as far as that can be told without trying.
[[nodiscard]] bool mayRead(const QString &file);

// Whether a program holds the file or the folder open in a way that keeps it from being removed.
[[nodiscard]] bool isHeld(const QString &entry);

// Whether a volume is mounted on `folder` itself, so that it cannot be removed.
[[nodiscard]] bool isMountPoint(const QString &folder);
