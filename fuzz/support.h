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
    return QByteArray(reinterpret_cast<const char *>(data), static_cast<int>(size));
}

// A folder in memory where there is one: each input becomes a file.
inline const QTemporaryDir &folder() {
    static const QTemporaryDir folder(QStringLiteral("/dev/shm/quorvane-fuzz-XXXXXX"));
    static const QTemporaryDir fallback;
    return folder.isValid() ? folder : fallback;
}

inline QString write(const QString &name, const QByteArray &content) {
    QFile file(folder().filePath(name));
    demand(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    return file.fileName();
}

} // namespace fuzz
