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

} // namespace ctl
