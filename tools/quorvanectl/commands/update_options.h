// Options that several commands of the family `update` have.
#pragma once

#include "quorvanectl/shell/console.h"

class QCommandLineParser;

namespace ctl {

// Adds --out and --force; `otherwise` ends the help of --out.
void declareOut(QCommandLineParser &parser, const QString &otherwise = QString());

// Writes to the file that --out names, else to standard output. Returns the exit status.
[[nodiscard]] int deliver(const QByteArray &bytes, const QCommandLineParser &parser,
                          const Console &console);

// Adds --key, a public one; `purpose` is its help.
void declarePublicKey(QCommandLineParser &parser, const QString &purpose);

// Adds --base.
void declareBase(QCommandLineParser &parser);

} // namespace ctl
