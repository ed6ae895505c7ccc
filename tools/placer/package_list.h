// What a package holds, as the build wrote it down, and what was installed, as a later run reads it.
//
// Values and free functions. A list that cannot be read is told from none.
#pragma once

#include "placer/places.h"

#include <QByteArray>
#include <QMap>
#include <QString>

namespace placer {

struct PackageList {
    QString version;
    QString run;              // of an installed list: which run brought it
    bool replacesKey = false; // the publisher brings another update.pub on purpose
    // Paths from the installation's folder, with slashes, and the SHA-256 of each in small hexadecimal.
    QMap<QString, QString> files;
};

// Whether this is a path that a package may have: relative, never up, in no spelling that Windows changes, and
// neither in USER nor in the folder of the installer itself.
[[nodiscard]] bool isPackagePath(const QString &path);

// The list in a JSON file. False if it cannot be read, is no such list, or names a path that is not ours.
[[nodiscard]] bool readList(const QString &path, PackageList *list, QString *error);

[[nodiscard]] QByteArray listText(const PackageList &list);

// The list of what is installed; an empty one where there is none, or none that can be read: then no file
// is known to be unchanged.
[[nodiscard]] PackageList installedList(const Places &places);

// Whether all files of the list lie in `new` as the publisher made them, and the disk has them.
[[nodiscard]] bool isPackageWhole(const Places &places, const PackageList &list, QString *error);

} // namespace placer
