// Options that several commands of the family `update` have.
#pragma once

#include "quorvanectl/shell/console.h"

#include <QStringList>

class QCommandLineParser;

namespace ctl {

// Adds --out and --force; `otherwise` ends the help of --out.
void declareOut(QCommandLineParser &parser, const QString &otherwise = QString());

// Whether deliver() may write, to be asked before what takes long. The `inputs` are files that the
// command reads and that nothing is written over, not even by force; the empty name is none.
[[nodiscard]] bool mayDeliver(const QCommandLineParser &parser, const QStringList &inputs,
                              QString *error);

// Writes to the file that --out names, else to standard output. Returns the exit status.
[[nodiscard]] int deliver(const QByteArray &bytes, const QCommandLineParser &parser,
                          const Console &console, const QStringList &inputs = {});

// Adds --key, a public one; `purpose` is its help.
void declarePublicKey(QCommandLineParser &parser, const QString &purpose);

// Adds --base.
void declareBase(QCommandLineParser &parser);

} // namespace ctl
