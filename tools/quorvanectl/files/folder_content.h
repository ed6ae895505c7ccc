// What lies in a folder, to be compared with what lies in another.
#pragma once

#include <QMap>
#include <QString>

namespace ctl {

// The entries below a folder: relative path and size in bytes. A folder ends in a slash and has
// size 0. As a copy of a project has them: hidden entries are left out, a link to a folder is an
// empty folder. What a copy that was killed leaves under a temporary name is left out, too.
struct FolderContent {
    QString folder;
    QMap<QString, qint64> entries;

    [[nodiscard]] int files() const;
};

// False, with a line that names it, if a folder cannot be listed. A folder that does not exist is
// empty.
[[nodiscard]] bool readContent(const QString &folder, FolderContent *content, QString *error);

// The same without what lies below that folder: logs go on being written.
[[nodiscard]] FolderContent without(FolderContent content, const QString &subfolder);

// Whether all of `part` lies in `whole` with the same bytes. One file of `part` may have been cut
// off: its bytes are those of `whole` up to a point, with nothing or zeros behind it, as a copy is
// left by a process that was killed. A file that cannot be read is no part of anything.
[[nodiscard]] bool isPartOf(const FolderContent &part, const FolderContent &whole);

// Whether both hold the same entries with the same bytes.
[[nodiscard]] bool isSame(const FolderContent &one, const FolderContent &other);

} // namespace ctl
