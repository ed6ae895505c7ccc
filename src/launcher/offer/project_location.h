// Where the project that a path names lies on this machine.
#pragma once

#include <QString>

// Brings a path to an existing file, moving a path below another installation's USER/projects to this
// installation's; empty when there is no such file. Any thread.
[[nodiscard]] QString normalizedProjectPath(const QString &path);
