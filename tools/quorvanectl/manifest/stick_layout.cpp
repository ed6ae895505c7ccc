#include "quorvanectl/manifest/stick_layout.h"

#include "frame/app_paths.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/files/interruption.h"
#include "quorvanectl/files/json_input.h"
#include "quorvanectl/manifest/manifest_format.h"
#include "update/files/failure.h"
#include "update/files/patient_files.h"
#include "update/files/place_facts.h"
#include "update/files/text_file.h"
#include "update/manifest_keys.h"
#include "update/manifest_signature.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

namespace ctl {
namespace {

constexpr qint64 pieceSize = 1 << 20; // bytes
using Reached = std::function<void(qint64, qint64)>;

struct StickCopy {
    QDir source;
    QDir target;
    bool overwrite = false;
    qint64 total = 0;
    qint64 copied = 0;
    const Reached &reached;

    bool copyFile(const QString &name, QString *error);
    bool copyBytes(QFile *from, QSaveFile *to, QString *error);
};

bool StickCopy::copyBytes(QFile *from, QSaveFile *to, QString *error) {
    while (!from->atEnd()) {
        const QByteArray piece = from->read(pieceSize);
        if (piece.isEmpty())
            return failAbout(from->fileName(), from->errorString(), error);
        if (to->write(piece) != piece.size())
            return failAbout(to->fileName(), to->errorString(), error);
        if (interrupted())
            return failAbout(to->fileName(), QStringLiteral("interrupted"), error);
        copied += piece.size();
        reached(copied, total);
    }
    return true;
}

bool StickCopy::copyFile(const QString &name, QString *error) {
    QFile from(source.filePath(name));
    QSaveFile to(target.filePath(name));
    if (!ensureParentDir(to.fileName(), error))
        return false;
    if (!from.open(QIODevice::ReadOnly))
        return failAbout(from.fileName(), from.errorString(), error);
    return openFile(to, overwrite, error) && copyBytes(&from, &to, error) && commitFile(to, error);
}

QString signatureFault(const QString &manifestText, const QString &keyPath) {
    if (!keyPath.isEmpty()) {
        const VerifyResult result = verifyManifest(manifestText, keyPath);
        return result.ok ? QString() : result.message;
    }
    const QJsonObject root = QJsonDocument::fromJson(manifestText.toUtf8()).object();
    const bool isSigned = !root.value(manifest_keys::signature).toString().trimmed().isEmpty();
    return isSigned ? QString() : QStringLiteral("the manifest is not signed");
}

QString packageFault(const PackageRecord &package, const QDir &folder) {
    if (isUrl(package.url()) || QDir::isAbsolutePath(package.url())) {
        return QStringLiteral("%1 is no path beside the manifest; on a stick nothing else is found")
            .arg(package.url());
    }
    if (QDir::cleanPath(package.url()).startsWith(QLatin1String("..")))
        return QStringLiteral("%1 leads out of the manifest's folder").arg(package.url());
    const QString path = folder.filePath(package.url());
    if (!QFileInfo(path).isFile())
        return QStringLiteral("there is no file %1").arg(path);
    if (package.hash().isEmpty() && !package.isProject)
        return QString(); // allowed, and the lint's business
    const VerifyResult result = verifyFileSha256(path, package.hash());
    return result.ok ? QString() : result.message;
}

QStringList faultsOf(const QString &manifestText, const QString &keyPath,
                     const QVector<PackageRecord> &packages, const QDir &folder) {
    QStringList faults;
    const QString signature = signatureFault(manifestText, keyPath);
    if (!signature.isEmpty())
        faults.append(signature);
    for (const PackageRecord &package : packages) {
        const QString fault = package.url().isEmpty() ? QString() : packageFault(package, folder);
        if (!fault.isEmpty())
            faults.append(QStringLiteral("%1: %2").arg(package.where, fault));
    }
    return faults;
}

// What leads elsewhere would be written over there. The mount point itself may be reached by a link.
QString linkOnTheWay(const QDir &target, const QString &name) {
    QString path = target.path();
    QStringList steps = name.split(QLatin1Char('/'));
    for (;; path += QLatin1Char('/') + steps.takeFirst()) {
        if (isLink(QFileInfo(path)))
            return path;
        if (steps.isEmpty())
            return QString();
    }
}

// Whether nothing stands in the way, before anything is removed; `inputs` are what is read.
bool mayBeLaidOut(const StickCopy &copy, const QStringList &names, const QStringList &inputs,
                  QString *error) {
    for (const QString &name : names) {
        const QString link = linkOnTheWay(copy.target, name);
        if (!link.isEmpty())
            return failAbout(
                link, QStringLiteral("is a link; what it leads to is not written over"), error);
        if (!mayWrite(copy.target.filePath(name), copy.overwrite, error, inputs))
            return false;
    }
    return true;
}

// What the stick gives back must be what went in.
bool readsBack(const StickCopy &copy, const QString &name, QString *error) {
    const QString there = copy.target.filePath(name);
    const QString here = fileSha256Hex(copy.source.filePath(name), error);
    if (here.isEmpty())
        return false;
    const VerifyResult result = verifyFileSha256(there, here);
    if (!result.ok)
        *error = result.message;
    return result.ok;
}

bool copyAll(StickCopy &copy, const QStringList &packages, const QString &manifest,
             QString *error) {
    // An update that is half replaced must not be found: the old manifest goes first.
    const QString old = copy.target.filePath(manifest);
    if (QFileInfo::exists(old) && !removeFileWhenFree(old))
        return failAbout(old, QStringLiteral("cannot be removed"), error);
    for (const QString &package : packages) {
        if (!copy.copyFile(package, error) || !readsBack(copy, package, error))
            return false;
    }
    return copy.copyFile(manifest, error) && readsBack(copy, manifest, error);
}

} // namespace

StickResult layOutStick(const QString &folder, const QString &mountPoint, const QString &keyPath,
                        bool overwrite, const Reached &reached) {
    StickResult result;
    const QDir source(folder);
    const QFileInfo onStick(AppPaths::stickManifestPath(mountPoint));
    const QString manifest = onStick.fileName();
    const QString text = readJsonObject(source.filePath(manifest), &result.error);
    if (text.isNull())
        return result;
    if (!QFileInfo(mountPoint).isDir()) {
        (void)failAbout(mountPoint, QStringLiteral("is no folder"), &result.error);
        return result;
    }
    const QVector<PackageRecord> records =
        packageRecords(QJsonDocument::fromJson(text.toUtf8()).object());
    result.findings = faultsOf(text, keyPath, records, source);
    if (!result.findings.isEmpty())
        return result;

    const InterruptionWatch watch;
    StickCopy copy{source, onStick.path(), overwrite, QFileInfo(source.filePath(manifest)).size(),
                   0,      reached};
    for (const PackageRecord &package : records) {
        const QString name = QDir::cleanPath(package.url());
        if (package.url().isEmpty() || result.packages.contains(name))
            continue;
        result.packages.append(name);
        copy.total += QFileInfo(source.filePath(name)).size();
    }
    result.manifestPath = copy.target.filePath(manifest);
    result.isVolume = isRootOfVolume(mountPoint);
    QStringList inputs{keyPath};
    const QStringList names = QStringList(manifest) + result.packages;
    for (const QString &name : names)
        inputs.append(source.filePath(name));
    result.ok = mayBeLaidOut(copy, names, inputs, &result.error) &&
                copyAll(copy, result.packages, manifest, &result.error);
    return result;
}

} // namespace ctl
