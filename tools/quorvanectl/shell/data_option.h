// The option --data, of each command that looks at what a launcher has written.
#pragma once

#include "frame/data_folder.h"

#include <QLatin1String>

class QCommandLineParser;

namespace ctl {

inline const QLatin1String dataOption("data");

// Adds --data.
void declareData(QCommandLineParser &parser);

// The folder that it names, absolute, whether it is there or not; without it, this user's.
[[nodiscard]] DataFolder dataFolder(const QCommandLineParser &parser);

// The launcher's data folder, if the folder that is named for it lies just above it or within it; else empty.
// Nothing would be found there, and whoever is told that gives a project up.
[[nodiscard]] QString dataFolderAround(const QString &named);

} // namespace ctl
