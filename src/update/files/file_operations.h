// The folder operations on which updates rest: find, copy, remove, replace with a way back.
//
// Free functions without state, for any thread. Failure is a false or null result, with the reason
// in English and untranslated in `error` if a place is given. Links (symbolic ones and Windows
// junctions) are entries, never ways in: removing takes the link, and copying does not descend.
#pragma once

#include <QString>
#include <QStringList>

// The first file anywhere below `folder` whose name ends in `suffix`, in no defined order; null if
// there is none.
[[nodiscard]] QString findFileBySuffix(const QString &folder, const QString &suffix);

// Removes the folder with all that it holds. A path that does not exist counts as removed.
[[nodiscard]] bool removeDirectory(const QString &path, QString *error = nullptr);

// Copies what `source` holds into `target`, over files of the same name. Hidden entries are left
// out; a link to a file becomes a file, a link to a folder an empty folder; a link to anything else
// is left out. The first failure ends it, and what was copied so far stays.
[[nodiscard]] bool copyDirectory(const QString &source, const QString &target,
                                 QString *error = nullptr);

// Whether no more than `target` itself would be taken away with it: it is not empty, not the root of a file
// system, and none of `others` is it or lies in it, by whatever name. None of them need exist.
[[nodiscard]] bool mayBeReplaced(const QString &target, const QStringList &others);

// Puts the folder `staging` in the place of `target`, through a copy of the old one at `backup`
// (blank: `target` with ".apply_backup" behind it) that is gone after a success. The folders named
// in `preservedNames` are first copied from `target` into `staging`, where their files win. Refuses
// a target that is empty, the root of a file system, holds staging, backup or the program, or that is
// seen beforehand to hold a file that cannot be copied, or something that cannot be removed.
[[nodiscard]] bool replaceDirectory(const QString &staging, const QString &target,
                                    const QStringList &preservedNames, const QString &backup,
                                    QString *error = nullptr);

// Puts `backup` in the place of `target`, which is removed first.
[[nodiscard]] bool restoreDirectory(const QString &backup, const QString &target,
                                    QString *error = nullptr);

// The first step of a replacement: a fresh copy of `target` at `backup`.
[[nodiscard]] bool backUpDirectory(const QString &target, const QString &backup,
                                   QString *error = nullptr);
