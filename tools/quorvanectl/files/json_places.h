// Where the values of a JSON text begin.
#pragma once

#include "quorvanectl/files/json_input.h"

#include <QStringList>
#include <QVector>

namespace ctl {

// For each path, such as "scripts[1].role", the place of that value. Of one that is not there it is the
// place of what it is missing in; of a path that says nothing of the text, that of the whole. Of a key
// that stands twice the last one counts, as it does for the launcher. The text must be JSON.
[[nodiscard]] QVector<TextPlace> placesInJson(const QString &json, const QStringList &paths);

} // namespace ctl
