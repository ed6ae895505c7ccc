// Proof that an update manifest comes from the publisher, and that a package is the one it names.
//
// The signature is RSASSA-PKCS1-v1_5 with SHA-256 (RFC 8017) over the UTF-8 bytes of a canonical
// text that is rebuilt from the manifest's parsed content, so white space, key order and unlisted
// keys are free to differ. All operations are free of state and may be called on any thread. Their
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
};

// The manifest in a text; none if the text is not JSON or its root is not an object.
[[nodiscard]] std::optional<QJsonObject> parseManifest(const QString &manifestText);

// The signed form of a manifest, free of `signature`.
[[nodiscard]] QString canonicalManifest(const QJsonObject &root);

// The same from a text; a null string if there is no manifest in it.
[[nodiscard]] QString canonicalManifestText(const QString &manifestText);

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

// Whether `signature` is the key's signature over `data`, its bytes in either order. `derKey` is a
// SubjectPublicKeyInfo in DER form. `details`, if given, receives the attempts' outcome as text.
[[nodiscard]] bool verifyRsaSha256(const QByteArray &derKey, const QByteArray &data,
                                   const QByteArray &signature, QString *details = nullptr);

// The DER bytes of the first block in a PEM text, whatever its label. Empty bytes on failure.
[[nodiscard]] QByteArray decodePemBody(const QString &pemText);

// Whether the file's SHA-256 is `expectedHex`, in either case, with blanks around it forgiven. The
// file is read in pieces, so a large installer is not held in memory.
[[nodiscard]] VerifyResult verifyFileSha256(const QString &path, const QString &expectedHex);
