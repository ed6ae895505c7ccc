// Changes to files that a power cut does not take back, or leaves as they were: the files have a pair of
// halves, sure_files_portable.cpp and sure_files_windows.cpp; what both share is in sure_files.cpp.
//
// Free functions without state. Failure is false with the reason, in English, in `error`. What a virus scanner
// or an indexer has open for a moment is tried again, as update/files/patient_files.h has it.
#pragma once

#include <QByteArray>
#include <QString>

namespace placer {

// Renames a file, on one volume, to a place where nothing is; it is refused where something is. The file
// may be a running program. The folder of the new place is there: a rename then takes no room on the disk.
[[nodiscard]] bool moveFile(const QString &from, const QString &to, QString *error);

// Renames a file over the one at `to`, if there is one: at any moment one of them is there, whole.
[[nodiscard]] bool moveOver(const QString &from, const QString &to, QString *error);

// The file is there with these bytes, or as it was before. Writes `path` with ".part" behind it first.
[[nodiscard]] bool writeSurely(const QString &path, const QByteArray &bytes, QString *error);

// Removes what can be removed of a folder, and asks the system to remove the rest at its next start; it
// does so for administrators alone. False if something is left.
bool removeNowOrLater(const QString &folder);

} // namespace placer
