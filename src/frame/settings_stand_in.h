// What a database may hold in the place of a settings table, or hang on one, so that reading or writing
// a row runs statements of the file's own: these may never end.
#pragma once

#include <QString>

namespace settings_stand_in {

// The statements that a database's objects are made of.
inline constexpr char readObjects[] = "SELECT sql FROM sqlite_master WHERE sql IS NOT NULL";

// Whether the object that `statement` makes is a view or a virtual table with the name of a settings
// table, or a trigger of such a table. Other programs may keep such objects beside tables of their own.
[[nodiscard]] bool isOne(const QString &statement);

} // namespace settings_stand_in
