// The exchange of files, as a list of steps that can be gone through again from anywhere.
//
// What has been done of a step is seen on the disk: each moves one file aside and another one in, by a
// rename each, and both places are the run's own. So the journal is written once, before the first rename,
// and a kill needs nothing of it but that it stands.
#pragma once

#include "placer/places.h"

#include <QString>
#include <QVector>

namespace placer {

struct Step {
    QString path;   // from the installation's folder
    bool hadOld;    // a file was there that goes to `old`
    bool bringsNew; // a file of `new` takes the place
};

struct Journal {
    QString run;
    QString version;
    QVector<Step> steps; // in order; the launcher last
};

enum class JournalState { None, Read, Unreadable };

[[nodiscard]] JournalState readJournal(const Places &places, Journal *journal);
[[nodiscard]] bool writeJournal(const Places &places, const Journal &journal, QString *error);
[[nodiscard]] bool removeJournal(const Places &places, QString *error);

// Takes all steps that have not been taken, in order; the first that cannot be taken ends it.
[[nodiscard]] bool takeSteps(const Places &places, const Journal &journal, QString *error);

// Takes them back, in the opposite order. One that cannot be taken back does not keep the others from it.
[[nodiscard]] bool takeBackSteps(const Places &places, const Journal &journal, QString *error);

} // namespace placer
