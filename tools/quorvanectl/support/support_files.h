// What a support engineer asks for first, as files of an archive: the launch log, versions, the machine,
// settings, listings with hashes and rights, and what the validator finds. The content of projects,
// packages, keys and nonces is never part of it, and no user name, password or token of an address.
#pragma once

#include "frame/data_folder.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QVector>

namespace ctl {

struct SupportFile {
    QString name;
    QByteArray content; // UTF-8
};

struct SupportSources {
    DataFolder data;            // the launcher's
    bool keepHomePaths = false; // else the folder of a user is written as "~" everywhere
    QString libraryError;       // why the function library is not loaded; empty: it is
};

// The files, read from `sources` and from the installation that is being inspected. What cannot be
// read is said in the file itself, also of a pipe or a device, which is not opened. Blocks for the
// hashes, at most until interrupted(): then the listings are not whole.
[[nodiscard]] QVector<SupportFile> supportFiles(const SupportSources &sources);

// The launcher's own settings, under their keys, and `recent_projects`; `error` alone, if they cannot be
// read. Waits two seconds for a program that holds the file.
[[nodiscard]] QJsonObject launcherSettings(const QString &databasePath);

} // namespace ctl
