// What the log pane shows before this run has written anything.
#pragma once

#include <QString>

// The trimmed UTF-8 text of config/launcher_notice.txt beside the program; `builtIn` if that file
// does not open, or is a pipe or a device. Read anew at each call.
[[nodiscard]] QString logNotice(const QString &builtIn);
