#include "support/zip_maker.h"

#include <QtEndian>

namespace support {
namespace {

constexpr quint32 inExtra32 = 0xFFFFFFFFU; // the true value stands in the zip64 extra field
constexpr quint16 inExtra16 = 0xFFFFU;

template<typename Number>
QByteArray le(Number number) {
    QByteArray bytes(sizeof(Number), '\0');
    qToLittleEndian<Number>(number, bytes.data());
    return bytes;
}

quint32 crc32(const QByteArray &bytes) {
    quint32 crc = 0xFFFFFFFFU;
    for (const char byte : bytes) {
        crc ^= quint8(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ (0xEDB88320U & (0U - (crc & 1U)));
    }
    return ~crc;
}

// qCompress puts 4 bytes of size and 2 of a zlib header in front, and 4 of a checksum behind.
QByteArray rawDeflate(const QByteArray &bytes) {
    const QByteArray compressed = qCompress(bytes, 9);
    return compressed.mid(6, compressed.size() - 10);
}

struct Stored {
    QByteArray data;
    quint16 method;
    QByteArray extra;
};

Stored store(const ZipEntry &entry, bool zip64) {
    Stored stored;
    stored.data = entry.deflated ? rawDeflate(entry.content) : entry.content;
    stored.method = quint16(entry.method >= 0 ? entry.method : entry.deflated ? 8 : 0);
    if (zip64) {
        stored.extra = le<quint16>(1) + le<quint16>(16) +
                       le<quint64>(quint64(entry.content.size())) +
                       le<quint64>(quint64(stored.data.size()));
    }
    return stored;
}

// The fields that both headers have, from "version needed" to the sizes.
QByteArray commonFields(const ZipEntry &entry, const Stored &stored, bool zip64, bool inDirectory) {
    const bool otherMethod = inDirectory && entry.methodInDirectory >= 0;
    const quint32 packed = quint32(stored.data.size()) ^ (inDirectory ? entry.packedSizeChange : 0);
    const quint32 full = quint32(entry.content.size()) ^ (inDirectory ? entry.sizeChange : 0);
    return le<quint16>(zip64 ? 45 : 20) + le<quint16>(entry.flags) +
           le<quint16>(otherMethod ? quint16(entry.methodInDirectory) : stored.method) +
           le<quint32>(0x5A210000U) + le<quint32>(crc32(entry.content) ^ entry.crcChange) +
           le<quint32>(zip64 ? inExtra32 : packed) + le<quint32>(zip64 ? inExtra32 : full);
}

} // namespace

QByteArray makeZipAs(const ZipWish &wish) {
    QByteArray zip = wish.before;
    QByteArray directory;
    for (const ZipEntry &entry : wish.entries) {
        const Stored stored = store(entry, wish.zip64);
        const QByteArray listed =
            entry.nameInDirectory.isEmpty() ? entry.name : entry.nameInDirectory;
        directory += "PK\x01\x02" + le<quint16>(entry.mode != 0 ? 0x031E : 0x0014) +
                     commonFields(entry, stored, wish.zip64, true) +
                     le<quint16>(quint16(listed.size())) +
                     le<quint16>(quint16(stored.extra.size())) + QByteArray(6, '\0') +
                     le<quint32>(quint32(entry.mode) << 16) + le<quint32>(quint32(zip.size())) +
                     listed + stored.extra;
        const QByteArray extra = stored.extra + entry.extra;
        zip += "PK\x03\x04" + commonFields(entry, stored, wish.zip64, false) +
               le<quint16>(quint16(entry.name.size())) + le<quint16>(quint16(extra.size())) +
               entry.name + extra + stored.data;
    }
    const auto at = quint32(zip.size());
    const auto size = quint32(directory.size());
    const auto count = quint64(wish.entries.size());
    zip += directory;
    if (wish.zip64) {
        const auto endAt = quint64(zip.size());
        zip += "PK\x06\x06" + le<quint64>(44) + le<quint16>(45) + le<quint16>(45) +
               QByteArray(8, '\0') + le(count) + le(count) + le<quint64>(size) + le<quint64>(at);
        zip += "PK\x06\x07" + QByteArray(4, '\0') + le<quint64>(endAt) + le<quint32>(1);
    }
    return zip + "PK\x05\x06" + QByteArray(4, '\0') +
           le<quint16>(wish.zip64 ? inExtra16 : quint16(count)) +
           le<quint16>(wish.zip64 ? inExtra16 : quint16(count)) +
           le<quint32>(wish.zip64 ? inExtra32 : size) + le<quint32>(wish.zip64 ? inExtra32 : at) +
           le<quint16>(quint16(wish.comment.size())) + wish.comment;
}

QByteArray makeZip(const QVector<ZipEntry> &entries) {
    ZipWish wish;
    wish.entries = entries;
    return makeZipAs(wish);
}

} // namespace support
