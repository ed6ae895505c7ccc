// The few records of the format (PKWARE's APPNOTE 6.3) that lead to an archive's names.
#include "update/files/zip_names.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>

namespace {

constexpr int endSize = 22; // end of central directory, without its comment
constexpr int longestComment = 65535;
constexpr int locatorSize = 20; // zip64 end of central directory locator
constexpr int zip64EndSize = 56;
constexpr int headerSize = 46; // central file header
constexpr int localHeaderSize = 30;

quint16 short16(const QByteArray &bytes, int at) {
    return qFromLittleEndian<quint16>(bytes.constData() + at);
}
quint32 word32(const QByteArray &bytes, int at) {
    return qFromLittleEndian<quint32>(bytes.constData() + at);
}
quint64 long64(const QByteArray &bytes, int at) {
    return qFromLittleEndian<quint64>(bytes.constData() + at);
}

// The bytes at that place; empty if the file does not hold all of them.
QByteArray bytesAt(QFile &file, qint64 at, qint64 size) {
    if (at < 0 || !file.seek(at))
        return QByteArray();
    const QByteArray bytes = file.read(size);
    return bytes.size() == size ? bytes : QByteArray();
}

// `shift`: how far all places in the archive are off, because of what stands before it in the file.
struct Directory {
    qint64 at = -1;
    qint64 shift = 0;
};

// Below 0 if there is no large form.
qint64 zip64DirectoryAt(QFile &file, qint64 endAt) {
    const QByteArray locator = bytesAt(file, endAt - locatorSize, locatorSize);
    if (!locator.startsWith("PK\x06\x07"))
        return -1;
    const QByteArray end = bytesAt(file, qint64(long64(locator, 8)), zip64EndSize);
    return end.startsWith("PK\x06\x06") ? qint64(long64(end, 48)) : -1;
}

// As the zip reader finds it: from its end, and in the large form wherever that is there.
Directory findDirectory(QFile &file) {
    const qint64 tailSize = std::min<qint64>(file.size(), endSize + longestComment);
    const qint64 tailAt = file.size() - tailSize;
    const QByteArray tail = bytesAt(file, tailAt, tailSize);
    const int found = tail.lastIndexOf(QByteArrayLiteral("PK\x05\x06"), tail.size() - endSize);
    if (tail.size() < endSize || found < 0)
        return {};
    const qint64 large = zip64DirectoryAt(file, tailAt + found);
    if (large >= 0)
        return {large, 0};
    const qint64 at = tailAt + found - word32(tail, found + 12);
    return {at, at - word32(tail, found + 16)};
}

bool passes(const QByteArray &name, QString *error) {
    if (!name.contains('\0'))
        return true;
    if (error != nullptr)
        *error =
            QStringLiteral("%1: %2").arg(unsafeNameMark(), QString::fromUtf8(name.constData()));
    return false;
}

// The name is stored a second time before the entry's data, and some readers take that one.
QByteArray localName(QFile &file, qint64 at) {
    const QByteArray header = bytesAt(file, at, localHeaderSize);
    return header.startsWith("PK\x03\x04")
               ? bytesAt(file, at + localHeaderSize, short16(header, 26))
               : QByteArray();
}

} // namespace

bool checkStoredNames(const QString &zipPath, const QDeadlineTimer &deadline, QString *error) {
    QFile file(zipPath);
    // A buffer would read far more than the few bytes at each place.
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return true;
    const Directory directory = findDirectory(file);
    qint64 at = directory.at;
    QByteArray header = bytesAt(file, at, headerSize);
    while (header.startsWith("PK\x01\x02") && !deadline.hasExpired()) {
        const int nameSize = short16(header, 28);
        if (!passes(bytesAt(file, at + headerSize, nameSize), error) ||
            !passes(localName(file, directory.shift + word32(header, 42)), error))
            return false;
        at += headerSize + nameSize + short16(header, 30) + short16(header, 32);
        header = bytesAt(file, at, headerSize);
    }
    return true;
}

bool isEmptyArchive(const QString &zipPath) {
    QFile file(zipPath);
    return file.open(QIODevice::ReadOnly) && file.size() == endSize &&
           file.read(endSize) == "PK\x05\x06" + QByteArray(endSize - 4, '\0');
}

QString unsafeNameMark() {
    return QStringLiteral("unsafe zip entry");
}

bool hasControlCharacter(const QString &name) {
    return std::any_of(name.begin(), name.end(), [](QChar character) {
        return character.unicode() < 0x20 || character.unicode() == 0x7F;
    });
}
