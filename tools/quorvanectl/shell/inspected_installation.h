// An installation that is only looked at: this program's own, or a folder that came from a line PC.
#pragma once

#include <QString>

class QCommandLineParser;

namespace ctl {

// Adds --install.
void declareInstall(QCommandLineParser &parser);

// Lets all paths answer for the installation that --install names by its folder or by the program's
// folder in it; without the option, for the one of this program. False, with a line in `error`, if
// there is none.
[[nodiscard]] bool inspectInstallation(const QCommandLineParser &parser, QString *error);

// The same by the folder's path.
[[nodiscard]] bool inspectInstallation(const QString &folder, QString *error);

} // namespace ctl
