#include "launcher/offer/project_apply.h"

#include "frame/app_paths.h"
#include "launcher/offer/apply_places.h"
#include "launcher/offer/project_location.h"
#include "launcher/offer/stick_package.h"
#include "project/project_file.h"
#include "project/project_validator.h"
#include "update/files/failure.h"
#include "update/files/file_operations.h"
#include "update/files/work_lock.h"
#include "update/files/zip_extract.h"
#include "update/http_fetch.h"
#include "update/manifest_keys.h"
#include "update/manifest_signature.h"
#include "update/package_address.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QLockFile>
#include <QUrl>

namespace {

// The steps of one apply, in their order. Each returns whether to go on; one that does not has put
// the reason into `result`.
struct ProjectApply {
    const UpdateSnapshot &snapshot;
    const QString &projectPath;
    const CancelFlag *cancelRef;
    const LockWait &wait;
    ApplyResult result = {};
    QString zip = {}; // as it is told
    QString staging = {};
    StickPackage copy = {};
    bool copyFailed = false;
    QLockFile turn{AppPaths::updateTempPath(apply_places::lockName())};

    [[nodiscard]] bool goesOn();
    [[nodiscard]] bool trustManifest();
    [[nodiscard]] bool getPackage();
    [[nodiscard]] bool knowsHash();
    [[nodiscard]] bool copyPackage();
    [[nodiscard]] bool checkPackage();
    [[nodiscard]] bool takeTurn();
    void clearStaging();
    [[nodiscard]] bool unpack();
    [[nodiscard]] bool validate();
    [[nodiscard]] bool replace(const QElapsedTimer &clock);

private:
    [[nodiscard]] QString record(QLatin1String key) const {
        return snapshot.projectEntry.value(key).toString();
    }
    [[nodiscard]] QString expectedHash() const {
        return record(manifest_keys::zipSha256).trimmed();
    }
    [[nodiscard]] QString readFrom() const { return copy.path().isEmpty() ? zip : copy.path(); }
    [[nodiscard]] bool failToUnpack(QString error);
    bool fail(const QString &message, const QString &errorClass = QString());
};

bool ProjectApply::fail(const QString &message, const QString &errorClass) {
    result.message = message;
    result.errorClass = errorClass;
    return false;
}

bool ProjectApply::goesOn() {
    return !isCancelled(cancelRef) || fail(cancelledText(), cancelledText());
}

// A second time, at the moment of use.
bool ProjectApply::trustManifest() {
    const QString verify = QStringLiteral("verify");
    if (snapshot.manifestText.isEmpty())
        return fail(QStringLiteral("No cached manifest for apply."), verify);
    const VerifyResult proof = verifyManifest(snapshot.manifestText);
    return proof.ok ||
           fail(QStringLiteral("Apply pre-check signature failed: %1").arg(proof.message), verify);
}

bool ProjectApply::getPackage() {
    QString error;
    if (resolveUpdateZip(snapshot, &zip, &error, cancelRef))
        return true;
    // Told by the text: an error that holds the word counts as a cancel, wherever it comes from.
    const bool cancelled = error.contains(cancelledText(), Qt::CaseInsensitive);
    return fail(QStringLiteral("Unable to resolve update zip: %1").arg(error),
                cancelled ? cancelledText() : QStringLiteral("network"));
}

bool ProjectApply::knowsHash() {
    return !expectedHash().isEmpty() ||
           fail(QStringLiteral("zipSha256 is required in manifest."), QStringLiteral("verify"));
}

// What lies on a stick can be exchanged between its proof and its use. Where it cannot be copied, its
// hash is told as always, and nothing is unpacked.
bool ProjectApply::copyPackage() {
    removeLeftPackages(); // also those of another update: they take room
    if (!snapshot.fromUsb)
        return true;
    const StickPackage::Outcome outcome = copy.copyFrom(zip, cancelRef);
    copyFailed = outcome == StickPackage::Outcome::Failed;
    return outcome != StickPackage::Outcome::Cancelled || fail(cancelledText(), cancelledText());
}

bool ProjectApply::checkPackage() {
    const VerifyResult check = verifyFileSha256(readFrom(), expectedHash(), zip);
    return check.ok || fail(QStringLiteral("Update zip hash failed: %1").arg(check.message),
                            QStringLiteral("hash"));
}

// Of two launchers on this data folder each would take the folders from under the other's hands, and
// the project with them. Where no lock can be written, nothing can be unpacked either.
bool ProjectApply::takeTurn() {
    const QString path = AppPaths::updateTempPath(apply_places::lockName());
    switch (waitForLock(turn, path, wait, cancelRef)) {
    case LockOutcome::Refused:
        return fail(QStringLiteral("another launcher is applying an update"));
    case LockOutcome::Cancelled:
        return fail(cancelledText(), cancelledText());
    case LockOutcome::Taken:
    case LockOutcome::Impossible:
        break;
    }
    return true;
}

void ProjectApply::clearStaging() {
    staging = AppPaths::updateTempPath(apply_places::stagingPrefix() + apply_places::stamp());
    (void)removeDirectory(staging); // a leftover makes the extraction fail, with a text
}

// The copy is told as what it is one of.
bool ProjectApply::failToUnpack(QString error) {
    if (!copy.path().isEmpty()) {
        error.replace(copy.path(), zip);
        error.replace(QDir::toNativeSeparators(copy.path()), QDir::toNativeSeparators(zip));
    }
    return fail(QStringLiteral("Extract failed: %1").arg(error));
}

bool ProjectApply::unpack() {
    if (copyFailed) {
        // As the extraction would say it: mostly it is this folder's disk.
        return failToUnpack(
            QDir().mkpath(staging)
                ? QStringLiteral("unable to copy file: %1").arg(zip)
                : QStringLiteral("unable to create destination directory: %1").arg(staging));
    }
    QString error;
    if (!extractZip(readFrom(), staging, &error))
        return failToUnpack(error);
    copy.remove(); // the backup needs the room
    return true;
}

bool ProjectApply::validate() {
    const QString project = findProjectFile(staging);
    if (project.isEmpty())
        return fail(QStringLiteral("No yslib found in extracted package."));
    const QStringList errors = errorLines(validateProjectFile(project));
    return errors.isEmpty() ||
           fail(QStringLiteral("Apply validator failed:\n%1").arg(errors.join(QLatin1Char('\n'))));
}

bool ProjectApply::replace(const QElapsedTimer &clock) {
    const QString normalized = normalizedProjectPath(projectPath);
    const QString project = normalized.isEmpty() ? projectPath : normalized;
    // Without a project there is no folder to replace, and replaceDirectory refuses.
    const QString target = project.isEmpty() ? QString() : QFileInfo(project).absolutePath();
    const QString backup =
        QDir(AppPaths::updateBackupDirectory())
            .filePath(apply_places::backupPrefix(target) + apply_places::stamp());
    if (!goesOn()) // the last chance: from here on the folder is replaced
        return false;
    QString error;
    if (!replaceDirectory(staging, target, {apply_places::keptFolder()}, backup, &error)) {
        // The backup is there only if making it failed: then what was copied of the project takes
        // the project's place. Meant: the folder ends as the backup has it
        // (aPartialBackupReplacesTheProject). Nothing is left to do if that fails too.
        (void)restoreDirectory(backup, target);
        return fail(QStringLiteral("Replace failed, rolled back: %1").arg(error));
    }
    const QString replaced = findProjectFile(target);
    if (replaced.isEmpty()) {
        (void)restoreDirectory(backup, target); // finds no backup: theProjectFileIsGoneAfterTheSwap
        return fail(QStringLiteral("No yslib after replace, rolled back."));
    }
    const QString version = record(manifest_keys::version);
    (void)stampProjectVersion(replaced, version); // an update without a stamp is still an update
    result.success = true;
    result.projectPath = replaced;
    // Names the backup although a successful swap has removed it
    // (theWholeFolderIsReplacedApartFromTheLogs).
    result.message = QStringLiteral("Project updated to %1 in %2 ms. Backup: %3")
                         .arg(version, QString::number(clock.elapsed()), backup);
    return true;
}

} // namespace

