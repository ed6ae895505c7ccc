// Which files are exchanged, and which of the site's stay.
#pragma once

#include "placer/journal.h"
#include "placer/package_list.h"

#include <QStringList>

namespace placer {

struct Plan {
    Journal journal;
    PackageList installed;  // what the installation will know of itself
    QStringList laidBeside; // files of `config` that the site has changed: the new one is NAME.new
    bool keepsOtherKey = false; // the installation trusts another key than the package's
};

// The plan for a package whose files lie in `new`. A file that is there already as it should be is left
// alone. Of `config`, a file that the last package brought and nobody has changed is exchanged; another
// stays, and the new one is laid beside it. update.pub is exchanged only if the package says so. A file
// that the last package brought and this one does not is moved away, if nobody has changed it. Refused if a
// folder has the name of a file: what is in it would go with the old files.
[[nodiscard]] bool planFor(const Places &places, const PackageList &package, Plan *plan,
                           QString *error);

// Gives the files of `new` the names that the plan has for them, adds the installed list and the version file,
// and makes the folders that files are moved to: all that takes room on the disk. No file of the installation
// changes.
[[nodiscard]] bool prepare(const Places &places, const Plan &plan, QString *error);

} // namespace placer
