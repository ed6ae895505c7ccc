// What the installer and the uninstaller ask for: see places.h for what lies where.
//
// Each of these may be killed anywhere and asked for again. Only one of them is at work in an installation
// at a time.
#pragma once

#include "placer/places.h"

#include <QString>
#include <QStringList>

namespace placer {

enum class Outcome {
    Done,
    Refused,    // nothing was changed
    TakenBack,  // the old files are in place again
    Unfinished, // the journal stands: `finish` goes on
};

// What came of it, as the installer tells it.
struct Report {
    Outcome outcome = Outcome::Done;
    QString reason;             // why it is not done, in English
    QString version;            // that is installed now; empty if none is
    QString run;                // the run that installed it
    QStringList laidBeside;     // names of changed files of `config`: the new ones are NAME.new
    QString setAside;           // the new name of a release_version.json that was none
    bool keepsOtherKey = false; // the installation trusts another key than the package's
    QStringList leftBehind;     // what an uninstaller left since the site has changed it
};

// Puts the package of the run in place. An exchange that was broken off is finished first.
[[nodiscard]] Report place(const Places &places);

// Goes on where an exchange was broken off, or takes it back if it cannot be finished. Done, too, if there
// is none. The run in `places` does not matter.
[[nodiscard]] Report finish(const Places &places);

// Removes what earlier runs left, once nothing leads to them any more: all runs but this one, and of this
// one all but its tool. What is in use stays for the next time.
void tidy(const Places &places);

// Removes what was installed, and nothing else. Refused while a program of the installation runs.
[[nodiscard]] Report removeInstallation(const Places &places);

} // namespace placer
