// libarchive reads; the files are written here, so that no link, device or permission of an entry
// ever takes effect.
#include "update/files/zip_extract.h"

#include "update/files/failure.h"
#include "update/files/zip_names.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QTextCodec>

#include <archive.h>
#include <archive_entry.h>
#include <clocale>

#include <memory>

namespace {

constexpr size_t readSize = 65536; // bytes, of the archive at a time

struct ReadFree {
    void operator()(archive *reader) const { archive_read_free(reader); }
};
using Reader = std::unique_ptr<archive, ReadFree>;

// libarchive converts names to the locale's encoding and would spoil Chinese ones in the plain
// locale that a service may run in. Only this thread is touched.
class Utf8Names {
public:
    Utf8Names()
        : locale(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)) {
        if (locale != nullptr)
            before = uselocale(locale);
    }
    ~Utf8Names() {
        if (locale != nullptr) {
            uselocale(before);
            freelocale(locale);
        }
    }
    Utf8Names(const Utf8Names &) = delete;
    Utf8Names &operator=(const Utf8Names &) = delete;

private:
    locale_t locale;
    locale_t before = nullptr;
};

bool failReading(archive *reader, ZipFailure *failure) {
    const char *const text = archive_error_string(reader);
    return fail(
        text != nullptr
            ? QString::fromLocal8Bit(text)
            : QStringLiteral("zip extraction failed with exit code %1").arg(archive_errno(reader)),
        &failure->reason);
}

bool timedOut(ZipFailure *failure) {
    return fail(QStringLiteral("zip extraction timed out"), &failure->reason);
}

bool unsafe(const QString &name, ZipFailure *failure) {
    failure->isUnsafe = true;
    return failAbout(unsafeNameMark(), name, &failure->reason);
}

// An old archive does not say what its names are in: UTF-8 if they can be, else GBK.
QString decodedName(const char *bytes) {
    QString text = QString::fromUtf8(bytes);
    QTextCodec *const gbk = QTextCodec::codecForName("GBK");
    if (gbk != nullptr && text.contains(QChar::ReplacementCharacter))
        text = gbk->toUnicode(bytes);
    return text.replace(QLatin1Char('\\'), QLatin1Char('/'));
}

QString nameOf(archive_entry *entry) {
    const char *const name = archive_entry_pathname(entry);
    return name != nullptr ? decodedName(name) : QString();
}

bool isFolderEntry(archive_entry *entry, const QString &name) {
    return archive_entry_filetype(entry) == AE_IFDIR || name.endsWith(QLatin1Char('/'));
}

bool checkEntry(archive_entry *entry, ZipFailure *failure) {
    const QString name = nameOf(entry);
    if (name.isEmpty() || isUnsafeZipName(name) || hasControlCharacter(name))
        return unsafe(name, failure);
    if (archive_entry_is_encrypted(entry) != 0)
        return fail(QStringLiteral("encrypted zip entry: %1").arg(name), &failure->reason);
    return true;
}

Reader openArchive(const QString &zipPath, ZipFailure *failure) {
    Reader reader(archive_read_new());
    archive_read_support_format_zip_seekable(reader.get());
    if (archive_read_open_filename(reader.get(), QFile::encodeName(zipPath).constData(),
                                   readSize) == ARCHIVE_OK)
        return reader;
    (void)failReading(reader.get(), failure);
    return nullptr;
}

// Calls `take` with each entry, in the archive's order; its failure ends the walk.
template<typename Take>
bool forEachEntry(const QString &zipPath, const QDeadlineTimer &deadline, ZipFailure *failure,
                  Take take) {
    const Reader reader = openArchive(zipPath, failure);
    if (!reader)
        return false;
    for (;;) {
        archive_entry *entry = nullptr;
        const int outcome = archive_read_next_header(reader.get(), &entry);
        if (outcome == ARCHIVE_EOF)
            return true;
        if (outcome != ARCHIVE_OK) // a warning too: a name that cannot be read
            return failReading(reader.get(), failure);
        if (deadline.hasExpired())
            return timedOut(failure);
        if (!take(reader.get(), entry))
            return false;
    }
}

