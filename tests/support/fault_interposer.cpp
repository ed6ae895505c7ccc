// Stands between a program and its C library (LD_PRELOAD) and lets the n-th file operation go wrong.
//
// Counts from fault_begin() to fault_end(), which the program looks up by name and calls around the
// part that it means. What is to happen stands in the environment:
//   FAULT_AT     the number of the operation, from 1; 0 or nothing: none fails
//   FAULT_WITH   the errno that it fails with, or 0: the process is killed instead of it
//   FAULT_STAYS  1: so do later ones, as long as the cause would last: on a full disk (ENOSPC) all that
//                take room, else the same operation on the same path
//   FAULT_SHORT  1: an operation that moves data moves half of it before the disk is full
//   FAULT_CLOCK  the seconds by which the system's clock is set once the unpacked package is read
//   FAULT_START  1: counts from the start of a program that does not know of this library
//   FAULT_TRACE  a file that the name and the path of each operation are written to, one a line
// Only one thread may be at work in between.
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <initializer_list>
#include <linux/fs.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

bool counting = false;
long count = 0;
long failAt = 0;
int failWith = 0;
bool failStays = false;
bool failShort = false;
int trace = -1;
time_t clockStep = 0; // seconds
bool clockWasSet = false;
char stuck[4096]; // the name and the path of the operation that failed

long numberIn(const char *variable) {
    const char *const text = getenv(variable);
    return text != nullptr ? strtol(text, nullptr, 10) : 0;
}

void traceCall(const char *name, const char *path) {
    char line[512];
    const int size = snprintf(line, sizeof line, "%s %s\n", name, path);
    syscall(SYS_write, trace, line, size_t(size));
}

// Unpacking only writes there, so the first reading is the check of what was unpacked.
void setClockAt(const char *path, int flags) {
    if (counting && (flags & O_ACCMODE) == O_RDONLY && (flags & O_DIRECTORY) == 0 &&
        strstr(path, "/temp/apply_") != nullptr)
        clockWasSet = true;
}

bool takesRoom(const char *name) {
    for (const char *const taking :
         {"write", "pwrite64", "writev", "sendfile", "sendfile64", "copy_file_range", "ftruncate64",
          "mkdir", "mkdirat", "link", "linkat"}) {
        if (strcmp(name, taking) == 0)
            return true;
    }
    return false;
}

bool failsAgain(const char *name, const char *path) {
    if (!failStays || failAt == 0 || count < failAt)
        return false;
    if (failWith == ENOSPC)
        return takesRoom(name);
    char here[sizeof stuck];
    snprintf(here, sizeof here, "%s %s", name, path);
    return *path != '\0' && strcmp(here, stuck) == 0;
}

// True when the operation must not be done: errno is set.
bool fails(const char *name, const char *path = "") {
    if (!counting)
        return false;
    ++count;
    if (trace >= 0)
        traceCall(name, path);
    if (count != failAt && !failsAgain(name, path))
        return false;
    if (failWith == 0)
        syscall(SYS_kill, getpid(), SIGKILL);
    if (count == failAt)
        snprintf(stuck, sizeof stuck, "%s %s", name, path);
    errno = failWith;
    return true;
}

// How much an operation that moves data moves; none of it if the answer is below 0.
ssize_t sizeAllowed(const char *name, size_t size) {
    if (!fails(name))
        return ssize_t(size);
    return failShort && count == failAt && size > 1 ? ssize_t(size / 2) : -1;
}

