// What a project apply leaves on the disk, and under which names: written by the apply, and read by
// whoever looks at what a broken-off one has left.
#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

namespace apply_places {

// Now, as names end in it: yyyyMMdd_HHmmss in UTC.
[[nodiscard]] QString stamp();
// The time at the end of a name; invalid for a name that does not end in one. Only for comparing
// such times with each other.
[[nodiscard]] QDateTime stampOf(const QString &name);
// Whether the name is `prefix` and a time, and nothing else.
[[nodiscard]] bool isStamped(const QString &name, const QString &prefix);

// What stands before the time: of the unpacked package in the folder `temp`, and of the backup of
// this project's folder in the folder `backup`.
[[nodiscard]] QString stagingPrefix();
[[nodiscard]] QString backupPrefix(const QString &projectFolder);

// The folder in `temp` that a stick's package is copied to: what stands before a number in hexadecimal
// digits, and the lock that lies beside it as long as it is in use. Then all of them, those of which
// nothing but the lock is there too.
[[nodiscard]] QString packagePrefix();
[[nodiscard]] QString packageLock(const QString &packageFolder);
[[nodiscard]] QStringList packageFolders(const QString &temp);

// The lock that an apply holds, in the folder `temp`.
[[nodiscard]] QString lockName();

// The folder in a project's folder that belongs to the line PC and outlasts every update.
[[nodiscard]] QString keptFolder();

} // namespace apply_places
