// A project to begin with: small, whole, and free of findings.
#pragma once

#include <QString>
#include <QStringList>

namespace ctl {

// Makes the folder with a project in it that is named after the folder, for people by `displayName` if
// that is not empty: a main script, a sub task with
// its camera, and a module that both import. Nothing may be at the folder's place yet; the project shows
// there only once it is whole. Returns the path of the project file; null, with a line
// in `error`, on failure.
[[nodiscard]] QString makeProject(const QString &folder, const QString &displayName,
                                  QString *error);

} // namespace ctl
