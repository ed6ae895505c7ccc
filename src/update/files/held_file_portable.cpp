#include "update/files/held_file.h"

#include <QFile>

#include <sys/stat.h>

struct HeldFile::Hold {
    QByteArray path;
    struct stat found {};
    bool isFound;

    explicit Hold(const QString &file)
        : path(QFile::encodeName(file))
        , isFound(::stat(path.constData(), &found) == 0) {}
};

namespace {

bool isSame(const timespec &left, const timespec &right) {
    return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
}

} // namespace

HeldFile::HeldFile(const QString &path)
    : hold(std::make_unique<Hold>(path)) {}

HeldFile::~HeldFile() = default;

// The time of writing can be set back; the time of the last change, which that changes, cannot.
bool HeldFile::isUnchanged() const {
    const struct stat &then = hold->found;
    struct stat now {};
    return hold->isFound && ::stat(hold->path.constData(), &now) == 0 &&
           now.st_dev == then.st_dev && now.st_ino == then.st_ino && now.st_size == then.st_size &&
           isSame(now.st_mtim, then.st_mtim) && isSame(now.st_ctim, then.st_ctim);
}
