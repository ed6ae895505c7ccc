// Archives are unpacked by libzip, on every system: what a package is called sound or unsound for is the same
// wherever it is looked at.
#pragma once

#include "update/files/zip_extract.h"

namespace ctl {

// As extractZip() of zip_extract.h.
[[nodiscard]] bool unpack(const QString &zipPath, const QString &targetFolder, ZipFailure *failure);
// But for the entries whose names `leavesOut` is true of.
[[nodiscard]] bool unpackSome(const QString &zipPath, const QString &targetFolder,
                              const std::function<bool(const QString &name)> &leavesOut,
                              ZipFailure *failure);
[[nodiscard]] bool unpack(const QString &zipPath, const QString &targetFolder, QString *error);

} // namespace ctl
