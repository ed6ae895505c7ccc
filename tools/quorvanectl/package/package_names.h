// Which names a project package may hold, so that it unpacks to the same files on every PC.
#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

namespace ctl {

// Why an entry of this relative path, with slashes, cannot stand in a package: it would leave the
// folder, or Windows has no file of that name. Empty if it can.
[[nodiscard]] QString nameFault(const QString &path);

// One text for each path that Windows takes for an earlier one of the list, since they differ only
// in their letters' case.
[[nodiscard]] QStringList sameNameFaults(const QStringList &paths);

// Whether this system cannot hold a file of that name, or a folder, which ends in a slash, beside those that it
// was asked about before and that are kept in `folded`: on Windows what has a fault. package_names_portable.cpp, package_names_windows.cpp.
[[nodiscard]] bool cannotHold(const QString &path, QSet<QString> *folded);

} // namespace ctl
