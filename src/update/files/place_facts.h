// What lies at a place, and what can be told beforehand of reading it and of removing it.
//
// Free functions that leave all as it is, for any thread.
#pragma once

#include <QString>

#include <filesystem>

class Patience;
class QFileInfo;

// What lies there itself: a link is not followed. `none` if the system does not tell.
[[nodiscard]] std::filesystem::file_type kindOf(const QString &path);

// Whether the entry is a link: a symbolic one or a Windows junction.
[[nodiscard]] bool isLink(const QFileInfo &info);

// The path of an existing file or folder without links, and on Windows as the disk spells it, without
// short names. Where the system does not tell, as far as Qt does.
[[nodiscard]] QString realPath(const QString &path);

// Whether both paths lead to one file or folder, however they are written: by the numbers that the
// system knows it by. False if either leads nowhere.
[[nodiscard]] bool isSamePlace(const QString &one, const QString &other);

// The root of the volume that an existing file or folder lies on, as the system writes it.
[[nodiscard]] QString rootOfVolume(const QString &path);

// Whether an existing folder is the root of the volume that it lies on.
[[nodiscard]] bool isRootOfVolume(const QString &folder);

// Whether two existing files or folders lie on one volume.
[[nodiscard]] bool lieOnOneVolume(const QString &one, const QString &other);

// Whether entries may be taken out of `folder`, as far as that can be told without trying.
[[nodiscard]] bool mayTakeFrom(const QString &folder);

// Whether the file can be opened for reading, as far as that can be told without trying.
[[nodiscard]] bool mayRead(const QString &file);

// Whether the file or the folder cannot be removed: because a program holds it open or runs from it,
// or because a right is missing on it. Only where the system ties that to the entry itself. Who holds it may
// let go while there is patience; without any it is told as it is now.
[[nodiscard]] bool isHeld(const QString &entry, Patience *patience = nullptr);

// Whether a volume is mounted on `folder` itself, so that it cannot be removed.
[[nodiscard]] bool isMountPoint(const QString &folder);
