// The names in a zip archive byte by byte, before libzip reads them.
#pragma once

#include "update/files/zip_extract.h"

#include <QDeadlineTimer>
#include <QFile>

// Looks at what libzip leaves out, so these few fields of the format are read here:
// - It shows a NUL in a name as a blank, and takes both for the same.
// - It keeps to itself whether a name is said to be UTF-8.
// - It chooses among several ends of the directory, where other readers choose another, and lets bytes
//   stand between the directory and its end: a directory that says it is empty would be.
// - It enters all names in a table before a caller can say a word, which takes hours where they are made
//   to be alike there.
//
// False if a name holds a NUL, differs between the directory and the place before the entry's data, or
// is not the UTF-8 that it is said to be; if the archive has two ends, or a directory that is not whole;
// or if it has too many names. An archive that cannot be followed passes: libzip refuses it.
[[nodiscard]] bool checkStoredNames(QFile &file, const QDeadlineTimer &deadline,
                                    ZipFailure *failure);

// What an archive of such a directory is refused with.
[[nodiscard]] QString tooLargeDirectory();
[[nodiscard]] QString inconsistentArchive();
