// The public key that a manifest is verified with.
#pragma once

#include <QByteArray>
#include <QString>

namespace ctl {

constexpr int smallestSignature = 128; // bytes, of an RSA key of 1024 bits

// Whether the file holds an RSA public key in PEM form. If not, or if no file is named, `error`
// receives one line.
[[nodiscard]] bool isPublicKey(const QString &path, QString *error);

// The SHA-256 of the key in a PEM text, in DER form, for two people to compare: what
// `openssl pkey -pubin -in update.pub -outform DER | openssl sha256` says.
[[nodiscard]] QString fingerprintOf(const QString &publicPem);

// Whether the manifest carries a signature of the key in `publicPem`, as a launcher would find.
[[nodiscard]] bool verifiesWith(const QString &manifestText, const QByteArray &publicPem);

} // namespace ctl
