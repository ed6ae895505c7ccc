// The signed form of an update manifest: a text that is rebuilt from the manifest's parsed content, so
// white space, key order and unlisted keys are free to differ. Any thread.
#pragma once

#include <QJsonObject>
#include <QString>

#include <optional>

// The manifest in a text; none if the text is not JSON or its root is not an object.
[[nodiscard]] std::optional<QJsonObject> parseManifest(const QString &manifestText);

// The signed form of a manifest, free of `signature`.
[[nodiscard]] QString canonicalManifest(const QJsonObject &root);

// The same from a text; a null string if there is no manifest in it.
[[nodiscard]] QString canonicalManifestText(const QString &manifestText);
