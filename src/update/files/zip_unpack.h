// Unpacking a zip archive with libzip: what the launcher does but on Windows, and the command line
// everywhere. zip_unpack_portable.cpp.
#pragma once

#include "update/files/zip_extract.h"

// An Unpack of zip_extract.h.
[[nodiscard]] bool unpackByLibzip(const QString &zipPath, const QString &targetFolder, int limitMs,
                                  ZipFailure *failure);

// The same but for the entries whose names `leavesOut` is true of; a folder's ends in a slash.
using LeavesOut = std::function<bool(const QString &name)>;
[[nodiscard]] bool unpackSomeByLibzip(const QString &zipPath, const QString &targetFolder,
                                      int limitMs, const LeavesOut &leavesOut, ZipFailure *failure);
