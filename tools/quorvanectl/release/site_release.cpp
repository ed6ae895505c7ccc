#include "quorvanectl/release/site_release.h"

#include "quorvanectl/files/file_access.h"
#include "quorvanectl/files/given_paths.h"
#include "quorvanectl/files/interruption.h"
#include "quorvanectl/files/json_input.h"
#include "quorvanectl/files/work_folder.h"
#include "quorvanectl/manifest/manifest_attach.h"
#include "quorvanectl/manifest/manifest_build.h"
#include "quorvanectl/manifest/manifest_format.h"
#include "quorvanectl/manifest/public_key.h"
#include "quorvanectl/release/site_lock.h"
#include "update/canonical_manifest.h"
#include "update/files/failure.h"
#include "update/files/file_copy.h"
#include "update/files/patient_files.h"
#include "update/files/place_facts.h"
#include "update/files/text_file.h"
#include "update/files/version_text.h"
#include "update/manifest_keys.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>

namespace ctl {
namespace {

const QLatin1String manifestName("manifest.json");
const QLatin1String packagesName("packages");

// What leads elsewhere would be replaced, and what it leads to would stay as it is.
bool isNoLink(const QString &path, QString *error) {
    return !isLink(QFileInfo(path)) ||
           failAbout(path, QStringLiteral("is a link; what it leads to is not written over"),
                     error);
}

// One release, step by step. The work folder has the site's form, so that the manifest that is made in it
// holds in the site.
class Release {
public:
    Release(const ReleaseWish &wanted, const SigningKey &signer, const QString &workFolder,
            ReleaseResult *to)
        : wish(wanted)
        , key(signer)
        , site(wanted.site)
        , work(workFolder)
        , result(to) {
        result->manifestPath = site.filePath(manifestName);
    }

    void run() {
        const bool isReady =
            readPublished() && pack() && isAbove() && mayComeIn() && build() && lint() && sign();
        result->ok = isReady && (wish.isTrial || putInPlace());
    }

private:
    bool readPublished();
    bool isAllSigned();
    bool pack();
    bool isAbove();
    bool mayComeIn();
    bool build();
    bool lint();
    bool sign();
    bool putInPlace();

    [[nodiscard]] QString packageName() const { return QFileInfo(result->pack.zipPath).fileName(); }
    [[nodiscard]] QString packed() const {
        return work.filePath(packagesName + QLatin1Char('/') + packageName());
    }

