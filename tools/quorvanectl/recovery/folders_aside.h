// How a recovery makes room: by names that are free, never by removing anything.
#pragma once

#include <QString>
#include <QStringList>

namespace ctl {

// `path` with `suffix` behind it, and a number behind that where the name is taken.
[[nodiscard]] QString freeName(const QString &path, const QString &suffix);

// A free name beside `path`, with the time in it.
[[nodiscard]] QString asideOf(const QString &path);

// Renames `source` to `target`. What lies there makes way to the first of the names in `asides` that can be
// taken, told in `keptAs`, and comes back if the source cannot follow.
[[nodiscard]] bool swapIn(const QString &source, const QString &target, const QStringList &asides,
                          QString *keptAs, QString *error);

// The name beside a project's folder under which a copy is made that is to take its place.
[[nodiscard]] QString copyName(const QString &target);

// Gives the folder of a left-over a name under which it is never again taken for one, and adds that to
// `done`. A folder that cannot be renamed is weighed again next time, with the same result.
void retire(const QString &folder, QStringList *done);

} // namespace ctl
