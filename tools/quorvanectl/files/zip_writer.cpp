#include "quorvanectl/files/zip_writer.h"

#include "quorvanectl/files/interruption.h"

#include <archive.h>
#include <archive_entry.h>

namespace ctl {
namespace {

constexpr qint64 pieceSize = 1 << 20; // bytes
const __LA_MODE_T plainFile = 0644;
const __LA_MODE_T plainFolder = 0755;

la_ssize_t writeTo(archive *, void *device, const void *bytes, size_t size) {
    return static_cast<QIODevice *>(device)->write(static_cast<const char *>(bytes), qint64(size));
}

struct EntryFree {
    void operator()(archive_entry *entry) const { archive_entry_free(entry); }
};

} // namespace

void ZipWriter::Free::operator()(archive *writer) const {
    archive_write_free(writer);
}

ZipWriter::ZipWriter(QIODevice *out)
    : writer(archive_write_new()) {
    archive_write_set_format_zip(writer.get());
    archive_write_set_format_option(writer.get(), "zip", "hdrcharset", "UTF-8");
    archive_write_set_bytes_in_last_block(writer.get(), 1); // no padding
    if (archive_write_open(writer.get(), out, nullptr, writeTo, nullptr) != ARCHIVE_OK)
        failWriting();
}

bool ZipWriter::addFolder(const QString &name) {
    return addHeader(name + QLatin1Char('/'), 0, true);
}

bool ZipWriter::addFile(const QString &name, QIODevice *content) {
    if (!addHeader(name, content->size(), false))
        return false;
    qint64 left = content->size();
    while (left > 0) {
        const QByteArray piece = content->read(qMin(left, pieceSize));
        if (piece.isEmpty())
            return fail(QStringLiteral("cannot read %1: %2").arg(name, content->errorString()));
        if (interrupted())
            return fail(QStringLiteral("interrupted"));
        const auto size = size_t(piece.size());
        if (archive_write_data(writer.get(), piece.constData(), size) !=
            static_cast<la_ssize_t>(size))
            return failWriting();
        left -= piece.size();
    }
    return true;
}

bool ZipWriter::finish() {
    return archive_write_close(writer.get()) == ARCHIVE_OK || failWriting();
}

bool ZipWriter::addHeader(const QString &name, qint64 size, bool isFolder) {
    if (!reason.isEmpty())
        return false;
    // A time is left out: the format then stores its earliest, whatever the time zone.
    const std::unique_ptr<archive_entry, EntryFree> entry(archive_entry_new());
    archive_entry_set_pathname_utf8(entry.get(), name.toUtf8().constData());
    archive_entry_set_filetype(entry.get(), isFolder ? AE_IFDIR : AE_IFREG);
    archive_entry_set_perm(entry.get(), isFolder ? plainFolder : plainFile);
    archive_entry_set_size(entry.get(), size);
    // A warning too: a name that could not be stored as it is.
    return archive_write_header(writer.get(), entry.get()) == ARCHIVE_OK || failWriting();
}

bool ZipWriter::fail(const QString &text) {
    reason = text;
    return false;
}

bool ZipWriter::failWriting() {
    const char *const text = archive_error_string(writer.get());
    return fail(text != nullptr ? QString::fromLocal8Bit(text)
                                : QStringLiteral("the package cannot be written"));
}

} // namespace ctl