// Writes entries below one folder.
class EntryWriter {
public:
    EntryWriter(const QString &targetFolder, const QDeadlineTimer &until, ZipFailure *told)
        : root(QDir::cleanPath(QFileInfo(targetFolder).absoluteFilePath()))
        , deadline(until)
        , failure(told) {
        folders.insert(root);
    }

    bool write(archive *reader, archive_entry *entry) {
        if (!checkEntry(entry, failure)) // the file may have changed since it was checked
            return false;
        const QString name = nameOf(entry);
        const QString path = QDir::cleanPath(root + QLatin1Char('/') + name);
        if (isFolderEntry(entry, name))
            return makeFolder(path, name);
        if (!path.startsWith(root + QLatin1Char('/')))
            return unsafe(name, failure);
        return makeFolder(path.left(path.lastIndexOf(QLatin1Char('/'))), name) &&
               writeFile(reader, entry, path);
    }

private:
    // Folder by folder, each once: one that is a link leads out of the target.
    bool makeFolder(const QString &path, const QString &name) {
        if (folders.contains(path))
            return true;
        if (!path.startsWith(root + QLatin1Char('/')))
            return unsafe(name, failure);
        for (int end = root.size(); end >= 0;) {
            end = path.indexOf(QLatin1Char('/'), end + 1);
            const QString folder = path.left(end);
            const QFileInfo info(folder);
            if (info.isSymLink())
                return unsafe(name, failure);
            if (!info.isDir() && !QDir().mkdir(folder))
                return fail(QStringLiteral("unable to create directory: %1").arg(folder),
                            &failure->reason);
        }
        folders.insert(path);
        return true;
    }

    bool writeFile(archive *reader, archive_entry *entry, const QString &path) {
        QFile file(path);
        // Never over an existing file, and so never through a link.
        if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered))
            return failWriting(file);
        if (const char *const linkTarget = archive_entry_symlink(entry))
            return writeBlock(file, linkTarget, qint64(qstrlen(linkTarget))) ||
                   failWriting(file); // a link's content is its text
        return writeBlocks(reader, file);
    }

    bool writeBlocks(archive *reader, QFile &file) {
        for (;;) {
            const void *block = nullptr;
            size_t size = 0;
            la_int64_t offset = 0;
            const int outcome = archive_read_data_block(reader, &block, &size, &offset);
            if (outcome == ARCHIVE_EOF)
                return true;
            if (outcome != ARCHIVE_OK) // a warning too: a wrong checksum
                return failReading(reader, failure);
            if (!writeBlock(file, static_cast<const char *>(block), qint64(size)))
                return failWriting(file);
            if (deadline.hasExpired())
                return timedOut(failure);
        }
    }

    // The rest of a block that a full disk takes in part is tried again: only then is the reason told.
    static bool writeBlock(QFile &file, const char *block, qint64 size) {
        for (qint64 done = 0; done < size;) {
            const qint64 written = file.write(block + done, size - done);
            if (written <= 0)
                return false;
            done += written;
        }
        return true;
    }

    bool failWriting(const QFile &file) {
        return fail(QStringLiteral("unable to write file: %1 (%2)")
                        .arg(file.fileName(), file.errorString()),
                    &failure->reason);
    }

    QString root;
    QDeadlineTimer deadline;
    ZipFailure *failure;
    QSet<QString> folders; // known to be there and to be no links
};

} // namespace

bool unpackZip(const QString &zipPath, const QString &targetFolder, int limitMs,
               ZipFailure *failure) {
    if (isEmptyArchive(zipPath))
        return true;
    const QDeadlineTimer deadline(limitMs);
    const Utf8Names utf8Names;
    const auto check = [failure](archive *, archive_entry *entry) {
        return checkEntry(entry, failure);
    };
    failure->isUnsafe = !checkStoredNames(zipPath, deadline, &failure->reason);
    if (failure->isUnsafe || !forEachEntry(zipPath, deadline, failure, check))
        return false;
    EntryWriter writer(targetFolder, deadline, failure);
    return forEachEntry(
        zipPath, deadline, failure,
        [&writer](archive *reader, archive_entry *entry) { return writer.write(reader, entry); });
}
