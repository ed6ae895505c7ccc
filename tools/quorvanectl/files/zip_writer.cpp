#include "quorvanectl/files/zip_writer.h"

#include "quorvanectl/files/interruption.h"

#include <sys/stat.h>
#include <zip.h>

#include <cerrno>

namespace ctl {
namespace {

constexpr quint32 plainFile = S_IFREG | 0644;
constexpr quint32 plainFolder = S_IFDIR | 0755;
constexpr zip_uint16_t earliestDate = 0x21; // 1980-01-01, as the format writes it
constexpr zip_uint32_t packing = 6;         // of 9: more takes long and gains little

} // namespace

// The archive that is written, as libzip asks for it.
class ZipWriter::Output {
public:
    explicit Output(QIODevice *to)
        : device(to) {
        zip_error_init(&error);
    }
    ~Output() { zip_error_fini(&error); }
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;

    static zip_int64_t answer(void *output, void *data, zip_uint64_t size,
                              zip_source_cmd_t command) {
        return static_cast<Output *>(output)->carryOut(command, data, size);
    }

    // What the device said when it first failed; empty: it never has.
    [[nodiscard]] QString fault() const { return deviceFault; }

private:
    zip_int64_t carryOut(zip_source_cmd_t command, void *data, zip_uint64_t size) {
        switch (command) {
        case ZIP_SOURCE_SUPPORTS:
            return ZIP_SOURCE_SUPPORTS_WRITABLE;
        case ZIP_SOURCE_STAT: // there is no archive yet
            return fail(ZIP_ER_READ, ENOENT);
        case ZIP_SOURCE_WRITE:
            return write(static_cast<const char *>(data), qint64(size));
        case ZIP_SOURCE_SEEK_WRITE:
            return seek(data, size);
        case ZIP_SOURCE_TELL_WRITE:
            return device->pos();
        case ZIP_SOURCE_ERROR:
            return zip_error_to_data(&error, data, size);
        case ZIP_SOURCE_BEGIN_WRITE:
        case ZIP_SOURCE_COMMIT_WRITE:
        case ZIP_SOURCE_ROLLBACK_WRITE: // whoever owns the device drops it
        case ZIP_SOURCE_REMOVE:
        case ZIP_SOURCE_FREE:
            return 0;
        default: // reading
            return fail(ZIP_ER_OPNOTSUPP, 0);
        }
    }

    zip_int64_t fail(int fault, int systemFault) {
        zip_error_set(&error, fault, systemFault);
        return -1;
    }

    zip_int64_t failDevice(int fault) {
        if (deviceFault.isEmpty())
            deviceFault = device->errorString();
        return fail(fault, EIO);
    }

    zip_int64_t write(const char *data, qint64 size) {
        if (device->write(data, size) != size)
            return failDevice(ZIP_ER_WRITE);
        end = qMax(end, device->pos());
        return size;
    }

    zip_int64_t seek(void *data, zip_uint64_t size) {
        const zip_int64_t to = zip_source_seek_compute_offset(
            zip_uint64_t(device->pos()), zip_uint64_t(end), data, size, &error);
        if (to < 0)
            return -1;
        return device->seek(to) ? 0 : failDevice(ZIP_ER_SEEK);
    }

    QIODevice *device;
    qint64 end =
        0; // of what was written; the device's own size is short of what it still holds back
    QString deviceFault;
    zip_error_t error = {};
};

// The content of one entry, as libzip asks for it. libzip frees it.
class ZipWriter::Content {
public:
    Content(QString entryName, std::unique_ptr<QIODevice> from, ZipWriter *owner)
        : name(std::move(entryName))
        , device(std::move(from))
        , writer(owner) {
        zip_error_init(&error);
    }
    ~Content() { zip_error_fini(&error); }
    Content(const Content &) = delete;
    Content &operator=(const Content &) = delete;

