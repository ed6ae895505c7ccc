#include "update/file_copy.h"

#include <QFile>

bool copyFileContent(const QString &source, const QString &destination) {
    return QFile::copy(source, destination);
}
