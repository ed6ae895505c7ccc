// What project recover tells of what it found.
#pragma once

#include "quorvanectl/recovery/package_recovery.h"
#include "quorvanectl/recovery/recovery_survey.h"
#include "quorvanectl/shell/console.h"

namespace ctl {

// The folders of one project and the packages, and the verdict.
void describeRemains(const Console &console, const UpdateRemains &remains);

// The same folders, and the package that is to take their place.
void describePackage(const Console &console, const UpdateRemains &remains,
                     const ProvedPackage &package, const QString &path);

// Each project with the command that mends it, then what belongs to none. `options` end each command.
void describeSurvey(const Console &console, const Survey &survey, const QString &options);

// The path as a word of a command line.
[[nodiscard]] QString asWord(const QString &path);

} // namespace ctl
