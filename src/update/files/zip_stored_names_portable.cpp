// The few fields of the format (PKWARE's APPNOTE 6.3) that lead to the names.
#include "update/files/zip_stored_names.h"

#include "update/files/failure.h"
#include "update/files/zip_names.h"

#include <QHash>
#include <QtEndian>

#include <algorithm>

namespace {

constexpr int endSize = 22; // end of central directory, without its comment
constexpr int longestComment = 65535;
constexpr int locatorSize = 20; // zip64 end of central directory locator
constexpr int zip64EndSize = 56;
constexpr int headerSize = 46; // central file header
constexpr int localHeaderSize = 30;
constexpr quint16 utf8Flag = 0x800;
constexpr quint32 inExtra = 0xFFFFFFFFU; // the true value stands in an extra field

constexpr int mostEntries = 100000;
constexpr int mostAlike = 1000; // names with one hash in libzip's table

template<typename Number>
Number number(const QByteArray &bytes, int at) {
    return qFromLittleEndian<Number>(bytes.constData() + at);
}

struct Source {
    QFile &file;
    const qint64 fileSize;
    QString damage = QString(); // of the disk, as the system tells it
    bool isShort = false;       // whether the bytes asked for last are not all there

    // The bytes at that place; as many zeros if the file does not hold them. Of a place behind its end the
    // systems say different things.
    QByteArray bytesAt(qint64 at, int size) {
        const bool isThere = at >= 0 && at < fileSize && file.seek(at);
        QByteArray bytes = isThere ? file.read(size) : QByteArray();
        if (file.error() == QFileDevice::ReadError)
            damage = file.errorString();
        isShort = bytes.size() != size;
        return isShort ? QByteArray(size, '\0') : bytes;
    }
};

// All places of end records whose comment is the rest of the file.
QVector<qint64> endRecords(Source &source) {
    const int tailSize = int(std::min<qint64>(source.fileSize, endSize + longestComment));
    const QByteArray tail = source.bytesAt(source.fileSize - tailSize, tailSize);
    QVector<qint64> found;
    for (int at = 0; (at = tail.indexOf("PK\x05\x06", at)) >= 0 && at + endSize <= tailSize; ++at) {
        if (at + endSize + number<quint16>(tail, at + 20) == tailSize)
            found.append(source.fileSize - tailSize + at);
    }
    return found;
}

struct Directory {
    qint64 at;
    qint64 size;
    qint64 endAt; // where its end record lies
};

// In the large form wherever that is there.
Directory directoryOf(Source &source, qint64 endAt) {
    const QByteArray end = source.bytesAt(endAt, endSize);
    const QByteArray locator = source.bytesAt(endAt - locatorSize, locatorSize);
    if (!locator.startsWith("PK\x06\x07"))
        return {number<quint32>(end, 16), number<quint32>(end, 12), endAt};
    const auto largeAt = number<qint64>(locator, 8);
    const QByteArray large = source.bytesAt(largeAt, zip64EndSize);
    return {number<qint64>(large, 48), number<qint64>(large, 40), largeAt};
}

// It reaches up to its end; and where it is empty there is nothing that it could have forgotten.
bool isWhole(const Directory &directory) {
    return directory.at >= 0 && directory.at <= directory.endAt &&
           directory.size == directory.endAt - directory.at &&
           (directory.size > 0 || directory.at == 0);
}

// Beyond 4 GiB the place stands elsewhere, and libzip's own comparison must do.
bool isSameBeforeData(Source &source, quint32 at, const QByteArray &name) {
    return at == inExtra || source.bytesAt(qint64(at) + localHeaderSize, name.size()) == name;
}

bool checkName(const QByteArray &name, bool isUtf8, ZipFailure *failure) {
    failure->isUnsafe = name.contains('\0');
    if (failure->isUnsafe)
        return failAbout(unsafeNameMark(), QString::fromUtf8(name.constData()), &failure->reason);
    return !isUtf8 || isUtf8Name(name) ||
           failAbout(QString::fromUtf8(name), QStringLiteral("the name is no UTF-8"),
                     &failure->reason);
}

quint32 libzipHash(const QByteArray &name) {
    quint32 hash = 5381;
    for (const char byte : name)
        hash = hash * 33 + quint8(byte);
    return hash;
}

bool checkNames(Source &source, const QDeadlineTimer &deadline, ZipFailure *failure) {
    const QVector<qint64> ends = endRecords(source);
    if (ends.size() != 1)
        return ends.isEmpty() || fail(inconsistentArchive(), &failure->reason);
    const Directory directory = directoryOf(source, ends.first());
    if (!isWhole(directory))
        return fail(inconsistentArchive(), &failure->reason);
    QHash<quint32, int> alike;
    int entries = 0;
    for (qint64 at = directory.at; at < directory.endAt; ++entries) {
        if (deadline.hasExpired())
            return fail(QStringLiteral("zip extraction timed out"), &failure->reason);
        const QByteArray header = source.bytesAt(at, headerSize);
        if (!header.startsWith("PK\x01\x02"))
            return true;
        const auto nameSize = number<quint16>(header, 28);
        const QByteArray name = source.bytesAt(at + headerSize, nameSize);
        if (source.isShort || !isSameBeforeData(source, number<quint32>(header, 42), name))
            return fail(inconsistentArchive(), &failure->reason);
        if (!checkName(name, (number<quint16>(header, 8) & utf8Flag) != 0, failure))
            return false;
        if (entries == mostEntries || ++alike[libzipHash(name)] > mostAlike)
            return fail(tooLargeDirectory(), &failure->reason);
        at += headerSize + nameSize + number<quint16>(header, 30) + number<quint16>(header, 32);
    }
    return true;
}

} // namespace

// What cannot be read is no reason to suspect the archive.
bool checkStoredNames(QFile &file, const QDeadlineTimer &deadline, ZipFailure *failure) {
    Source source{file, file.size()};
    const bool isSound = checkNames(source, deadline, failure);
    if (source.damage.isNull())
        return isSound;
    failure->isUnsafe = false;
    return fail(source.damage, &failure->reason);
}

QString tooLargeDirectory() {
    return QStringLiteral("the zip archive's directory is too large");
}

QString inconsistentArchive() {
    return QStringLiteral("Zip archive inconsistent");
}
