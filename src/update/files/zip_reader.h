// Reading a zip archive by its directory, with libzip. The launcher for Windows unpacks another way.
//
// What the archive says twice, in its directory and before each entry's data, must be the same: name,
// sizes, checksum, method. Otherwise two readers would see two archives.
#pragma once

#include "update/files/zip_extract.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QString>

#include <functional>
#include <memory>

struct zip;
struct zip_error;

struct ZipItem {
    QString name; // with slashes for backslashes
    quint64 size = 0;
    bool isFolder = false;
    bool isEncrypted = false;
    bool isReadable = false; // its method is known
};

class ZipReader {
public:
    // Past the deadline every reading fails.
    ZipReader(const QString &path, const QDeadlineTimer &deadline);
    ~ZipReader();
    ZipReader(const ZipReader &) = delete;
    ZipReader &operator=(const ZipReader &) = delete;

    // Nothing else may be called before this, or after it failed.
    [[nodiscard]] bool open(ZipFailure *failure);
    [[nodiscard]] qint64 count() const;
    [[nodiscard]] ZipItem item(qint64 index) const;

    // Hands an item's content to `take`, block by block. False if it cannot be read, with the reason, or
    // if `take` returned false.
    using Take = std::function<bool(const char *block, qint64 size)>;
    [[nodiscard]] bool read(qint64 index, const Take &take, ZipFailure *failure);

private:
    class Input;
    struct Discard {
        void operator()(zip *archive) const;
    };

    [[nodiscard]] bool openArchive(ZipFailure *failure);
    bool failReading(zip_error *error, ZipFailure *failure) const;
    bool failAbout(qint64 index, zip_error *error, ZipFailure *failure) const;

    QFile file;
    QDeadlineTimer deadline;
    std::unique_ptr<Input> input; // outlives the archive
    std::unique_ptr<zip, Discard> archive;
    QByteArray block;
};
