#include "quorvanectl/files/file_access.h"

#include "quorvanectl/files/given_paths.h"
#include "quorvanectl/files/interruption.h"
#include "update/files/failure.h"
#include "update/files/memory_guard.h"
#include "update/files/patient_files.h"
#include "update/files/place_facts.h"
#include "update/files/text_file.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>

namespace ctl {
namespace {

constexpr int mebibyte = 1024 * 1024;

QString sizeText(qint64 bytes) {
    return bytes < mebibyte ? QStringLiteral("%1 bytes").arg(bytes)
                            : QStringLiteral("%1 MiB").arg(bytes / mebibyte);
}

} // namespace

bool canBeNamed(const QString &path, QString *error) {
    const QString absolute = QFileInfo(path).absoluteFilePath();
    return !absolute.contains(QChar::ReplacementCharacter) || QFileInfo::exists(absolute) ||
           failAbout(path, QStringLiteral("a name on the way there is no UTF-8"), error);
}

bool isUsableFile(const QString &path, QString *error, qint64 limit) {
    const QFileInfo info(path);
    if (!info.exists())
        return canBeNamed(path, error) && failAbout(path, QStringLiteral("no such file"), error);
    if (info.isDir())
        return failAbout(path, QStringLiteral("is a folder"), error);
    if (!info.isFile()) // a pipe would block, a device might never end
        return failAbout(path, QStringLiteral("is no plain file"), error);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return failAbout(path, file.errorString(), error);
    return file.size() <= limit ||
           failAbout(path, QStringLiteral("is larger than %1").arg(sizeText(limit)), error);
}

QString readText(const QString &path, QString *error) {
    const QByteArray bytes = readBytes(path, error);
    if (bytes.isNull())
        return {};
    const QString text = unlessOutOfMemory([&] { return decodeText(bytes); }, QString());
    if (text.isNull())
        (void)failAbout(path, qt_error_string(ENOMEM), error);
    return text;
}

QByteArray readBytes(const QString &path, QString *error) {
    const QFileInfo info(path);
    const bool fits = info.isFile() && info.size() <= largestText;
    if (!fits && !isUsableFile(path, error)) // what looks usable is opened once, to be read
        return {};
    QFile file(path);
    const bool isOpen = file.open(QIODevice::ReadOnly);
    const QByteArray bytes =
        isOpen ? unlessOutOfMemory([&] { return file.readAll(); }, QByteArray()) : QByteArray();
    // What could be read before a fault is no shorter file.
    if (!isOpen || file.error() != QFileDevice::NoError) {
        (void)failAbout(path, file.errorString(), error);
        return {};
    }
    if (bytes.isNull() && file.size() > 0) {
        (void)failAbout(path, qt_error_string(ENOMEM), error);
        return {};
    }
    return bytes.isNull() ? QByteArray("") : bytes;
}

bool isTaken(const QString &path) {
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

bool isOnePlace(const QString &one, const QString &other) {
    const QString canonical = QFileInfo(one).canonicalFilePath();
    return !canonical.isEmpty() &&
           (canonical == QFileInfo(other).canonicalFilePath() || isSamePlace(one, other));
}

bool mayWrite(const QString &path, bool force, QString *error, const QStringList &inputs) {
    const QString fault = pathFault(path);
    if (!fault.isEmpty())
        return failAbout(path, fault, error);
    if (!isTaken(path))
        return true;
    const QFileInfo info(path);
    if (info.isDir())
        return failAbout(path, QStringLiteral("is a folder"), error);
    if (info.exists() && !info.isFile()) // a rename would put a file in a device's place
        return failAbout(path, QStringLiteral("is no plain file"), error);
    for (const QString &input : inputs) {
        if (isOnePlace(path, input))
            return failAbout(path, QStringLiteral("is read by this command and not overwritten"),
                             error);
    }
    return force || failAbout(path, QStringLiteral("exists; --force overwrites it"), error);
}

bool openFile(QSaveFile &file, bool force, QString *error) {
    if (!mayWrite(file.fileName(), force, error))
        return false;
    return file.open(QIODevice::WriteOnly) || failAbout(file.fileName(), file.errorString(), error);
}

bool commitFile(QSaveFile &file, QString *error) {
    // commit() does not look at what its own flush comes to, on a full disk for example. It cannot be asked a
    // second time, so whoever has the old file open is waited for before.
    waitUntilFree(file.fileName());
    return (file.flush() && file.commit()) || failAbout(file.fileName(), file.errorString(), error);
}

bool writeFile(const QString &path, const QByteArray &bytes, bool force, QString *error) {
    const WholeFile untilWhole;
    QSaveFile file(path);
    if (!openFile(file, force, error))
        return false;
    (void)file.write(bytes); // the flush fails if this did
    return commitFile(file, error);
}

} // namespace ctl
