// The public key that a manifest is verified with.
#pragma once

#include <QByteArray>
#include <QString>

namespace ctl {

constexpr int smallestSignature = 128; // bytes, of an RSA key of 1024 bits

// Whether the file holds an RSA public key in PEM form. If not, or if no file is named, `error`
// receives one line.
[[nodiscard]] bool isPublicKey(const QString &path, QString *error);

// The fingerprint of the key in a PEM file that isPublicKey() has seen.
[[nodiscard]] QString fingerprintIn(const QString &path);

// Whether the manifest carries a signature of the key in `publicPem`, as a launcher would find.
[[nodiscard]] bool verifiesWith(const QString &manifestText, const QByteArray &publicPem);

} // namespace ctl
