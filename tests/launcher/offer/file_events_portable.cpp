// A program's own functions come before those of the C library, for the libraries it uses too.
#include "file_events.h"

#include <QFile>

#include <cerrno>
#include <cstdarg>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

thread_local file_events::Listener listener;
thread_local bool isListening = false;

// True when the operation must not be done: errno is set.
bool fails(file_events::Kind kind, const char *path) {
    if (!isListening)
        return false;
    isListening = false;
    const int failure = listener(kind, QFile::decodeName(path));
    isListening = true;
    if (failure != 0)
        errno = failure;
    return failure != 0;
}

bool failsToOpen(const char *path, int flags) {
    const bool writes = (flags & O_ACCMODE) != O_RDONLY;
    return fails(writes ? file_events::Kind::Write : file_events::Kind::Read, path);
}

template<typename Function>
Function real(Function, const char *name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace

namespace file_events {

Watch::Watch(const Listener &toTell) {
    listener = toTell;
    isListening = true;
}

Watch::~Watch() {
    isListening = false;
    listener = nullptr;
}

bool areSeen() {
    return true;
}

} // namespace file_events

extern "C" {

#define QUORVANE_OPEN(name)                                                                        \
    int name(const char *path, int flags, ...) {                                                   \
        va_list more;                                                                              \
        va_start(more, flags);                                                                     \
        const mode_t mode = va_arg(more, mode_t);                                                  \
        va_end(more);                                                                              \
        static const auto next = real(&::name, #name);                                             \
        return failsToOpen(path, flags) ? -1 : next(path, flags, mode);                            \
    }
QUORVANE_OPEN(open)
QUORVANE_OPEN(open64)

int access(const char *path, int mode) {
    static const auto next = real(&::access, "access");
    return fails(file_events::Kind::Look, path) ? -1 : next(path, mode);
}

int rmdir(const char *path) {
    static const auto next = real(&::rmdir, "rmdir");
    return fails(file_events::Kind::Remove, path) ? -1 : next(path);
}

int flock(int descriptor, int operation) {
    static const auto next = real(&::flock, "flock");
    const QString path = QFile::symLinkTarget(QStringLiteral("/proc/self/fd/%1").arg(descriptor));
    const bool locks = (operation & LOCK_UN) == 0;
    return locks && fails(file_events::Kind::Lock, QFile::encodeName(path).constData())
               ? -1
               : next(descriptor, operation);
}

int nanosleep(const timespec *time, timespec *left) {
    static const auto next = real(&::nanosleep, "nanosleep");
    const qint64 milliseconds = qint64(time->tv_sec) * 1000 + time->tv_nsec / 1000000;
    return fails(file_events::Kind::Wait, QByteArray::number(milliseconds).constData())
               ? 0
               : next(time, left);
}

} // extern "C"
