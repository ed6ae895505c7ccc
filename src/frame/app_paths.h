// Where every file and folder of the launcher lives.
//
// One executable serves two layouts: an installation (the program's folder, with USER beside it)
// and a source tree (the program was built somewhere below the root). The root folder that tells
// them apart is found once, by initialize(); every path is computed from the program's folder, the
// root and the data folder. Nothing is stored, so an installation can be moved.
#pragma once

#include <QString>
#include <QStringList>

// The key that proves updates, in the folder of an installation's configuration; a publisher's new key is
// written under this name.
inline constexpr char updatePublicKeyName[] = "update.pub";

class AppPaths {
public:
    // Finds the root, makes the folders that the program writes to and seeds the demo project.
    // Safe to call again. Main thread; everything below may be called from any thread after it.
    static void initialize();

    // Lets all paths answer for another installation than the one this program belongs to, whose
    // program's folder is `applicationDirectory`. For the command line tool alone, instead of
    // initialize(): it only looks, so nothing is made and nothing is seeded from then on, also not
    // by a later initialize(). The data folder stays that of this user. Main thread, before others
    // start.
    static void inspect(const QString &applicationDirectory);

    // The program's folder, and the launcher in it.
    [[nodiscard]] static QString applicationDirectory();
    [[nodiscard]] static QString applicationFile();
    // What bears this name in the program's folder, or would.
    [[nodiscard]] static QString besideLauncher(const QString &name);

    // Empty until initialize() has run.
    [[nodiscard]] static QString repositoryRoot();
    // Whether the root is a source tree: it holds Quorvane.pro. Initialises an empty root.
    [[nodiscard]] static bool isRepositoryLayout();
    // The folder above the binaries. Initialises an empty root.
    [[nodiscard]] static QString installRoot();

    // The data folder, and what lies in it. Paths only: nothing is created here.
    [[nodiscard]] static QString dataDirectory();
    [[nodiscard]] static QString databasePath();
    [[nodiscard]] static QString launchLogPath();
    [[nodiscard]] static QString dumpsDirectory();
    [[nodiscard]] static QString launchNoncePath(qint64 pid);
    [[nodiscard]] static QString updateTempPath(const QString &name);
    [[nodiscard]] static QString updateBackupDirectory();
    [[nodiscard]] static QString updateCacheDirectory();

    // The user's folder; it need not exist.
    [[nodiscard]] static QString userDirectory();
    // The projects in the user's folder; created if missing, so it exists if it can.
    [[nodiscard]] static QString projectsDirectory();

    // What ships with the program: beside it, else in the root.
    [[nodiscard]] static QString pluginsDirectory();
    [[nodiscard]] static QString configDirectory();
    [[nodiscard]] static QString functionLibraryPath();
    [[nodiscard]] static QString updatePublicKeyPath();

    // Where the English translation may lie, the first place first.
    [[nodiscard]] static QStringList translationFiles();

    // Where an update manifest lies on a stick, its packages beside it or below.
    [[nodiscard]] static QString stickManifestPath(const QString &volumeRoot);
    // The update manifest on the first mounted and ready volume that has one; empty if none has.
    [[nodiscard]] static QString findUsbManifest();
    // The same walk over given volume roots, in their order.
    [[nodiscard]] static QString findUsbManifest(const QStringList &volumeRoots);
};
