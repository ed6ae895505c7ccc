// Puts a project back from its publisher's package, where no whole copy of it is left.
//
// The package is believed for the signed manifest that names it, as the launcher believes it. It is
// unpacked beside the project, and takes its place by two renamings once it is whole and on the disk;
// what lay there is kept. Broken off anywhere, it can be run again.
#pragma once

#include "quorvanectl/files/work_folder.h"
#include "quorvanectl/recovery/project_recovery.h"
#include "quorvanectl/recovery/update_remains.h"

#include <QString>

namespace ctl {

struct PackageSource {
    QString package;
    QString manifest;
    QString key; // the publisher's public one, in PEM form
};

// A package that is proved, and looked over. Its copy is in a folder for this user alone, as long as
// this lives: nobody can exchange it between its proof and its use.
class ProvedPackage {
public:
    // Whether the manifest verifies and has a record for this project with the package's hash, and what
    // is in the package passes the validator. If not, `error` receives one line. The function library
    // must be loaded.
    [[nodiscard]] bool prove(const PackageSource &source, const UpdateRemains &remains,
                             QString *error);

    [[nodiscard]] QString path() const { return copy; }
    [[nodiscard]] QString name() const { return recordName; }
    [[nodiscard]] QString version() const { return recordVersion; }
    [[nodiscard]] int files() const { return content.files(); }

    // Whether the project passes the validator and holds all of the package, logs and version aside.
    [[nodiscard]] bool isInPlaceOf(const ProjectCopy &project) const;

private:
    [[nodiscard]] bool readManifest(const PackageSource &source, QJsonArray *records,
                                    QString *error);
    [[nodiscard]] bool takeCopy(const PackageSource &source, QString *error);
    [[nodiscard]] bool findRecord(const PackageSource &source, const QJsonArray &records,
                                  const UpdateRemains &remains, QString *error);
    [[nodiscard]] bool unpack(const PackageSource &source, QString *error);

    WorkFolder place;
    QString copy;
    QString recordName;
    QString recordVersion;
    FolderContent content;
    QString projectFile; // in the unpacked content
};

// Why the folder of a project may not make way: it holds more than a project. Empty if it may.
[[nodiscard]] QString whyNotReplaced(const QString &projectFolder, const DataFolder &data);

// Does it. The logs in the project's folder are kept in the new one, and those of a backup that are not
// there; what lay in the folder goes to the data folder's backups, or stays beside it where these lie on
// another volume.
[[nodiscard]] RecoveryResult recoverFromPackage(const ProvedPackage &package,
                                                const UpdateRemains &remains,
                                                const DataFolder &data);

} // namespace ctl
