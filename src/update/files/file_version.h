// The version that an executable carries in itself.
#pragma once

#include <QString>

// The file's version resource as "a.b.c.d"; empty if the file has none, is missing, or the platform
// knows no such resource. Any thread.
[[nodiscard]] QString fileVersionText(const QString &path);
