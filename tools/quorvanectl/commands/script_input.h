// What all commands of the family `script` begin with: a script's text, with its library loaded.
#pragma once

#include "quorvanectl/shell/console.h"

#include <QString>

class QCommandLineParser;

namespace ctl {

struct Script {
    QString path; // as given
    QString text;
    bool asJson = false; // the form of the output
};

// Adds --library and --format.
void declareScript(QCommandLineParser &parser);

// Reads the script that the first argument names. False, with a line in `error`, if it, its library
// or the form of the output cannot be used.
[[nodiscard]] bool readScript(const QCommandLineParser &parser, const Console &console,
                              Script *script, QString *error);

} // namespace ctl
