// What a file must hold that is read as one JSON object.
#pragma once

#include <QString>

namespace ctl {

struct TextPlace {
    int line;   // from 1
    int column; // in UTF-16 units, from 1
};

// Whether `text` is a JSON object, as the launcher reads it. If not, `error` receives one line that
// names `path` and, where it is no JSON at all, the place at which it ceases to be.
[[nodiscard]] bool isJsonObject(const QString &path, const QString &text, QString *error);

// "line 3, column 5": where the text ceases to be JSON; null if it is JSON, of whatever kind.
[[nodiscard]] QString placeOfJsonFault(const QString &text);

} // namespace ctl
