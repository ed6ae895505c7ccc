#include "launcher/offer/stick_package.h"

#include "frame/app_paths.h"
#include "launcher/offer/apply_places.h"
#include "update/files/file_operations.h"
#include "update/files/patient_files.h"
#include "update/files/private_folder.h"
#include "update/files/work_lock.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

namespace {

constexpr int copyPiece = 1048576; // bytes

using Outcome = StickPackage::Outcome;

Outcome copyInPieces(QFile &source, QFile &target, const CancelFlag *cancelRef) {
    QByteArray piece(copyPiece, Qt::Uninitialized);
    for (;;) {
        if (isCancelled(cancelRef))
            return Outcome::Cancelled;
        const qint64 got = source.read(piece.data(), piece.size());
        if (got == 0)
            return Outcome::Made;
        if (got < 0 || target.write(piece.constData(), got) != got)
            return Outcome::Failed;
    }
}

Outcome copyFile(const QString &from, const QString &to, const CancelFlag *cancelRef) {
    QFile source(from);
    QFile target(to);
    // Opening a pipe would wait for its other end.
    if (!QFileInfo(from).isFile() || !source.open(QIODevice::ReadOnly | QIODevice::Unbuffered) ||
        !target.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered))
        return Outcome::Failed;
    return copyInPieces(source, target, cancelRef);
}

} // namespace

StickPackage::~StickPackage() {
    remove();
}

// The lock comes first and goes last, so that a folder without it is one that was left.
bool StickPackage::makeFolder() {
    const QString path =
        AppPaths::updateTempPath(apply_places::packagePrefix() +
                                 QString::number(QRandomGenerator::system()->generate64(), 16));
    const QString lock = apply_places::packageLock(path);
    inUse = std::make_unique<QLockFile>(lock);
    if (!QDir().mkpath(AppPaths::updateTempPath(QString())) || !takeLock(*inUse, lock) ||
        !makePrivateFolder(path))
        return false;
    folder = path;
    return true;
}

Outcome StickPackage::copyFrom(const QString &package, const CancelFlag *cancelRef) {
    Outcome outcome = Outcome::Failed;
    if (makeFolder()) {
        copy = QDir(folder).filePath(QFileInfo(package).fileName());
        outcome = copyFile(package, copy, cancelRef);
    }
    if (outcome != Outcome::Made)
        remove();
    return outcome;
}

void StickPackage::remove() {
    if (!folder.isEmpty())
        (void)removeFolderWhenFree(folder); // the next apply tries again
    folder.clear();
    copy.clear();
    inUse.reset();
}

void removeLeftPackages() {
    for (const QString &folder :
         apply_places::packageFolders(AppPaths::updateTempPath(QString()))) {
        const QString lockPath = apply_places::packageLock(folder);
        QLockFile lock(lockPath);
        if (takeLock(lock, lockPath))
            (void)removeDirectory(folder); // a leftover does no harm
    }
}
