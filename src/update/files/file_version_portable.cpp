#include "update/files/file_version.h"

// Executables carry no version here: config/release_version.json tells what is installed.
QString fileVersionText(const QString &path) {
    Q_UNUSED(path)
    return QString();
}
