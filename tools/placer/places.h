// Where what belongs to the installer lies in an installation.
//
//     DIR/bin and others      what a package brings
//     DIR/USER                            the user's folder; nothing here removes or changes what is in it
//     DIR/setup/installed.json            what the last package brought, and the run that brought it
//     DIR/setup/journal.json              stands while files are exchanged
//     DIR/setup/lock                      held by the placer that is at work
//     DIR/setup/<run>/package.json        what is to be installed, with the hash of each file
//     DIR/setup/<run>/new/                its files, until they are in place
//     DIR/setup/<run>/old/                files that had to make room
//     DIR/setup/<run>/tool/               the placer of this run, and the uninstaller
//     DIR/setup/<run>/report.txt          what the installer is to tell, for this run
//
// A run is a number that the installer takes anew each time, so no run writes over what another needs.
#pragma once

#include <QDir>
#include <QString>

namespace placer {

inline constexpr char userFolder[] = "USER";
inline constexpr char setupFolder[] = "setup";

struct Places {
    QString root; // the installation
    QString run;

    [[nodiscard]] QString at(const QString &path) const { return QDir(root).filePath(path); }
    [[nodiscard]] QString setup() const { return at(QLatin1String(setupFolder)); }
    [[nodiscard]] QString ofRun(const QString &name) const {
        return setup() + QLatin1Char('/') + run + QLatin1Char('/') + name;
    }
    [[nodiscard]] QString fresh(const QString &path) const {
        return ofRun(QStringLiteral("new/") + path);
    }
    [[nodiscard]] QString old(const QString &path) const {
        return ofRun(QStringLiteral("old/") + path);
    }
    [[nodiscard]] QString journal() const { return setup() + QStringLiteral("/journal.json"); }
};

inline constexpr char installedListPath[] = "setup/installed.json";
inline constexpr char configFolder[] = "bin/config/";
inline constexpr char publicKeyPath[] = "bin/config/update.pub";
inline constexpr char releaseVersionPath[] = "bin/config/release_version.json";
// Exchanged last: until it is, a start is one of the old program or none.
inline constexpr char launcherPath[] = "bin/Quorvaner.exe";

} // namespace placer
