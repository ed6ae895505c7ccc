// The syntax findings of a script as text.
#pragma once

#include "quorvanectl/project/script_report.h"
#include "quorvanectl/shell/console.h"

namespace ctl {

// Prints each finding as "path:line:column: code text", with the line of the source and a caret below
// it.
void printFindings(const Console &console, const ScriptReport &report);

} // namespace ctl