template<typename Function>
Function real(Function, const char *name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace

#define QUORVANE_REAL(name)                                                                        \
    ({                                                                                             \
        static const auto function = real(&::name, #name);                                         \
        function;                                                                                  \
    })

extern "C" {

void fault_begin() {
    failAt = numberIn("FAULT_AT");
    failWith = int(numberIn("FAULT_WITH"));
    failStays = numberIn("FAULT_STAYS") != 0;
    failShort = numberIn("FAULT_SHORT") != 0;
    clockStep = time_t(numberIn("FAULT_CLOCK"));
    if (const char *const file = getenv("FAULT_TRACE"))
        trace = int(
            syscall(SYS_openat, AT_FDCWD, file, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    count = 0;
    counting = true;
}

__attribute__((constructor)) void fault_start() {
    if (numberIn("FAULT_START") != 0)
        fault_begin();
}

// Returns the number of operations.
long fault_end() {
    counting = false;
    return count;
}

#define QUORVANE_OPEN(name)                                                                        \
    int name(const char *path, int flags, ...) {                                                   \
        va_list more;                                                                              \
        va_start(more, flags);                                                                     \
        const mode_t mode = va_arg(more, mode_t);                                                  \
        va_end(more);                                                                              \
        setClockAt(path, flags);                                                                   \
        return fails(#name, path) ? -1 : QUORVANE_REAL(name)(path, flags, mode);                   \
    }
#define QUORVANE_OPENAT(name)                                                                      \
    int name(int folder, const char *path, int flags, ...) {                                       \
        va_list more;                                                                              \
        va_start(more, flags);                                                                     \
        const mode_t mode = va_arg(more, mode_t);                                                  \
        va_end(more);                                                                              \
        setClockAt(path, flags);                                                                   \
        return fails(#name, path) ? -1 : QUORVANE_REAL(name)(folder, path, flags, mode);           \
    }
#define QUORVANE_CALL(Result, failure, name, path, parameters, arguments)                          \
    Result name parameters {                                                                       \
        return fails(#name, path) ? failure : QUORVANE_REAL(name) arguments;                       \
    }

// The parameters hold a `size`.
#define QUORVANE_MOVE(name, parameters, arguments)                                                 \
    ssize_t name parameters {                                                                      \
        const ssize_t allowed = sizeAllowed(#name, size);                                          \
        size = size_t(allowed);                                                                    \
        return allowed < 0 ? -1 : QUORVANE_REAL(name) arguments;                                   \
    }

QUORVANE_OPEN(open)
QUORVANE_OPEN(open64)
QUORVANE_OPENAT(openat)
QUORVANE_OPENAT(openat64)

QUORVANE_CALL(ssize_t, -1, read, "", (int fd, void *data, size_t size), (fd, data, size))
QUORVANE_CALL(ssize_t, -1, pread64, "", (int fd, void *data, size_t size, off64_t at),
              (fd, data, size, at))
QUORVANE_MOVE(write, (int fd, const void *data, size_t size), (fd, data, size))
QUORVANE_MOVE(pwrite64, (int fd, const void *data, size_t size, off64_t at), (fd, data, size, at))
QUORVANE_CALL(ssize_t, -1, writev, "", (int fd, const iovec *parts, int number),
              (fd, parts, number))
QUORVANE_MOVE(sendfile, (int out, int in, off_t *at, size_t size), (out, in, at, size))
QUORVANE_MOVE(sendfile64, (int out, int in, off64_t *at, size_t size), (out, in, at, size))
QUORVANE_MOVE(copy_file_range,
              (int in, off64_t *inAt, int out, off64_t *outAt, size_t size, unsigned flags),
              (in, inAt, out, outAt, size, flags))
QUORVANE_CALL(int, -1, ftruncate64, "", (int fd, off64_t size), (fd, size))
QUORVANE_CALL(int, -1, fsync, "", (int fd), (fd))
QUORVANE_CALL(int, -1, fdatasync, "", (int fd), (fd))
QUORVANE_CALL(int, -1, syncfs, "", (int fd) noexcept, (fd))

QUORVANE_CALL(int, -1, link, to, (const char *from, const char *to), (from, to))
QUORVANE_CALL(int, -1, linkat, to, (int a, const char *from, int b, const char *to, int flags),
              (a, from, b, to, flags))
QUORVANE_CALL(int, -1, rename, to, (const char *from, const char *to), (from, to))
QUORVANE_CALL(int, -1, renameat, to, (int a, const char *from, int b, const char *to),
              (a, from, b, to))
QUORVANE_CALL(int, -1, renameat2, to,
              (int a, const char *from, int b, const char *to, unsigned flags),
              (a, from, b, to, flags))
QUORVANE_CALL(int, -1, unlink, path, (const char *path), (path))
QUORVANE_CALL(int, -1, unlinkat, path, (int folder, const char *path, int flags),
              (folder, path, flags))
QUORVANE_CALL(int, -1, remove, path, (const char *path), (path))
QUORVANE_CALL(int, -1, rmdir, path, (const char *path), (path))
QUORVANE_CALL(int, -1, mkdir, path, (const char *path, mode_t mode), (path, mode))
QUORVANE_CALL(int, -1, mkdirat, path, (int folder, const char *path, mode_t mode),
              (folder, path, mode))
QUORVANE_CALL(int, -1, chmod, path, (const char *path, mode_t mode), (path, mode))
QUORVANE_CALL(int, -1, fchmod, "", (int fd, mode_t mode), (fd, mode))
QUORVANE_CALL(int, -1, futimens, "", (int fd, const timespec times[2]), (fd, times))

QUORVANE_CALL(DIR *, nullptr, opendir, path, (const char *path), (path))
QUORVANE_CALL(DIR *, nullptr, fdopendir, "", (int fd), (fd))
QUORVANE_CALL(dirent64 *, nullptr, readdir64, "", (DIR * folder), (folder))
QUORVANE_CALL(dirent *, nullptr, readdir, "", (DIR * folder), (folder))

// Qt asks here what time it is.
int gettimeofday(timeval *__restrict now, void *__restrict zone) noexcept {
    const int result = QUORVANE_REAL(gettimeofday)(now, zone);
    if (clockWasSet && result == 0)
        now->tv_sec += clockStep;
    return result;
}

// Of the requests only that for a shared copy of a file is an operation on files.
int ioctl(int fd, unsigned long request, ...) {
    va_list more;
    va_start(more, request);
    void *const argument = va_arg(more, void *);
    va_end(more);
    if (request == FICLONE && fails("ioctl"))
        return -1;
    return QUORVANE_REAL(ioctl)(fd, request, argument);
}

} // extern "C"
