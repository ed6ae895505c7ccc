#include "quorvanectl/keys/key_files.h"

#include "frame/app_paths.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/files/fingerprint.h"
#include "quorvanectl/files/given_paths.h"
#include "quorvanectl/files/interruption.h"
#include "quorvanectl/keys/own_files.h"
#include "quorvanectl/keys/signing_key.h"
#include "update/files/failure.h"
#include "update/files/patient_files.h"
#include "update/files/private_folder.h"
#include "update/manifest_signature.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>

namespace ctl {
namespace {

bool makeFolder(const QString &folder, QString *error) {
    if (QFileInfo(folder).isDir())
        return true;
    (void)QDir().mkpath(
        QFileInfo(QDir(folder).absolutePath()).path()); // the next tells what is wrong
    return makePrivateFolder(folder) || failAbout(folder, qt_error_string(), error);
}

QString privatePathIn(const QString &folder) {
    return QDir(folder).filePath(QStringLiteral("private.pem"));
}

QString publicPathIn(const QString &folder) {
    return QDir(folder).filePath(QLatin1String(updatePublicKeyName));
}

bool isFree(const QString &path, QString *error) {
    if (!isTaken(path))
        return true;
    *error = QStringLiteral("%1: exists; a key is never overwritten").arg(path);
    return false;
}

} // namespace

bool isFreeForKeys(const QString &folder, QString *error) {
    const QString fault = pathFault(folder);
    if (!fault.isEmpty())
        return failAbout(folder, fault, error);
    if (!isFree(privatePathIn(folder), error) || !isFree(publicPathIn(folder), error))
        return false;
    return !isTaken(folder) || QFileInfo(folder).isDir() ||
           failAbout(folder, QString::fromLocal8Bit(std::strerror(EEXIST)), error);
}

KeyFiles makeKeyFiles(const QString &folder, const Passphrase *passphrase) {
    KeyFiles files;
    files.privatePath = privatePathIn(folder);
    files.publicPath = publicPathIn(folder);
    if (!isFreeForKeys(folder, &files.error)) // told before the key is made
        return files;
    const SigningKey key = SigningKey::make(&files.error);
    if (!key.isValid() || !makeFolder(folder, &files.error))
        return files;
    const QByteArray publicPem = key.publicPem();
    QByteArray privatePem = key.privatePem(passphrase);
    if (publicPem.isEmpty() || privatePem.isEmpty()) {
        files.error = QStringLiteral("OpenSSL cannot write the key pair");
        return files;
    }
    const InterruptionWatch watch; // half a key is none, nor is half a pair
    const bool hasPrivate =
        writeNewFile(files.privatePath, privatePem, Readers::Owner, &files.error);
    wipe(&privatePem);
    if (!hasPrivate)
        return files;
    files.ok = writeNewFile(files.publicPath, publicPem, Readers::Everybody, &files.error);
    if (!files.ok)
        (void)removeFileWhenFree(files.privatePath); // made a moment ago
    files.fingerprint = fingerprintOf(decodePemBody(QString::fromLatin1(publicPem)));
    return files;
}

} // namespace ctl
