// What broken-off updates have left of all projects that a line PC knows.
#pragma once

#include "quorvanectl/recovery/update_remains.h"

#include <QString>
#include <QStringList>
#include <QVector>

namespace ctl {

struct SurveyPlaces {
    DataFolder data;        // the launcher's, absolute
    QString projects;       // the folder that holds the projects
    QString selected;       // the project file that the launcher starts next; may be empty
    QStringList remembered; // others that it has started, wherever they lie
};

struct SurveyedProject {
    QString projectFile;
    UpdateRemains remains;
    QString error; // why its folder cannot be read; empty: it was
};

struct Survey {
    QVector<SurveyedProject> projects; // by their paths
    // What belongs to none of them, or to an update that came before the one that `remains` tells of.
    QStringList backups;
    QStringList unpacked;
    QStringList packages; // in the cache, then the copies of a stick's; of whichever project
};

// Looks, and changes nothing. A project that is gone counts while it is selected or a backup of it is
// left. The function library must be loaded.
[[nodiscard]] Survey surveyRemains(const SurveyPlaces &places);

} // namespace ctl
