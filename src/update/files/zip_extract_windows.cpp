#include "update/files/zip_extract.h"

#include "update/files/zip_names.h"

bool unpackZip(const QString &zipPath, const QString &targetFolder, int limitMs,
               ZipFailure *failure) {
    if (powershellUnpack(zipPath, targetFolder, limitMs, &failure->reason))
        return true;
    // PowerShell has nothing but its text to say so.
    failure->isUnsafe = failure->reason.contains(unsafeNameMark());
    return false;
}
