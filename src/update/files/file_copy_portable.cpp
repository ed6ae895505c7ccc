// Not QFile::copy, which waits for the disk after each file: a project of many files would take
// several times as long. Instead the whole volume is waited for once, before anything is removed.
#include "update/files/file_copy.h"

#include "update/files/write_out.h"

#include <QByteArray>
#include <QFile>

#include <fcntl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace {

constexpr off_t copyPiece = writeOutPiece;
constexpr size_t copyBlock = 1 << 18; // bytes

class Descriptor {
public:
    Descriptor(const QString &path, int flags, mode_t mode = 0)
        : number(::open(QFile::encodeName(path).constData(), flags | O_CLOEXEC, mode)) {}
    ~Descriptor() { (void)close(); }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    // A network file system may tell only here that it could not keep what was written.
    bool close() { return number < 0 || ::close(std::exchange(number, -1)) == 0; }

    int number;
};

// Goes on until nothing is left, or the file ends before that. False if the system refused.
template<typename Move>
bool moveAll(int target, off_t *left, Move move) {
    while (*left > 0) {
        const ssize_t size = move(size_t(std::min<off_t>(*left, copyPiece)));
        if (size <= 0)
            return size == 0;
        *left -= size;
        beginWritingOut(target);
    }
    return true;
}

// False also where the disk takes only a part and then nothing.
bool writeAll(int target, const char *block, ssize_t size) {
    for (ssize_t done = 0; done < size;) {
        const ssize_t written = ::write(target, block + done, size_t(size - done));
        if (written <= 0)
            return false;
        done += written;
    }
    return true;
}

bool moveByHand(int source, int target, off_t *left) {
    QByteArray block(int(copyBlock), Qt::Uninitialized);
    return moveAll(target, left, [&](size_t piece) -> ssize_t {
        const ssize_t size = ::read(source, block.data(), std::min(piece, copyBlock));
        return writeAll(target, block.constData(), size) ? size : -1;
    });
}

// By the first call both share their blocks until one of them is written to, where the file system can. What
// it refuses, or takes for the end, is sent by the second, from where the first has stopped. Some file systems
// know neither.
bool moveContent(int source, int target, off_t size) {
    off_t left = size;
    (void)moveAll(target, &left, [&](size_t piece) {
        return ::copy_file_range(source, nullptr, target, nullptr, piece, 0);
    });
    return moveAll(target, &left,
                   [&](size_t piece) { return ::sendfile(target, source, nullptr, piece); }) ||
           ((errno == EINVAL || errno == ENOSYS) && moveByHand(source, target, &left));
}

} // namespace

bool copyFileContent(const QString &source, const QString &destination) {
    struct stat about {};
    if (::stat(QFile::encodeName(source).constData(), &about) != 0 || !S_ISREG(about.st_mode))
        return false; // opening a pipe would wait for its other end
    const Descriptor from(source, O_RDONLY);
    Descriptor to(destination, O_WRONLY | O_CREAT | O_EXCL, S_IWUSR);
    return from.number >= 0 && to.number >= 0 && ::fchmod(to.number, about.st_mode & 07777) == 0 &&
           moveContent(from.number, to.number, about.st_size) && to.close();
}

bool flushFolder(const QString &folder) {
    const int descriptor =
        ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    const bool flushed = ::syncfs(descriptor) == 0;
    ::close(descriptor);
    return flushed;
}
