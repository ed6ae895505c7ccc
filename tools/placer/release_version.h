// config/release_version.json: the versions of all components, each written by its own installer.
//
// The launcher reads the file and never writes it. Other installers may write it at the same moment: it is
// read, changed and replaced by one rename, and read once more just before that.
#pragma once

#include "placer/places.h"

#include <QString>

namespace placer {

inline constexpr char launcherVersionKey[] = "launcherPackageVersion";

struct VersionFiles {
    QString path;
    QString prepared; // where the next content is written first
};

[[nodiscard]] inline VersionFiles versionFiles(const Places &places) {
    return {places.at(QLatin1String(releaseVersionPath)),
            places.fresh(QLatin1String(releaseVersionPath))};
}

// Writes what will be the file's next content, as long as nobody else writes to it: from then on giving the
// launcher its version takes no room on the disk.
[[nodiscard]] bool prepareLauncherVersion(const VersionFiles &files, const QString &version,
                                          QString *error);

// Gives the launcher's key this value and keeps all others. A file that holds no JSON object is renamed:
// `setAside` then has its new name, else it is empty. Its text is read as the launcher reads it: behind a
// byte-order mark, in UTF-8 or in GBK.
[[nodiscard]] bool writeLauncherVersion(const VersionFiles &files, const QString &version,
                                        QString *setAside, QString *error);

// Takes the launcher's key away, and the file with it if it has no other. What cannot be read stays.
[[nodiscard]] bool removeLauncherVersion(const QString &path, QString *error);

} // namespace placer
