// The function library that scripts are read with.
#pragma once

#include "quorvanectl/shell/console.h"

#include <QString>

class QCommandLineParser;

namespace ctl {

// Adds --library.
void declareLibrary(QCommandLineParser &parser);

// The path of the FunctionLib.ini of the installation that this program lies in. Makes nothing.
[[nodiscard]] QString installedLibraryPath();

// The path of the file that --library names, else of the one of the installation.
[[nodiscard]] QString libraryPath(const QCommandLineParser &parser);

// Loads the file that --library names, else the one of the installation, else the one that is built in, which
// is told on the console.
[[nodiscard]] bool loadLibrary(const QCommandLineParser &parser, const Console &console,
                               QString *error);
[[nodiscard]] bool loadLibrary(const QString &path, QString *error);

// The path of the installation's, else that of the one that is built in, which is told on the console.
[[nodiscard]] QString standingLibraryPath(const Console &console);

} // namespace ctl
