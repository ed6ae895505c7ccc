#include "update/files/folder_removal.h"
#include "update/files/read_only_mark_windows.h"

#include <QDir>

// A folder that is marked as read-only is not removed there, although files in it can be.
bool removeEmptyFolder(const QString &folder) {
    if (QDir().rmdir(folder))
        return true;
    const WithoutReadOnlyMark unmarked(folder);
    return unmarked.wasMarked() && QDir().rmdir(folder);
}
