// Which project a script belongs to, and which scripts lie in a project's folder.
#pragma once

#include <QString>
#include <QStringList>

namespace ctl {

// A folder with more entries than this is looked at no further.
inline constexpr int mostEntries = 200000;

// The project file of the nearest folder, from that of the script upwards, that holds one; of several
// the first that lists the script, else the first by name. Empty if there is none.
[[nodiscard]] QString projectAbove(const QString &scriptPath);

// Whether the project's file names the script. False for one that cannot be read.
[[nodiscard]] bool listsScript(const QString &projectPath, const QString &scriptPath);

// As the validator walks a project's folder, for at most mostEntries entries.
[[nodiscard]] QStringList scriptsInFolder(const QString &folder, int limit = mostEntries);

} // namespace ctl
