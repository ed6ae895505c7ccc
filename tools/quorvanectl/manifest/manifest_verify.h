// What verifying a manifest says, as a record: the launcher's own check, its attempts, and what a
// publisher compares with the bytes that were signed.
#pragma once

#include <QJsonObject>
#include <QString>

namespace ctl {

struct VerifyReport {
    bool ok = false;
    QString message;         // the launcher's text, failure or success
    QString details;         // which attempt passed, or what each answered; empty if none was made
    QString canonicalSha256; // of the bytes that are signed; empty if the text is no manifest
    int signatureBytes = 0;  // decoded
};

// Checks `manifestText` against the public key in the PEM file `keyPath`, which must be named.
[[nodiscard]] VerifyReport verifyReport(const QString &manifestText, const QString &keyPath);

// {"ok": true, "message": "", "details": "", "canonical_sha256": "", "sig_bytes": 0}
[[nodiscard]] QJsonObject toJson(const VerifyReport &report);

} // namespace ctl
