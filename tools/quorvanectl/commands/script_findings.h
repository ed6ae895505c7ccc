// The syntax findings of a script, and what it leaves open, as text.
#pragma once

#include "quorvanectl/project/script_report.h"
#include "quorvanectl/shell/console.h"

class QCommandLineParser;

namespace ctl {

// Prints each finding as "path:line:column: code text", with the line of the source and a caret below
// it.
void printFindings(const Console &console, const ScriptReport &report);

// The line above the warnings of scripts, and those of one script in the same form.
void printWarningsHeading(const Console &console);
void printWarnings(const Console &console, const ScriptReport &report);

// Adds --strict.
void declareStrict(QCommandLineParser &parser);

// Whether warnings of scripts count as errors.
[[nodiscard]] bool isStrict(const QCommandLineParser &parser);

} // namespace ctl
