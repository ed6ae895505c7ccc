// What making a package prints where there is none to be made.
#pragma once

#include "quorvanectl/package/project_pack.h"
#include "quorvanectl/shell/console.h"

namespace ctl {

// The findings of the project's validator, and those of the packing.
void printIssues(const Console &console, const PackResult &result);

// Why this is no --version for a package.
[[nodiscard]] QString notFullVersion(const QString &version);

} // namespace ctl
