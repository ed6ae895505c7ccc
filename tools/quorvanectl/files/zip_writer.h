// A zip archive whose bytes depend on nothing but its entries: no times, no owners, no order of a
// file system. Names are UTF-8 and marked as such.
#pragma once

#include <QIODevice>
#include <QString>

#include <memory>

struct zip;
struct zip_source;

namespace ctl {

class ZipWriter {
public:
    // `out` is open for writing, not sequential, and outlives the writer.
    explicit ZipWriter(QIODevice *out);
    ~ZipWriter();
    ZipWriter(const ZipWriter &) = delete;
    ZipWriter &operator=(const ZipWriter &) = delete;

    // Entries in the order of the calls. `name` is a relative path with slashes.
    [[nodiscard]] bool addFolder(const QString &name);
    // finish() opens `content` when its turn comes, reads it to its end, and closes it.
    [[nodiscard]] bool addFile(const QString &name, std::unique_ptr<QIODevice> content);
    // Writes everything, piece by piece; without it nothing is written, and nothing where no entry was
    // added. Stops when the user interrupts. The last call.
    [[nodiscard]] bool finish();

    [[nodiscard]] QString error() const { return reason; }

private:
    class Output;
    class Content;
    struct Discard {
        void operator()(zip *archive) const;
    };
    [[nodiscard]] bool add(const QString &name, zip_source *source, quint32 mode);
    bool fail(const QString &text);
    bool failWriting();

    QString reason;
    std::unique_ptr<Output> output; // outlives the archive
    std::unique_ptr<zip, Discard> archive;
};

} // namespace ctl
