// A zip archive whose bytes depend on nothing but its entries: no times, no owners, no order of a
// file system. Names are UTF-8 and marked as such.
#pragma once

#include <QIODevice>
#include <QString>

#include <memory>

struct archive;

namespace ctl {

class ZipWriter {
public:
    // `out` is open for writing and outlives the writer.
    explicit ZipWriter(QIODevice *out);

    // Entries in the order of the calls. `name` is a relative path with slashes.
    [[nodiscard]] bool addFolder(const QString &name);
    // Reads `content` to its end, in pieces. Stops when the user interrupts.
    [[nodiscard]] bool addFile(const QString &name, QIODevice *content);
    // Writes the directory; without it the archive is none.
    [[nodiscard]] bool finish();

    [[nodiscard]] QString error() const { return reason; }

private:
    struct Free {
        void operator()(archive *writer) const;
    };
    [[nodiscard]] bool addHeader(const QString &name, qint64 size, bool isFolder);
    bool fail(const QString &text);
    bool failWriting();

    std::unique_ptr<archive, Free> writer;
    QString reason;
};

} // namespace ctl
