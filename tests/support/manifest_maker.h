// Signed update manifests for tests.
#pragma once

#include "support/key_maker.h"

#include <QJsonObject>
#include <QString>

namespace support {

// One record for each key that the format lists, all values filled.
[[nodiscard]] QJsonObject fullManifest();

// A manifest with that many project records, in JSON text and unsigned.
[[nodiscard]] QJsonObject manifestOfProjects(int count);

// The JSON text of a manifest with `signature` set: the key's signature over the canonical form.
// The canonical form is the product's own; that it is right is proved by the tests that spell it.
[[nodiscard]] QString signedManifest(QJsonObject manifest, const KeyPair &key);

[[nodiscard]] QString jsonText(const QJsonObject &object);

} // namespace support
