// What the folders that a broken-off update has left say about the project.
#pragma once

#include "quorvanectl/recovery/update_remains.h"

namespace ctl {

// Whether the project's folder holds a part of the unpacked package, which is not what the old project
// is made of.
[[nodiscard]] bool isBeingCopiedIn(const ProjectCopy &project, const ProjectCopy &staging,
                                   const ProjectCopy &backup);

// Fills in `recovery`, `source` and `reason` from the folders and packages.
void decideRecovery(const RecoveryPlaces &places, UpdateRemains *remains);

} // namespace ctl
