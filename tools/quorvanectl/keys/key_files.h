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
    QString fingerprint; // as fingerprintOf() of fingerprint.h gives it
};

// Whether a pair may be made there, as far as it can be seen: to be asked before a passphrase is.
[[nodiscard]] bool isFreeForKeys(const QString &folder, QString *error);

// Makes the pair in `folder`, which is made for its owner alone if it is missing. The private half
// is readable by its owner alone from the moment it exists. A file that is there already is never
// overwritten: nothing is written then.
[[nodiscard]] KeyFiles makeKeyFiles(const QString &folder, const Passphrase *passphrase);

} // namespace ctl
