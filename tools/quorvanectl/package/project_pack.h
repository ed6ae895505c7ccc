// Making a project package: the zip that the launcher puts in the place of a project's folder.
#pragma once

#include "project/project_validator.h"

#include <QString>
#include <QStringList>
#include <QVector>

namespace ctl {

struct PackResult {
    bool ok = false;
    QString error;                // what could not be done; empty if findings stand in the way
    QStringList findings;         // why this folder makes no package
    QStringList warnings;         // what goes in all the same
    QVector<ProjectIssue> issues; // of the project's validator; warnings do not stand in the way
    QString projectName;
    QString zipPath;
    QString sha256;
    int files = 0;
};

// Packs the project in `folder` as `<name>-<version>.zip` into `outFolder`, which is made.
//
// The folder is left as it is. What goes in is all of it but the folder `logs` at its top; the
// project file says `version` in the package and is as it was but for that, and so does the sidecar. Equal content gives equal
// bytes. The finished package has been unpacked again by the launcher's own code and found sound
// before it gets its name; a package of that name is replaced only with `overwrite`. The function
// library must be loaded.
[[nodiscard]] PackResult packProject(const QString &folder, const QString &version,
                                     const QString &outFolder, bool overwrite);

// Whether a path, of which only the beginning need exist, is `folder` or leads below it, links followed.
[[nodiscard]] bool liesIn(const QString &path, const QString &folder);

// Whether a package in `outFolder` would not lie in the project's own folder, where the next one would hold
// it. If not, `error` receives one line.
[[nodiscard]] bool liesOutside(const QString &folder, const QString &outFolder, QString *error);

// Whether the text is a version as a package needs one: three or four numbers, which is what all
// readers of versions recognise.
[[nodiscard]] bool isFullVersion(const QString &text);

} // namespace ctl
