// A new key pair on disk: private.pem for the publisher, update.pub for every installation.
#pragma once

#include "quorvanectl/keys/passphrase.h"

#include <QString>

namespace ctl {

struct KeyFiles {
    bool ok = false;
    QString error;
    QString privatePath;
    QString publicPath;
    // SHA-256 of the public key in DER form, for two people to compare: what
    // `openssl pkey -pubin -in update.pub -outform DER | openssl sha256` says.
    QString fingerprint;
};

// Makes the pair in `folder`, which is made for its owner alone if it is missing. The private half
// is readable by its owner alone from the moment it exists. A file that is there already is never
// overwritten: nothing is written then.
[[nodiscard]] KeyFiles makeKeyFiles(const QString &folder, const Passphrase *passphrase);

} // namespace ctl
