// From the arguments of the program to one command and its exit status.
#pragma once

#include "quorvanectl/shell/command.h"

#include <QStringList>

namespace ctl {

// Runs what the arguments ask for, the program's own name not among them: a command, or the help of
// the program, of a family or of a command. What is no command, option or number of arguments is
// told in one line, and gives Refused.
[[nodiscard]] int runCommandLine(const QStringList &arguments, Console &console);

} // namespace ctl
