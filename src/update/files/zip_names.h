// The names in a zip archive as they are stored, for what the zip reader does not show: a name that
// holds a NUL looks to it like one that ends there.
#pragma once

#include <QDeadlineTimer>
#include <QString>

// False with "unsafe zip entry: " and the name if a name in the archive's directory, or before an
// entry's data, holds a NUL. An archive that cannot be followed passes: the reader refuses it. So does
// one of so many names that the deadline comes first: the reader, which is given the same, ends there.
[[nodiscard]] bool checkStoredNames(const QString &zipPath, const QDeadlineTimer &deadline,
                                    QString *error = nullptr);

// Whether the archive is nothing but an end record: valid, and unknown to the zip reader.
[[nodiscard]] bool isEmptyArchive(const QString &zipPath);

// How the reason begins where a name leads out of the target.
[[nodiscard]] QString unsafeNameMark();

// Characters below U+0020, and delete.
[[nodiscard]] bool hasControlCharacter(const QString &name);
