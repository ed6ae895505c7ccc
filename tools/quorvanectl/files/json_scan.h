// One pass over a JSON text that tells where its keys and values stand, which no parser of Qt's keeps.
#pragma once

#include "quorvanectl/files/json_input.h"

#include <QHash>
#include <QString>

#include <functional>

namespace ctl {

// An object or array that the scan is in.
struct JsonLevel {
    QString path = {}; // "scripts[1]"; empty for the outermost
    bool isPlain =
        true; // no key on the way here holds a dot or bracket: no other place has this path
    bool isObject = false;
    bool expectsKey = false;               // object: behind its brace or a comma
    int index = 0;                         // array: of the element
    QString key = {};                      // object: the last one read
    QHash<QString, TextPlace> places = {}; // for whoever scans
};

// The path of the key or value that the scan stands at in this level.
[[nodiscard]] QString pathBelow(const JsonLevel &level);

// Whether no other place of the text has this path.
[[nodiscard]] bool isPlainBelow(const JsonLevel &level);

struct JsonVisitor {
    // A key, decoded, stands in the level. May be empty.
    std::function<void(JsonLevel &level, const TextPlace &place)> key;
    // A value begins. The level is null for the outermost one. May be empty.
    std::function<void(const JsonLevel *level, const TextPlace &place)> value;
};

// The text must be JSON.
void scanJson(const QString &json, const JsonVisitor &visitor);

} // namespace ctl
