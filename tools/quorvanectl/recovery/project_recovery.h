// Puts a whole project back where an update was broken off.
//
// Every step is a renaming, or a copy beside the project that is renamed once it is whole; nothing
// is removed but such a copy. So it may itself be broken off anywhere and be run again.
#pragma once

#include "quorvanectl/recovery/update_remains.h"

namespace ctl {

struct RecoveryResult {
    bool ok = false;
    QString error;    // one line
    QString keptAs;   // where that went which lay in the project's place; empty: nothing did
    QStringList done; // left-overs of the update that were set aside, each at its new name
};

// Does what `remains` says. The left-overs get names under which they are not looked at again.
[[nodiscard]] RecoveryResult recoverProject(const UpdateRemains &remains);

} // namespace ctl