    static zip_int64_t answer(void *content, void *data, zip_uint64_t size,
                              zip_source_cmd_t command) {
        auto *const self = static_cast<Content *>(content);
        if (command != ZIP_SOURCE_FREE)
            return self->carryOut(command, data, size);
        delete self;
        return 0;
    }

private:
    zip_int64_t carryOut(zip_source_cmd_t command, void *data, zip_uint64_t size) {
        switch (command) {
        case ZIP_SOURCE_SUPPORTS:
            return ZIP_SOURCE_SUPPORTS_READABLE;
        case ZIP_SOURCE_STAT:
            return tellSize(static_cast<zip_stat_t *>(data));
        case ZIP_SOURCE_OPEN:
            left = device->size();
            return device->isOpen() || device->open(QIODevice::ReadOnly) ? 0 : failReading();
        case ZIP_SOURCE_READ:
            return read(static_cast<char *>(data), qint64(size));
        case ZIP_SOURCE_CLOSE:
            device->close();
            return 0;
        case ZIP_SOURCE_ERROR:
            return zip_error_to_data(&error, data, size);
        default:
            return fail(QStringLiteral("the package cannot be written"));
        }
    }

    // libzip then knows beforehand whether the entry needs the large form.
    zip_int64_t tellSize(zip_stat_t *stat) {
        zip_stat_init(stat);
        stat->size = zip_uint64_t(device->size());
        stat->valid = ZIP_STAT_SIZE;
        return 0;
    }

    zip_int64_t read(char *data, qint64 size) {
        if (left == 0)
            return 0;
        const qint64 got = device->read(data, qMin(size, left));
        if (got <= 0)
            return failReading();
        if (interrupted())
            return fail(QStringLiteral("interrupted"));
        left -= got;
        return got;
    }

    zip_int64_t fail(const QString &text) {
        zip_error_set(&error, ZIP_ER_READ, EIO);
        writer->fail(text);
        return -1;
    }

    zip_int64_t failReading() {
        return fail(QStringLiteral("cannot read %1: %2").arg(name, device->errorString()));
    }

    QString name;
    std::unique_ptr<QIODevice> device;
    ZipWriter *writer;
    qint64 left = 0;
    zip_error_t error = {};
};

void ZipWriter::Discard::operator()(zip *opened) const {
    zip_discard(opened);
}

ZipWriter::ZipWriter(QIODevice *out)
    : output(std::make_unique<Output>(out)) {
    zip_error_t error = {};
    zip_error_init(&error);
    zip_source_t *const target = zip_source_function_create(&Output::answer, output.get(), &error);
    if (target != nullptr)
        archive.reset(zip_open_from_source(target, ZIP_CREATE | ZIP_EXCL, &error));
    if (!archive) {
        fail(QString::fromUtf8(zip_error_strerror(&error)));
        zip_source_free(target);
    }
    zip_error_fini(&error);
}

ZipWriter::~ZipWriter() = default;

bool ZipWriter::addFolder(const QString &name) {
    if (!reason.isEmpty())
        return false;
    return add(name + QLatin1Char('/'), zip_source_buffer(archive.get(), nullptr, 0, 0),
               plainFolder);
}

bool ZipWriter::addFile(const QString &name, std::unique_ptr<QIODevice> content) {
    if (!reason.isEmpty())
        return false;
    auto entry = std::make_unique<Content>(name, std::move(content), this);
    zip_source_t *const source = zip_source_function(archive.get(), &Content::answer, entry.get());
    if (source != nullptr)
        (void)entry.release(); // the source frees it
    return add(name, source, plainFile);
}

bool ZipWriter::add(const QString &name, zip_source *source, quint32 mode) {
    if (source == nullptr)
        return failWriting();
    const zip_int64_t added =
        zip_file_add(archive.get(), name.toUtf8().constData(), source, ZIP_FL_ENC_UTF_8);
    if (added < 0) {
        zip_source_free(source);
        return failWriting();
    }
    const auto index = zip_uint64_t(added);
    const bool set =
        zip_set_file_compression(archive.get(), index, ZIP_CM_DEFAULT, packing) == 0 &&
        zip_file_set_dostime(archive.get(), index, 0, earliestDate, 0) == 0 &&
        zip_file_set_external_attributes(archive.get(), index, 0, ZIP_OPSYS_UNIX, mode << 16) == 0;
    return set || failWriting();
}

bool ZipWriter::finish() {
    if (!reason.isEmpty())
        return false;
    if (zip_close(archive.get()) != 0)
        return failWriting();
    (void)archive.release(); // closing has freed it
    return true;
}

bool ZipWriter::fail(const QString &text) {
    if (reason.isEmpty())
        reason = text;
    return false;
}

bool ZipWriter::failWriting() {
    const QString fault = output->fault(); // libzip knows less of it
    return fail(fault.isEmpty() ? QString::fromUtf8(zip_strerror(archive.get())) : fault);
}

} // namespace ctl
