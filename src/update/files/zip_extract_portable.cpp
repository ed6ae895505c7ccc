#include "update/files/zip_extract.h"

#include "update/files/zip_unpack.h"

bool unpackZip(const QString &zipPath, const QString &targetFolder, int limitMs,
               ZipFailure *failure) {
    return unpackByLibzip(zipPath, targetFolder, limitMs, failure);
}
