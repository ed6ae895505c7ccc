#include "update/files/zip_reader.h"

#include "update/files/failure.h"
#include "update/files/zip_names.h"
#include "update/files/zip_stored_names.h"

#include <sys/stat.h>
#include <zip.h>

#include <cerrno>
#include <cstring>

namespace {

constexpr int blockSize = 1 << 18; // bytes

// libzip asks for data in pieces of 8 KiB; of an item's header it asks for less than the smaller number.
constexpr qint64 smallestData = 4096;
constexpr int readAhead = 1 << 16; // bytes

// Opening takes memory by what stands before the entries' data, and far more where entries share it.
constexpr qint64 mostHeaderBytes = 64 << 20;

} // namespace

// The archive's file as libzip asks for it, so that it is asked no longer than the deadline allows.
class ZipReader::Input {
public:
    Input(QFile *from, const QDeadlineTimer &until)
        : file(from)
        , deadline(until) {
        zip_error_init(&error);
    }
    ~Input() { zip_error_fini(&error); }
    Input(const Input &) = delete;
    Input &operator=(const Input &) = delete;

    static zip_int64_t answer(void *input, void *data, zip_uint64_t size,
                              zip_source_cmd_t command) {
        return static_cast<Input *>(input)->carryOut(command, data, size);
    }
    void endOpening() { isOpening = false; }
    [[nodiscard]] bool isTooLarge() const { return headerBytes > mostHeaderBytes; }

private:
    zip_int64_t carryOut(zip_source_cmd_t command, void *data, zip_uint64_t size) {
        switch (command) {
        case ZIP_SOURCE_SUPPORTS:
            return zip_source_make_command_bitmap(
                ZIP_SOURCE_OPEN, ZIP_SOURCE_READ, ZIP_SOURCE_CLOSE, ZIP_SOURCE_STAT,
                ZIP_SOURCE_ERROR, ZIP_SOURCE_FREE, ZIP_SOURCE_SEEK, ZIP_SOURCE_TELL,
                ZIP_SOURCE_ACCEPT_EMPTY, -1);
        case ZIP_SOURCE_STAT:
            return tellSize(static_cast<zip_stat_t *>(data));
        case ZIP_SOURCE_SEEK:
            return seek(data, size);
        case ZIP_SOURCE_TELL:
            return at;
        case ZIP_SOURCE_READ:
            return read(static_cast<char *>(data), qint64(size));
        case ZIP_SOURCE_ERROR:
            return zip_error_to_data(&error, data, size);
        default: // opening, closing, and whether no bytes at all are an archive
            return 0;
        }
    }

    zip_int64_t fail(int reason, int systemReason = 0) {
        zip_error_set(&error, reason, systemReason);
        return -1;
    }

    // Asked of the system once: libzip seeks before each piece.
    qint64 fileSize() {
        if (knownSize < 0)
            knownSize = file->size();
        return knownSize;
    }

    zip_int64_t tellSize(zip_stat_t *stat) {
        zip_stat_init(stat);
        stat->size = zip_uint64_t(fileSize());
        stat->valid = ZIP_STAT_SIZE;
        return 0;
    }

    zip_int64_t seek(void *data, zip_uint64_t size) {
        const zip_int64_t to = zip_source_seek_compute_offset(
            zip_uint64_t(at), zip_uint64_t(fileSize()), data, size, &error);
        if (to < 0)
            return -1;
        at = to;
        return 0;
    }

    zip_int64_t read(char *data, qint64 size) {
        if (isOpening)
            headerBytes += size;
        if (isTooLarge() || deadline.hasExpired())
            return fail(ZIP_ER_CANCELLED);
        const bool ahead = !isOpening && (holds(at) || size >= smallestData);
        const qint64 got = ahead ? readBuffered(data, size) : readAt(at, data, size);
        if (got < 0)
            return fail(ZIP_ER_READ, EIO);
        at += got;
        return got;
    }

    [[nodiscard]] bool holds(qint64 place) const {
        return place >= bufferAt && place < bufferAt + buffer.size();
    }

    qint64 readAt(qint64 place, char *data, qint64 size) {
        return file->pos() == place || file->seek(place) ? file->read(data, size) : -1;
    }

    // Less than asked for only at the file's end.
    qint64 readBuffered(char *data, qint64 size) {
        qint64 done = 0;
        while (done < size) {
            const qint64 place = at + done;
            if (!holds(place) && !fillFrom(place))
                return -1;
            const qint64 from = place - bufferAt;
            const qint64 got = qMin(size - done, buffer.size() - from);
            if (got == 0)
                break;
            std::memcpy(data + done, buffer.constData() + from, size_t(got));
            done += got;
        }
        return done;
    }

