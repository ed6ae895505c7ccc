// Laying an update out on a stick, where the launcher looks for it.
#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace ctl {

struct StickResult {
    bool ok = false;
    QString error;         // what could not be done; empty if findings stand in the way
    QStringList findings;  // why a launcher would not take this update from a stick
    QString manifestPath;  // on the stick
    QStringList packages;  // their relative paths
    bool isVolume = false; // whether the mount point is one: a launcher looks at no other folder
};

// Copies `folder`/manifest.json and the packages that it names to `mountPoint`/QuorvanerUpdate.
//
// The manifest is copied last, so a stick that was pulled out too early holds no update rather than
// half of one; each file is read back and compared with its hash before that. Nothing is copied
// unless the manifest is signed (by the key in `keyPath`, if it is given) and every package is there
// and is the one that the manifest names. Files on the stick are replaced only with `overwrite`; a link
// there is never followed, nor is anything replaced that is read here.
// `reached` hears how many bytes of how many are copied.
[[nodiscard]] StickResult layOutStick(const QString &folder, const QString &mountPoint,
                                      const QString &keyPath, bool overwrite,
                                      const std::function<void(qint64, qint64)> &reached);

} // namespace ctl
