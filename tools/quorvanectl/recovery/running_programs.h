// Which programs may be writing to a project just now.
#pragma once

#include <QString>
#include <QStringList>

namespace ctl {

// The running launchers that use this data folder, and the runtimes that run this project, each as
// "name (process number)". What the system does not tell is left out: of another user's launcher it
// may not say which data folder it uses.
[[nodiscard]] QStringList programsAtWork(const QString &projectFile, const QString &dataFolder);

} // namespace ctl
