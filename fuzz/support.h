// What the fuzz targets share.
#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>

namespace fuzz {

// Ends the program where a promise of the code under test is broken.
inline void demand(bool kept) {
    if (!kept)
        std::abort();
}

inline QByteArray bytesOf(const std::uint8_t *data, std::size_t size) {
    return QByteArray(reinterpret_cast<const char *>(data), int(size));
}

// A temporary folder: each input becomes a file. The fuzzer ends without tidying up, so scripts/fuzz
// says where temporary files go, and removes them.
inline const QTemporaryDir &folder() {
    static const QTemporaryDir folder;
    return folder;
}

inline QString write(const QString &name, const QByteArray &content) {
    QFile file(folder().filePath(name));
    demand(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    return file.fileName();
}

} // namespace fuzz
