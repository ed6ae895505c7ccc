#include "quorvanectl/release/site_lock.h"

#include "update/files/failure.h"
#include "update/files/work_lock.h"

#include <QDir>

namespace ctl {

SiteLock::SiteLock(const QString &siteFolder)
    : site(siteFolder)
    , path(QDir(siteFolder).filePath(QStringLiteral(".quorvanectl-release.lock")))
    , lock(path) {}

bool SiteLock::take(QString *error) {
    if (takeLock(lock, path))
        return true;
    if (lock.error() != QLockFile::LockFailedError)
        return failAbout(site, QStringLiteral("cannot write there"), error);
    qint64 process = 0;
    QString host;
    QString program;
    const bool isTold = lock.getLockInfo(&process, &host, &program);
    return failAbout(site,
                     isTold ? QStringLiteral("another release is at work there: process %1 on %2")
                                  .arg(QString::number(process), host)
                            : QStringLiteral("another release is at work there"),
                     error);
}

} // namespace ctl
