// Which names a project package may hold, so that it unpacks to the same files on every PC.
#pragma once

#include <QString>
#include <QStringList>

namespace ctl {

// Why an entry of this relative path, with slashes, cannot stand in a package: it would leave the
// folder, or Windows has no file of that name. Empty if it can.
[[nodiscard]] QString nameFault(const QString &path);

// One text for each path that Windows takes for an earlier one of the list, since they differ only
// in their letters' case.
[[nodiscard]] QStringList sameNameFaults(const QStringList &paths);

} // namespace ctl
