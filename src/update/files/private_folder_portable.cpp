#include "update/files/private_folder.h"

#include <QFile>

#include <sys/stat.h>

bool makePrivateFolder(const QString &path) {
    return ::mkdir(QFile::encodeName(path).constData(), S_IRWXU) == 0;
}
