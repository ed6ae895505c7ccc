// ZipReader reads; the files are written here, so that no link, device or permission of an entry ever
// takes effect.
#include "update/files/zip_unpack.h"

#include "update/files/failure.h"
#include "update/files/write_out.h"
#include "update/files/zip_names.h"
#include "update/files/zip_reader.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

namespace {

bool unsafe(const QString &name, ZipFailure *failure) {
    failure->isUnsafe = true;
    return failAbout(unsafeNameMark(), name, &failure->reason);
}

bool checkItem(const ZipItem &item, ZipFailure *failure) {
    if (item.name.isEmpty() || isUnsafeZipName(item.name) || hasControlCharacter(item.name))
        return unsafe(item.name, failure);
    if (item.isEncrypted)
        return fail(QStringLiteral("encrypted zip entry: %1").arg(item.name), &failure->reason);
    if (!item.isReadable)
        return failAbout(item.name, QStringLiteral("the compression is not supported"),
                         &failure->reason);
    if (item.isFolder && item.size > 0)
        return failAbout(item.name, QStringLiteral("a folder cannot have content"),
                         &failure->reason);
    return true;
}

// Writes entries below one folder.
class EntryWriter {
public:
    EntryWriter(const QString &targetFolder, ZipFailure *told)
        : root(QDir::cleanPath(QFileInfo(targetFolder).absoluteFilePath()))
        , failure(told) {
        folders.insert(root);
    }

    bool write(ZipReader &reader, qint64 index) {
        const ZipItem item = reader.item(index);
        const QString path = QDir::cleanPath(root + QLatin1Char('/') + item.name);
        if (item.isFolder)
            return makeFolder(path, item.name);
        if (!path.startsWith(root + QLatin1Char('/')))
            return unsafe(item.name, failure);
        return makeFolder(path.left(path.lastIndexOf(QLatin1Char('/'))), item.name) &&
               writeFile(reader, index, path);
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

    // A link's content is its text.
    bool writeFile(ZipReader &reader, qint64 index, const QString &path) {
        QFile file(path);
        // Never over an existing file, and so never through a link.
        if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered))
            return failWriting(file);
        qint64 waiting = 0;
        const auto take = [this, &file, &waiting](const char *block, qint64 size) {
            waiting += size;
            if (waiting >= writeOutPiece) {
                beginWritingOut(file.handle());
                waiting = 0;
            }
            return writeBlock(file, block, size) || failWriting(file);
        };
        const bool written = reader.read(index, take, failure);
        beginWritingOut(file.handle());
        return written;
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
    ZipFailure *failure;
    QSet<QString> folders; // known to be there and to be no links
};

} // namespace

bool unpackByLibzip(const QString &zipPath, const QString &targetFolder, int limitMs,
                    ZipFailure *failure) {
    const auto none = [](const QString &) { return false; };
    return unpackSomeByLibzip(zipPath, targetFolder, limitMs, none, failure);
}

bool unpackSomeByLibzip(const QString &zipPath, const QString &targetFolder, int limitMs,
                        const LeavesOut &leavesOut, ZipFailure *failure) {
    const QDeadlineTimer deadline(limitMs);
    ZipReader reader(zipPath, deadline);
    if (!reader.open(failure))
        return false;
    const qint64 count = reader.count();
    for (qint64 i = 0; i < count; ++i) {
        if (!checkItem(reader.item(i), failure))
            return false;
    }
    EntryWriter writer(targetFolder, failure);
    for (qint64 i = 0; i < count; ++i) {
        if (deadline.hasExpired())
            return fail(QStringLiteral("zip extraction timed out"), &failure->reason);
        if (!leavesOut(reader.item(i).name) && !writer.write(reader, i))
            return false;
    }
    return true;
}
