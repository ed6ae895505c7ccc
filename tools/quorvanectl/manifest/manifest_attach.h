// Putting a signature into a manifest.
#pragma once

#include <QByteArray>
#include <QString>

namespace ctl {

// The signature in the bytes of a file: as a signing program writes it, or as base64 text with any
// white space, in UTF-16 too behind its mark. Empty if the file holds nothing or another text, such as a
// manifest or a key.
[[nodiscard]] QByteArray signatureIn(const QByteArray &fileContent);

// The manifest with `signature` set, in indented JSON, ending in a line feed. An old signature is
// replaced; what is signed stays as it was. Null if the text is no JSON object.
[[nodiscard]] QString withSignature(const QString &manifestText, const QByteArray &signature);

} // namespace ctl