    bool fillFrom(qint64 place) {
        buffer.resize(readAhead);
        const qint64 got = readAt(place, buffer.data(), readAhead);
        buffer.resize(int(qMax<qint64>(0, got)));
        bufferAt = place;
        return got >= 0;
    }

    QFile *file;
    QDeadlineTimer deadline;
    zip_error_t error = {};
    bool isOpening = true;
    qint64 headerBytes = 0;
    qint64 knownSize = -1;
    qint64 at = 0;
    QByteArray buffer; // of the file, from `bufferAt` on
    qint64 bufferAt = 0;
};

void ZipReader::Discard::operator()(zip *opened) const {
    zip_discard(opened);
}

ZipReader::ZipReader(const QString &path, const QDeadlineTimer &until)
    : file(path)
    , deadline(until)
    , input(std::make_unique<Input>(&file, until)) {}

ZipReader::~ZipReader() = default;

bool ZipReader::open(ZipFailure *failure) {
    // A buffer would read far more than the few bytes at each place.
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return fail(file.errorString(), &failure->reason);
    return checkStoredNames(file, deadline, failure) && openArchive(failure);
}

bool ZipReader::openArchive(ZipFailure *failure) {
    zip_error_t error = {};
    zip_error_init(&error);
    zip_source_t *const source = zip_source_function_create(&Input::answer, input.get(), &error);
    if (source != nullptr)
        archive.reset(zip_open_from_source(source, ZIP_RDONLY | ZIP_CHECKCONS, &error));
    if (!archive) {
        (void)failReading(&error, failure);
        zip_source_free(source);
    }
    zip_error_fini(&error);
    input->endOpening();
    return archive != nullptr;
}

qint64 ZipReader::count() const {
    return zip_get_num_entries(archive.get(), 0);
}

ZipItem ZipReader::item(qint64 index) const {
    ZipItem item;
    zip_stat_t stat;
    const char *const name = zip_get_name(archive.get(), zip_uint64_t(index), ZIP_FL_ENC_RAW);
    if (name == nullptr || zip_stat_index(archive.get(), zip_uint64_t(index), 0, &stat) != 0)
        return item;
    zip_uint8_t system = 0;
    zip_uint32_t attributes = 0;
    (void)zip_file_get_external_attributes(archive.get(), zip_uint64_t(index), 0, &system,
                                           &attributes);
    item.name = decodedZipName(name);
    item.size = stat.size;
    item.isFolder = item.name.endsWith(QLatin1Char('/')) ||
                    (system == ZIP_OPSYS_UNIX && S_ISDIR(attributes >> 16));
    item.isEncrypted = stat.encryption_method != ZIP_EM_NONE;
    item.isReadable = zip_compression_method_supported(stat.comp_method, 0) != 0;
    return item;
}

bool ZipReader::read(qint64 index, const Take &take, ZipFailure *failure) {
    const std::unique_ptr<zip_file_t, int (*)(zip_file_t *)> content(
        zip_fopen_index(archive.get(), zip_uint64_t(index), 0), &zip_fclose);
    if (!content)
        return failAbout(index, zip_get_error(archive.get()), failure);
    block.resize(blockSize);
    for (;;) {
        const zip_int64_t got = zip_fread(content.get(), block.data(), blockSize);
        if (got == 0)
            return true;
        if (got < 0)
            return failAbout(index, zip_file_get_error(content.get()), failure);
        if (deadline.hasExpired())
            return fail(QStringLiteral("zip extraction timed out"), &failure->reason);
        if (!take(block.constData(), got))
            return false;
    }
}

bool ZipReader::failReading(zip_error *error, ZipFailure *failure) const {
    if (deadline.hasExpired())
        return fail(QStringLiteral("zip extraction timed out"), &failure->reason);
    if (input->isTooLarge())
        return fail(tooLargeDirectory(), &failure->reason);
    if (zip_error_code_zip(error) == ZIP_ER_EXISTS)
        return fail(QStringLiteral("two zip entries of one name"), &failure->reason);
    return fail(QString::fromUtf8(zip_error_strerror(error)), &failure->reason);
}

bool ZipReader::failAbout(qint64 index, zip_error *error, ZipFailure *failure) const {
    (void)failReading(error, failure);
    if (!deadline.hasExpired())
        failure->reason = QStringLiteral("%1: %2").arg(item(index).name, failure->reason);
    return false;
}
