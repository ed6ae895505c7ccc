#include "update/files/zip_extract.h"

bool unpackZip(const QString &zipPath, const QString &targetFolder, int limitMs, QString *error) {
    return powershellUnpack(zipPath, targetFolder, limitMs, error);
}
