// The option --force, of each command that writes a file.
#pragma once

class QCommandLineParser;

namespace ctl {

// Adds --force.
void declareForce(QCommandLineParser &parser);

// Whether a file that is there may be overwritten.
[[nodiscard]] bool isForced(const QCommandLineParser &parser);

} // namespace ctl
