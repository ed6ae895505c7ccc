// Not QFile::copy, which waits for the disk after each file: a project of many files would take
// several times as long. Instead the whole volume is waited for once, before anything is removed.
#include "update/files/file_copy.h"

#include "update/files/write_out.h"

#include <QFile>

#include <fcntl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

namespace {

constexpr off_t copyPiece = writeOutPiece;

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

// By the first call both share their blocks until one of them is written to, where the file system can. What
// it refuses, or takes for the end, is sent by the second, from where the first has stopped.
bool moveContent(int source, int target, off_t size) {
    off_t left = size;
    (void)moveAll(target, &left, [&](size_t piece) {
        return ::copy_file_range(source, nullptr, target, nullptr, piece, 0);
    });
    return moveAll(target, &left,
                   [&](size_t piece) { return ::sendfile(target, source, nullptr, piece); });
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
