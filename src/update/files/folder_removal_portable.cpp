#include "update/files/folder_removal.h"

#include <QDir>

bool removeEmptyFolder(const QString &folder) {
    return QDir().rmdir(folder);
}
