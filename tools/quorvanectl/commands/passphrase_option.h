// The passphrase of a private key: from a file descriptor, or asked for at the terminal.
#pragma once

#include "quorvanectl/keys/passphrase.h"

class QCommandLineParser;

namespace ctl {

// Adds --passphrase-fd.
void declarePassphrase(QCommandLineParser &parser);

// Whether --passphrase-fd is given.
[[nodiscard]] bool hasPassphrase(const QCommandLineParser &parser);

// Reads it from the descriptor that the option names; without the option it is asked for with
// `prompt`, `twice` where it is a new one. False, with a line in `error`, if there is none.
[[nodiscard]] bool getPassphrase(const QCommandLineParser &parser, const QString &prompt,
                                 bool twice, Passphrase *passphrase, QString *error);

} // namespace ctl
