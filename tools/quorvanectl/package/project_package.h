// A project package seen with the launcher's eyes: unpacked by its own code and looked over.
#pragma once

#include "project/project_validator.h"

#include <QString>
#include <QStringList>
#include <QVector>

namespace ctl {

struct ProjectPackage {
    bool unpacked = false;
    QString error;                // why it does not unpack
    bool isUnsafe = false;        // because an entry would leave the folder
    QStringList files;            // relative paths, sorted
    QVector<qint64> sizes;        // theirs, in bytes
    QStringList projectFiles;     // see projectFilesAmong
    bool hasLogs = false;         // it brings a folder `logs`
    QString name;                 // of the project file that the launcher would find
    QString version;              // normalised
    QVector<ProjectIssue> issues; // of the project's validator
};

// Unpacks to a temporary folder below `workFolder` (empty: the system's) and removes it again. The
// function library must be loaded. Takes as long as an unpacking does.
[[nodiscard]] ProjectPackage inspectPackage(const QString &zipPath,
                                            const QString &workFolder = QString());

// Why a launcher could not download a package of so many bytes; null if it can. It takes no empty one,
// and holds what it downloads in memory, in one array: largestDownload bytes at most.
[[nodiscard]] QString sizeFault(qint64 bytes);

// The relative paths of the files below a folder, hidden ones too, sorted; links are not followed.
[[nodiscard]] QStringList filesBelow(const QString &folder);

// Those of the files that a launcher would take for a project file: it looks without regard to case.
[[nodiscard]] QStringList projectFilesAmong(const QStringList &files);

} // namespace ctl
