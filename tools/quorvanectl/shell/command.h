// What a command of quorvanectl is.
#pragma once

#include "quorvanectl/shell/console.h"

#include <QCommandLineParser>
#include <QString>

#include <vector>

namespace ctl {

// Of every command.
enum ExitStatus {
    Clean = 0,    // done; warnings at most
    Findings = 1, // what was looked at has errors
    Refused = 2,  // wrong usage, or a file that cannot be used
};

struct Command {
    QString family; // "update"
    QString name;   // "lint"; empty for a command without a family, which then is its own
    // The positional arguments, divided by blanks: "[...]" around one that may be missing, "..."
    // behind one that may come again. Their number is checked before `run`.
    QString arguments;
    QString summary; // one sentence
    QString example; // one complete command line; a test runs it
    // Adds the options. What a command needs beyond the defaults it checks in `run`.
    void (*declare)(QCommandLineParser &parser);
    int (*run)(const QCommandLineParser &parser, Console &console);
};

// The words that call it: "update lint".
[[nodiscard]] inline QString titleOf(const Command &command) {
    return (command.family + QLatin1Char(' ') + command.name).trimmed();
}

// The first positional argument, of a command that has to have one.
[[nodiscard]] inline QString firstArgument(const QCommandLineParser &parser) {
    return parser.positionalArguments().constFirst();
}

} // namespace ctl
