// What stands around a place of a JSON text that may be broken anywhere.
#pragma once

#include <QString>
#include <QStringList>

namespace ctl {

struct JsonCursor {
    // The keys on the way from the outermost object; "[]" for an entry of an array.
    QStringList path;
    bool isKey = false;   // a key stands or may stand here; `path` is then that of its object
    bool isValue = false; // a value stands or may stand here
    // Indices of the text with its quotes or of the word around the place, both the place itself where
    // there is neither. Open quotes reach to the end of the line.
    int from = 0;
    int to = 0;
    bool hasColon = false;  // of a key: a colon follows
    QStringList keysBefore; // of a key: what the object has before it
};

// `index` counts UTF-16 units.
[[nodiscard]] JsonCursor cursorInJson(const QString &json, int index);

} // namespace ctl