ApplyResult applyProjectUpdate(const UpdateSnapshot &snapshot, const QString &projectPath,
                               const CancelFlag *cancelRef) {
    return applyProjectUpdateWithin(snapshot, projectPath, cancelRef, {120000, 100});
}

ApplyResult applyProjectUpdateWithin(const UpdateSnapshot &snapshot, const QString &projectPath,
                                     const CancelFlag *cancelRef, const LockWait &wait) {
    QElapsedTimer clock;
    clock.start();
    ProjectApply apply{snapshot, projectPath, cancelRef, wait};
    if (!apply.goesOn() || !apply.trustManifest() || !apply.getPackage() || !apply.knowsHash() ||
        !apply.copyPackage() || !apply.checkPackage() || !apply.takeTurn())
        return apply.result;
    apply.clearStaging();
    if (!apply.goesOn())
        return apply.result;
    if (!apply.unpack() || !apply.goesOn() || !apply.validate() || !apply.goesOn() ||
        !apply.replace(clock))
        (void)removeDirectory(apply.staging); // a leftover does no harm: each apply has its own
    return apply.result;
}

bool resolveUpdateZip(const UpdateSnapshot &snapshot, QString *zipPath, QString *error,
                      const CancelFlag *cancelRef) {
    if (isCancelled(cancelRef))
        return fail(cancelledText(), error);
    const QString zipUrl = snapshot.projectEntry.value(manifest_keys::zipUrl).toString();
    if (zipUrl.isEmpty())
        return fail(QStringLiteral("zipUrl is empty"), error);
    const auto notFound = [&] {
        return fail(QStringLiteral("update zip not found: %1").arg(*zipPath), error);
    };
    if (snapshot.fromUsb) {
        *zipPath = QDir(snapshot.baseLocation).filePath(zipUrl);
        return QFileInfo(*zipPath).isFile() || notFound();
    }
    const QString name = packageFileName(zipUrl);
    *zipPath = QDir(AppPaths::updateCacheDirectory()).filePath(name);
    if (!UpdateContext::isPackageName(name) || QFileInfo(*zipPath).isDir())
        return notFound();
    // Never reused: a package in the cache is overwritten.
    return downloadToFile(QUrl(UpdateContext::resolveManifestUrl(snapshot, zipUrl)), *zipPath,
                          error, cancelRef);
}

QString findProjectFile(const QString &folder) {
    const QDir place(QDir(folder).absolutePath());
    const QFileInfo named(place.filePath(place.dirName() + QStringLiteral(".yslib")));
    // A folder of that name is taken for it too. Meant: findProjectFile.
    return named.exists() ? named.absoluteFilePath()
                          : findFileBySuffix(folder, QStringLiteral(".yslib"));
}
