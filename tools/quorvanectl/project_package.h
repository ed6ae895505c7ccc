// A project package seen with the launcher's eyes: unpacked by its own code and looked over.
#pragma once

#include "project/project_validator.h"

#include <QString>
#include <QStringList>
#include <QVector>

namespace ctl {

// A launcher holds what it downloads in memory, in an array that ends here.
const qint64 largestPackage = 0x7FFFFFFF; // bytes

struct ProjectPackage {
    bool unpacked = false;
    QString error;                // why it does not unpack
    QStringList files;            // relative paths, sorted
    QStringList projectFiles;     // those of them that end in .yslib
    bool hasLogs = false;         // it brings a folder `logs`
    QString name;                 // of the project file that the launcher would find
    QString version;              // normalised
    QVector<ProjectIssue> issues; // of the project's validator

    // A package that the launcher applies, and always in the same way.
    [[nodiscard]] bool isSound() const;
};

// Unpacks to a temporary folder below `workFolder` (empty: the system's) and removes it again. The
// function library must be loaded. Takes as long as an unpacking does.
[[nodiscard]] ProjectPackage inspectPackage(const QString &zipPath,
                                            const QString &workFolder = QString());

// The relative paths of the files below a folder, hidden ones too, sorted; links are not followed.
[[nodiscard]] QStringList filesBelow(const QString &folder);

// Whether one of the issues is an error: the launcher refuses such a project.
[[nodiscard]] bool hasErrors(const QVector<ProjectIssue> &issues);

} // namespace ctl
