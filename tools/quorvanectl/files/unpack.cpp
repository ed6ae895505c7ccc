#include "quorvanectl/files/unpack.h"

#include "update/files/failure.h"
#include "update/files/zip_unpack.h"

namespace ctl {

bool unpack(const QString &zipPath, const QString &targetFolder, ZipFailure *failure) {
    return extractZipBy(unpackByLibzip, zipPath, targetFolder, failure);
}

bool unpackSome(const QString &zipPath, const QString &targetFolder,
                const std::function<bool(const QString &name)> &leavesOut, ZipFailure *failure) {
    const auto unpackSomeOfIt = [&](const QString &zip, const QString &target, int limitMs,
                                    ZipFailure *why) {
        return unpackSomeByLibzip(zip, target, limitMs, leavesOut, why);
    };
    return extractZipBy(unpackSomeOfIt, zipPath, targetFolder, failure);
}

bool unpack(const QString &zipPath, const QString &targetFolder, QString *error) {
    ZipFailure failure;
    return unpack(zipPath, targetFolder, &failure) || fail(failure.reason, error);
}

} // namespace ctl
