// What a line PC is like, beside what lies on it: room, clock, memory, screens, the environment of its
// programs, and where its updates come from.
#pragma once

#include "frame/data_folder.h"

#include <QJsonObject>
#include <QString>

namespace ctl {

// With the keys environment, memory, places, screens, time and update. `projectFile` is the selected
// project; empty: none is. Of the installation that is being inspected.
[[nodiscard]] QJsonObject machineFacts(const DataFolder &data, const QString &projectFile);

} // namespace ctl
