// Names of files that Windows has not, or has in another way.
#pragma once

#include <QString>

namespace ctl {

// What Windows has against a name, of a file or a folder without those above it; empty if it can have it.
[[nodiscard]] QString windowsNameFault(const QString &name);

} // namespace ctl
