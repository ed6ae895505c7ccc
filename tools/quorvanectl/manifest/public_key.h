// The public key that a manifest is verified with.
#pragma once

#include <QString>

namespace ctl {

constexpr int smallestSignature = 128; // bytes, of an RSA key of 1024 bits

// Whether the file holds an RSA public key in PEM form. If not, or if no file is named, `error`
// receives one line.
[[nodiscard]] bool isPublicKey(const QString &path, QString *error);

} // namespace ctl
