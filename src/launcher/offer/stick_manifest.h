// The update manifest of a stick as it was read: all that a check needs of the file.
#pragma once

#include <QString>

struct StickManifest {
    QString path;  // absolute; empty: there is no stick
    QString text;  // empty: the file cannot be read, or holds nothing
    QString hash;  // SHA-256 of the file; empty: it could not be computed
    QString error; // why there is no text, or no hash
};

// An empty path gives an empty record. Blocks for as long as the volume does. Any thread.
[[nodiscard]] StickManifest readStickManifest(const QString &path);
