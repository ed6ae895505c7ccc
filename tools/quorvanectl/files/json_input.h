// What a file must hold that is read as one JSON object.
#pragma once

#include <QString>

#include <optional>

namespace ctl {

struct TextPlace {
    int line = 0;   // from 1; 0 is no place
    int column = 0; // in UTF-16 units, from 1
};

// Whether `text` is a JSON object, as the launcher reads it. If not, `error` receives one line that
// names `path` and, where it is no JSON at all, the place at which it ceases to be.
[[nodiscard]] bool isJsonObject(const QString &path, const QString &text, QString *error);

// The text of a file that readText() of file_access.h reads and that holds a JSON object; null, with a
// line in `error`, if there is none.
[[nodiscard]] QString readJsonObject(const QString &path, QString *error);

// Where the text ceases to be JSON; nothing if it is JSON, of whatever kind.
[[nodiscard]] std::optional<TextPlace> jsonFault(const QString &text);

// "line 3, column 5": where the text ceases to be JSON; null if it is JSON, of whatever kind.
[[nodiscard]] QString placeOfJsonFault(const QString &text);

} // namespace ctl
