// Unpacking a zip archive, whole or not at all if it is unsafe.
//
// An archive with an entry that would leave the target is refused before anything is written; so is, but on
// Windows, one whose two halves disagree. Windows unpacks with PowerShell and .NET, other systems with
// libzip; PowerShell's command line is common code. Blocks its thread; any thread.
#pragma once

#include <QString>
#include <QStringList>

#include <functional>

// Unpacks below `targetFolder`, which is made, within 120 seconds. Files that exist there are not
// overwritten: they make it fail. After a failure that is not an unsafe entry, a part of the
// content may have been written.
[[nodiscard]] bool extractZip(const QString &zipPath, const QString &targetFolder,
                              QString *error = nullptr);

// Why an archive was not unpacked.
struct ZipFailure {
    QString reason;
    bool isUnsafe = false; // an entry would leave the target
};

// The same, telling the kind of a failure.
[[nodiscard]] bool extractZip(const QString &zipPath, const QString &targetFolder,
                              ZipFailure *failure);

// The same within `limitMs` milliseconds.
[[nodiscard]] bool extractZipWithin(const QString &zipPath, const QString &targetFolder,
                                    int limitMs, QString *error = nullptr);

// A way of doing so, once the archive is known to exist and the target was made.
using Unpack = std::function<bool(const QString &zipPath, const QString &targetFolder, int limitMs,
                                  ZipFailure *failure)>;

// The same, unpacked in that way.
[[nodiscard]] bool extractZipBy(const Unpack &unpack, const QString &zipPath,
                                const QString &targetFolder, ZipFailure *failure);

// This platform's way.
[[nodiscard]] bool unpackZip(const QString &zipPath, const QString &targetFolder, int limitMs,
                             ZipFailure *failure);

// Whether an entry of this name is unsafe: a segment of exactly "..", a drive, or a leading slash or
// backslash. Backslashes count as slashes.
[[nodiscard]] bool isUnsafeZipName(const QString &name);

// PowerShell's arguments for unpacking. Both paths stand in the script as they are: one that holds
// a single quote breaks it, and the extraction fails.
[[nodiscard]] QStringList powershellZipArguments(const QString &zipPath,
                                                 const QString &targetFolder);

// Unpacks by PowerShell.
[[nodiscard]] bool powershellUnpack(const QString &zipPath, const QString &targetFolder,
                                    int limitMs, QString *error = nullptr);
