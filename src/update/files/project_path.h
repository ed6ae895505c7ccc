// Paths as a project file and a script write them: relative to a folder, and with separators of
// either kind, since most are written on Windows. A backslash means a separator on every platform.
#pragma once

#include <QDir>
#include <QString>

// With `/` for every separator.
[[nodiscard]] QString slashedPath(const QString &path);

// Slashed, with `./` and `../` resolved: the form in which paths are compared.
[[nodiscard]] QString cleanedPath(const QString &path);

// Where the file `path` lies, seen from `folder`: the path as written, absolute or not. Where no
// such file exists, its slashed form.
[[nodiscard]] QString locatedPath(const QDir &folder, const QString &path);
