// Replaces the folder of a project with the content of a signed package.
//
// Everything is checked before the live folder is touched: the manifest's signature once more, the
// package's hash, and the unpacked project itself. For a worker; all arguments are its own copies.
// Texts are English and untranslated.
#pragma once

#include "launcher/offer/update_context.h"
#include "update/files/work_lock.h"

#include <QString>

// Fetches the package of snapshot.projectEntry, unpacks it beside the project and swaps the folders.
// The whole folder is replaced, apart from its sub-folder `logs`. Blocks for the download, the
// extraction and the copying. `cancelRef` may be null; it is read up to the swap and not after it.
// The backup that a success names is gone by then. Of two launchers on one data folder the second waits
// up to two minutes for the first one to be done, and is refused then.
[[nodiscard]] ApplyResult applyProjectUpdate(const UpdateSnapshot &snapshot,
                                             const QString &projectPath,
                                             const CancelFlag *cancelRef);

// The same with another wait for the other launcher.
[[nodiscard]] ApplyResult applyProjectUpdateWithin(const UpdateSnapshot &snapshot,
                                                   const QString &projectPath,
                                                   const CancelFlag *cancelRef,
                                                   const LockWait &wait);

// The package on this machine: on the stick, or downloaded anew into the cache. An error that holds
// the word "cancelled" is a cancel.
[[nodiscard]] bool resolveUpdateZip(const UpdateSnapshot &snapshot, QString *zipPath,
                                    QString *error = nullptr,
                                    const CancelFlag *cancelRef = nullptr);

// The project file of a folder: what bears the folder's name there, be it a folder, else the first
// file found anywhere below; empty if there is none.
[[nodiscard]] QString findProjectFile(const QString &folder);