    const ReleaseWish &wish;
    const SigningKey &key;
    const QDir site;
    const QDir work;
    ReleaseResult *result;
    QByteArray published; // the manifest's bytes; null if there is none yet
    QJsonObject before;
    QJsonObject manifest;
};

bool Release::readPublished() {
    const QString path = result->manifestPath;
    if (!isTaken(path))
        return true;
    if (!isNoLink(path, &result->error))
        return false;
    const QString text = readJsonObject(path, &result->error);
    if (text.isNull())
        return false;
    published = text.toUtf8();
    before = QJsonDocument::fromJson(published).object();
    if (verifiesWith(text, key.publicPem()))
        return isAllSigned();
    result->fault =
        QStringLiteral("%1: is not signed with this key; nothing is carried over").arg(path);
    return false;
}

// Whoever may write to the site can have put such a key there: it is neither signed along with the rest nor
// dropped without a word.
bool Release::isAllSigned() {
    const QStringList unsignedKeys = unlistedKeys(before);
    if (unsignedKeys.isEmpty())
        return true;
    result->fault =
        QStringLiteral(
            "%1: holds what no signature covers and nobody reads: %2; take it out there, "
            "which leaves the signature valid, and release again")
            .arg(result->manifestPath, unsignedKeys.join(QStringLiteral(", ")));
    return false;
}

bool Release::pack() {
    const QString folder = work.filePath(packagesName);
    result->pack = packProject(wish.project, wish.version, folder, false);
    const QString inSite = site.filePath(packagesName);
    result->error = result->pack.error.replace(folder, inSite);
    result->pack.zipPath.replace(folder, inSite);
    return result->pack.ok;
}

bool Release::isAbove() {
    PackageRecord mine;
    mine.isProject = true;
    mine.record = {{manifest_keys::name, result->pack.projectName}};
    const QVector<PackageRecord> offered = packageRecords(before);
    for (const PackageRecord &other : offered) {
        if (other.identity() == mine.identity() &&
            compareVersions(wish.version, other.version()) <= 0) {
            return fail(QStringLiteral("--version %1: is not above %2, which %3 offers")
                            .arg(wish.version, other.version(), result->manifestPath),
                        &result->error);
        }
    }
    return true;
}

// Equal content gives equal bytes: a release that was broken off finds its own package again.
bool Release::mayComeIn() {
    const QString place = result->pack.zipPath;
    if (!isTaken(place))
        return true;
    QString reason;
    result->wasThere = QFileInfo(place).isFile() && !isLink(QFileInfo(place)) &&
                       fileSha256Hex(place, &reason) == result->pack.sha256;
    return result->wasThere ||
           failAbout(place,
                     QStringLiteral("lies there with other bytes; a package that has its name "
                                    "never changes: take another version"),
                     &result->error);
}

bool Release::build() {
    ManifestWish wanted;
    wanted.folder = work.path();
    wanted.base = wish.base;
    wanted.previous = before;
    wanted.publishedAt = timeBehind(before);
    wanted.projects = QStringList(packed());
    manifest = buildManifest(wanted, &result->error);
    const QVector<PackageRecord> offered = packageRecords(manifest);
    for (const PackageRecord &package : offered) {
        if (package.hash() != result->pack.sha256)
            result->carriedOver += QStringLiteral("%1: %2").arg(titleOf(package), package.url());
    }
    return !manifest.isEmpty();
}

bool Release::lint() {
    LintSubject subject;
    subject.manifest = manifestBytes(manifest);
    subject.folder = site.absolutePath();
    subject.ahead = work.absolutePath();
    subject.base = wish.base;
    subject.previous = published;
    result->lint = lintManifest(subject);
    return !hasErrors(result->lint);
}

// What was signed is written, read again and verified, before anything of it shows.
bool Release::sign() {
    const QString text = QString::fromUtf8(manifestBytes(manifest));
    const QByteArray signature = key.sign(canonicalManifestText(text).toUtf8());
    const QString place = work.filePath(manifestName);
    if (signature.isEmpty())
        return fail(QStringLiteral("OpenSSL cannot sign with this key"), &result->error);
    if (!writeFile(place, withSignature(text, signature).toUtf8(), false, &result->error))
        return false;
    const QString written = readText(place, &result->error);
    return !written.isNull() &&
           (verifiesWith(written, key.publicPem()) ||
            failAbout(result->manifestPath, QStringLiteral("what was signed does not verify"),
                      &result->error));
}

bool Release::putInPlace() {
    if (interrupted())
        return fail(QStringLiteral("interrupted"), &result->error);
    const QString folder = site.filePath(packagesName);
    const bool hadFolder = QFileInfo(folder).isDir();
    const bool isIn =
        (hadFolder || QDir().mkdir(folder) ||
         failAbout(folder, QStringLiteral("cannot be made"), &result->error)) &&
        (result->wasThere || renameOverWhenFree(packed(), result->pack.zipPath, &result->error));
    // A power cut leaves no manifest whose package is not on the disk.
    const bool isKept =
        isIn &&
        ((flushFolder(folder) && flushFolder(work.path())) ||
         failAbout(site.path(), QStringLiteral("cannot be brought to the disk"), &result->error));
    if (isKept &&
        renameOverWhenFree(work.filePath(manifestName), result->manifestPath, &result->error)) {
        (void)flushFolder(folder);
        return true;
    }
    if (isIn && !result->wasThere) // came in a moment ago, and no manifest names it
        (void)removeFileWhenFree(result->pack.zipPath);
    if (!hadFolder)
        (void)QDir().rmdir(folder);
    return false;
}

void tryOut(const ReleaseWish &wish, const SigningKey &key, ReleaseResult *result) {
    const WorkFolder work;
    if (!work.isValid() || !QDir(work.path()).mkdir(packagesName)) {
        (void)failAbout(work.path(), QStringLiteral("cannot write there"), &result->error);
        return;
    }
    Release(wish, key, work.path(), result).run();
}

void carryOut(const ReleaseWish &wish, const SigningKey &key, ReleaseResult *result) {
    SiteLock lock(wish.site);
    if (!lock.take(&result->error))
        return;
    const QString work = QDir(wish.site).filePath(QStringLiteral(".quorvanectl-release"));
    // One that was killed has left its own, and nobody else is at work.
    if (removeFolderWhenFree(work, &result->error) &&
        (QDir().mkpath(work + QLatin1Char('/') + packagesName) ||
         failAbout(wish.site, QStringLiteral("cannot write there"), &result->error)))
        Release(wish, key, work, result).run();
    (void)removeFolderWhenFree(work);
}

} // namespace

ReleaseResult releaseProject(const ReleaseWish &wish, const SigningKey &key) {
    ReleaseResult result;
    if (!liesOutside(wish.project, wish.site, &result.error))
        return result;
    const QString fault = pathFault(wish.site);
    if (!fault.isEmpty()) {
        (void)failAbout(wish.site, fault, &result.error);
        return result;
    }
    if (isTaken(wish.site) && !QFileInfo(wish.site).isDir()) {
        (void)failAbout(wish.site, QStringLiteral("is no folder"), &result.error);
        return result;
    }
    const InterruptionWatch watch;
    if (wish.isTrial) {
        tryOut(wish, key, &result);
        return result;
    }
    const bool isNew = !QFileInfo(wish.site).isDir();
    if (isNew && !QDir().mkdir(wish.site)) {
        (void)failAbout(wish.site, QStringLiteral("cannot be made"), &result.error);
        return result;
    }
    carryOut(wish, key, &result);
    if (isNew && !result.ok)
        (void)QDir().rmdir(wish.site);
    return result;
}

} // namespace ctl
