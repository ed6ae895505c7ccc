// Changes to files and folders of which Windows refuses some while a virus scanner or an indexer looks into
// them. They are tried again as long as Patience has it; elsewhere nobody's look is in the way, and they are
// done once. patient_files_portable.cpp, patient_files_windows.cpp.
//
// What an update does to a project step by step is none of these: see file_operations.h. Free functions, for
// any thread. Failure is false, with "<path>: <reason>" in `error` where a place for it is given.
#pragma once

#include <QString>

// Renames a file or a folder, on one volume, to a place where nothing is.
[[nodiscard]] bool renameWhenFree(const QString &from, const QString &to);

// Renames a file over the one at `to`, if there is one, in one step.
[[nodiscard]] bool renameOverWhenFree(const QString &from, const QString &to, QString *error);

// Removes a file; on Windows also one that is marked as read-only.
[[nodiscard]] bool removeFileWhenFree(const QString &path, QString *error = nullptr);

// As removeDirectory() does.
[[nodiscard]] bool removeFolderWhenFree(const QString &path, QString *error = nullptr);

// Returns once nobody else has the file open that is to be replaced, if there is one, or it takes too long:
// replacing it then says so.
void waitUntilFree(const QString &path);
