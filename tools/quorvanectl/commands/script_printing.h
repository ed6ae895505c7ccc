// The printed form of a script, piece by piece, since it is far longer than the script.
#pragma once

#include "quorvanectl/commands/script_input.h"
#include "quorvanectl/shell/console.h"
#include "script/printed_form.h"
#include "script/script_diagnostics.h"

#include <functional>

namespace ctl {

// Gives the form to the sink; where it fails it gives nothing to it and one line to `error`.
using PrintScript = std::function<bool(const ast::TextSink &sink, QString *error)>;

// Prints with progress while nothing is printed yet. Returns the exit status: a form that memory does
// not suffice for is refused.
[[nodiscard]] int printScript(const Script &script, const Console &console,
                              const PrintScript &print);

// The line for a script that a command can do nothing with.
[[nodiscard]] QString faultLine(const Script &script, const ast::ScriptDiagnostic &fault);

} // namespace ctl
