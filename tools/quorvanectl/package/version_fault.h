// Versions that the launcher reads as something else than their publisher does.
#pragma once

#include <QString>

namespace ctl {

// What is wrong with a version: it is not three or four numbers, or one of them is too large. Null for
// one that means what it says, and for an empty one.
[[nodiscard]] QString versionFault(const QString &version);

} // namespace ctl
