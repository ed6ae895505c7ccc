// What a project's file may hold, as the schema for editors has it, which is part of the program.
#pragma once

#include <QJsonObject>
#include <QStringList>

namespace ctl {

// The part of the schema for the value at `path`: keys, "[]" for an entry of an array. Empty for one of
// which the schema says nothing.
[[nodiscard]] QJsonObject projectSchemaAt(const QStringList &path);

} // namespace ctl
