// What an update that was broken off has left of a project, and which of it is whole.
//
// The swap copies the project to a backup, removes its folder and moves the unpacked package in. A
// process that is killed meanwhile leaves the project's folder, a backup and the unpacked package
// in one of a few relations; from these, and from what the validator says, follows what may stand
// in the project's place. The one rule: what is put there holds all that the folder holds now, or
// the folder cannot run.
#pragma once

#include "frame/data_folder.h"
#include "quorvanectl/files/folder_content.h"

#include <QString>
#include <QStringList>

namespace ctl {

struct RecoveryPlaces {
    QString projectFile; // as the launcher knows it, absolute; it need not exist
    DataFolder data;     // the launcher's, absolute
    QString package;     // the update's; empty: a damaged project file is looked for in those found
};

// One of the folders that may hold the project.
struct ProjectCopy {
    QString folder;      // empty: there is none
    QString projectFile; // in it; empty: it holds none
    FolderContent content;
    QString errors; // of the validator, a line each; empty if it passes

    [[nodiscard]] bool runs() const { return !projectFile.isEmpty() && errors.isEmpty(); }
};

enum class Recovery {
    None,        // the project is whole: nothing is to be done
    Backup,      // the backup belongs in the project's place
    Staging,     // the unpacked package does
    ProjectFile, // only the project file is damaged; `source` is the package that has it
    Unknown,     // the project runs, but nothing tells whether it is whole
    Impossible,
};

struct UpdateRemains {
    ProjectCopy project;
    ProjectCopy backup;
    ProjectCopy staging;
    QStringList packages; // in the cache, then the copies of a stick's
    Recovery recovery = Recovery::Impossible;
    QString source; // the folder or the package to recover from
    QString reason; // one sentence
};

// Looks, and changes nothing; a package is unpacked into a temporary folder. The function library
// must be loaded. False, with a line in `error`, if a folder cannot be read.
[[nodiscard]] bool lookAtRemains(const RecoveryPlaces &places, UpdateRemains *remains,
                                 QString *error);

// The packages that lie in the data folder: those in the cache, then the copies of a stick's that killed
// launchers left, each the newest first.
[[nodiscard]] QStringList packagesOf(const DataFolder &data);

// The errors of the validator about a project file, one a line; warnings do not count.
[[nodiscard]] QString validatorErrors(const QString &projectFile);

} // namespace ctl
