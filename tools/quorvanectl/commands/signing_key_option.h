// The private key that a command signs with.
#pragma once

#include "quorvanectl/keys/signing_key.h"
#include "quorvanectl/shell/console.h"

#include <QByteArray>

class QCommandLineParser;

namespace ctl {

// Adds --key, a private one, and --passphrase-fd.
void declareSigningKey(QCommandLineParser &parser);

// Reads the key that --key names, and asks for its passphrase if it has one. A key that others can read is
// told on the console. Invalid, with a line in `error`, if there is none to sign with.
[[nodiscard]] SigningKey readSigningKey(const QCommandLineParser &parser, const Console &console,
                                        QString *error);

// The manifest with the key's signature; empty if there is none to be had, which cannotSign() tells.
[[nodiscard]] QByteArray signedWith(const SigningKey &key, const QString &manifestText);
[[nodiscard]] QString cannotSign();

} // namespace ctl
