// A key that stands twice in one object of a JSON text.
//
// Such a text is JSON, and each reader takes what it likes: the launcher's the last value, others the
// first or none at all. What a publisher reviewed is then not what a line PC does.
#pragma once

#include "quorvanectl/files/json_input.h"

#include <QString>
#include <QVector>

namespace ctl {

struct RepeatedKey {
    QString where; // "runtime.setupUrl", "projects[0].name"
    TextPlace first;
    TextPlace again;
};

// In the order of the text, which must be JSON.
[[nodiscard]] QVector<RepeatedKey> repeatedKeys(const QString &json);

} // namespace ctl
