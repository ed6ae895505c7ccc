// Zip archives byte by byte, so that a test can make what no archiver would.
#pragma once

#include <QByteArray>
#include <QVector>

namespace support {

struct ZipEntry {
    QByteArray name;
    QByteArray content;
    bool deflated = false;
    quint16 flags = 0;     // 1 encrypted, 0x800 the name is UTF-8
    quint16 mode = 0;      // Unix mode with its file type; 0 for an entry from Windows
    int method = -1;       // to claim another than the true one
    quint32 crcChange = 0; // laid over the true checksum
    QByteArray nameInDirectory = QByteArray(); // where it differs from `name`
    int methodInDirectory = -1;                // where it differs from `method`
    quint32 sizeChange = 0;                    // laid over the size in the directory alone
    quint32 packedSizeChange = 0;              // the same for the packed size
    QByteArray extra = QByteArray();           // further fields before the data
};

struct ZipWish {
    QVector<ZipEntry> entries;
    bool zip64 = false; // directory and sizes in the large form
    QByteArray before;  // bytes in front of the archive
    QByteArray comment;
};

[[nodiscard]] QByteArray makeZipAs(const ZipWish &wish);
[[nodiscard]] QByteArray makeZip(const QVector<ZipEntry> &entries);

} // namespace support
