#include "quorvanectl/keys/key_files.h"

#include "frame/app_paths.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/files/fingerprint.h"
#include "quorvanectl/files/interruption.h"
#include "quorvanectl/keys/signing_key.h"
#include "update/manifest_signature.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ctl {
namespace {

const mode_t ownerOnly = 0600;
const mode_t everybody = 0644;
const mode_t ownersFolder = 0700;

QString systemError() {
    return QString::fromLocal8Bit(std::strerror(errno));
}

bool makeFolder(const QString &folder, QString *error) {
    if (QFileInfo(folder).isDir())
        return true;
    (void)QDir().mkpath(QFileInfo(QDir(folder).absolutePath()).path()); // mkdir tells what is wrong
    if (::mkdir(QFile::encodeName(folder).constData(), ownersFolder) == 0)
        return true;
    *error = QStringLiteral("%1: %2").arg(folder, systemError());
    return false;
}

bool writeAll(int descriptor, const QByteArray &content) {
    int written = 0;
    while (written < content.size()) {
        const ssize_t done =
            ::write(descriptor, content.constData() + written, size_t(content.size() - written));
        if (done < 0 && errno != EINTR)
            return false;
        written += done > 0 ? int(done) : 0;
    }
    return ::fsync(descriptor) == 0;
}

// Never over a file that is there, not even one that appeared a moment ago, and with its mode from
// the beginning: no other account has a moment to open it.
bool writeNew(const QString &path, const QByteArray &content, mode_t mode, QString *error) {
    const QByteArray name = QFile::encodeName(path);
    const int descriptor = ::open(name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (descriptor < 0) {
        *error = QStringLiteral("%1: %2").arg(path, systemError());
        return false;
    }
    const bool whole = writeAll(descriptor, content);
    if (!whole)
        *error = QStringLiteral("%1: %2").arg(path, systemError());
    ::close(descriptor);
    if (!whole)
        ::unlink(name.constData()); // ours, and half a key is none
    return whole;
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
    if (!isFree(privatePathIn(folder), error) || !isFree(publicPathIn(folder), error))
        return false;
    if (isTaken(folder) && !QFileInfo(folder).isDir()) {
        errno = EEXIST;
        *error = QStringLiteral("%1: %2").arg(folder, systemError());
        return false;
    }
    return true;
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
    const bool hasPrivate = writeNew(files.privatePath, privatePem, ownerOnly, &files.error);
    wipe(&privatePem);
    if (!hasPrivate)
        return files;
    files.ok = writeNew(files.publicPath, publicPem, everybody, &files.error);
    if (!files.ok)
        ::unlink(QFile::encodeName(files.privatePath).constData()); // made a moment ago
    files.fingerprint = fingerprintOf(decodePemBody(QString::fromLatin1(publicPem)));
    return files;
}

} // namespace ctl
