// The function library that scripts are read with.
#pragma once

#include <QString>

class QCommandLineParser;

namespace ctl {

// Adds --library.
void declareLibrary(QCommandLineParser &parser);

// The path of the FunctionLib.ini of the installation that this program lies in. Makes nothing.
[[nodiscard]] QString installedLibraryPath();

// The path of the file that --library names, else of the one of the installation.
[[nodiscard]] QString libraryPath(const QCommandLineParser &parser);

// Loads the file that --library names, else the one of the installation.
[[nodiscard]] bool loadLibrary(const QCommandLineParser &parser, QString *error);
[[nodiscard]] bool loadLibrary(const QString &path, QString *error);

} // namespace ctl
