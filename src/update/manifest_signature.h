// Proof that an update manifest comes from the publisher, and that a package is the one it names.
//
// The signature is RSASSA-PKCS1-v1_5 with SHA-256 (RFC 8017) over the UTF-8 bytes of the manifest's
// signed form, which canonical_manifest.h makes. All operations are free of state and may be called on any thread. Their
// messages are English and untranslated; they travel inside translated ones.
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <optional>

struct VerifyResult {
    bool ok = false; // true only when the check passed
    QString message; // always set: the failure text, or the success text
};

// What proving a manifest comes to, with the manifest itself.
struct ManifestProof {
    VerifyResult result;
    std::optional<QJsonObject> manifest; // as parsed; to be believed only if `result.ok`
    QString canonical;                   // its signed form; null if there is no manifest
    QString attempts; // which one passed, or what each answered; empty if none was made
};

// Checks the manifest against the `signature` that it carries. `keyPath` is a PEM file with an RSA
// public key; empty means the key that is installed with the program.
[[nodiscard]] VerifyResult verifyManifest(const QString &manifestText,
                                          const QString &keyPath = QString());

// The same for a caller that reads the manifest then: its text is parsed once, here.
[[nodiscard]] ManifestProof proveManifest(const QString &manifestText,
                                          const QString &keyPath = QString());

// The same as verifyManifest with a detached signature, as base64 text.
[[nodiscard]] VerifyResult verifyManifestSignature(const QString &manifestText,
                                                   const QString &signatureBase64,
                                                   const QString &keyPath = QString());

// The signature's bytes from the base64 text that a manifest carries; what is not base64 in it is
// skipped. Empty if nothing of it decodes.
[[nodiscard]] QByteArray decodeSignature(const QString &base64);

// The DER bytes of the first block in a PEM text, whatever its label. Empty bytes on failure.
[[nodiscard]] QByteArray decodePemBody(const QString &pemText);

// Whether the file's SHA-256 is `expectedHex`, in either case, with blanks around it forgiven. The
// file is read in pieces, so a large installer is not held in memory.
[[nodiscard]] VerifyResult verifyFileSha256(const QString &path, const QString &expectedHex);

// The same for a copy of the file `toldPath`, which the message names.
[[nodiscard]] VerifyResult verifyFileSha256(const QString &path, const QString &expectedHex,
                                            const QString &toldPath);
