// What the lint of a manifest prints.
#pragma once

#include "quorvanectl/manifest/manifest_lint.h"
#include "quorvanectl/shell/console.h"

namespace ctl {

// A line for each finding, behind the manifest's path.
void printLint(const Console &console, const QString &path, const QVector<LintFinding> &findings);

} // namespace ctl
