// Stands between a program and its C library (LD_PRELOAD) and makes one file as slow to read as a stick.
//
//   SLOW_FILE    its path, as the program opens it
//   SLOW_BYTES   the bytes of it that come in a second
//
// What one descriptor has read is waited for, not each call by itself: pieces of any size come at the
// same speed. Copying within the kernel is refused, so that the program reads.
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

namespace {

std::atomic<int> slowDescriptor{-1};
timespec opened;
double bytesRead = 0;

template<typename Function>
Function real(Function, const char *name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

int noteOpened(const char *path, int descriptor) {
    const char *const slow = getenv("SLOW_FILE");
    if (slow != nullptr && descriptor >= 0 && strcmp(path, slow) == 0) {
        slowDescriptor = descriptor;
        bytesRead = 0;
        clock_gettime(CLOCK_MONOTONIC, &opened);
    }
    return descriptor;
}

bool isSlow(int descriptor) {
    return descriptor >= 0 && descriptor == slowDescriptor;
}

ssize_t waitFor(int descriptor, ssize_t got) {
    const char *const speed = getenv("SLOW_BYTES");
    if (got <= 0 || speed == nullptr || !isSlow(descriptor))
        return got;
    bytesRead += double(got);
    const double seconds = bytesRead / strtod(speed, nullptr);
    timespec until = opened;
    until.tv_sec += time_t(seconds);
    until.tv_nsec += long((seconds - double(time_t(seconds))) * 1e9);
    if (until.tv_nsec >= 1000000000) {
        until.tv_nsec -= 1000000000;
        ++until.tv_sec;
    }
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {
    }
    return got;
}

} // namespace

extern "C" {

#define QUORVANE_OPEN(name)                                                                        \
    int name(const char *path, int flags, ...) {                                                   \
        va_list more;                                                                              \
        va_start(more, flags);                                                                     \
        const mode_t mode = va_arg(more, mode_t);                                                  \
        va_end(more);                                                                              \
        return noteOpened(path, real(&::name, #name)(path, flags, mode));                          \
    }
#define QUORVANE_OPENAT(name)                                                                      \
    int name(int folder, const char *path, int flags, ...) {                                       \
        va_list more;                                                                              \
        va_start(more, flags);                                                                     \
        const mode_t mode = va_arg(more, mode_t);                                                  \
        va_end(more);                                                                              \
        return noteOpened(path, real(&::name, #name)(folder, path, flags, mode));                  \
    }

QUORVANE_OPEN(open)
QUORVANE_OPEN(open64)
QUORVANE_OPENAT(openat)
QUORVANE_OPENAT(openat64)

// The program may give the number to another file.
int close(int descriptor) {
    if (isSlow(descriptor))
        slowDescriptor = -1;
    return real(&::close, "close")(descriptor);
}

ssize_t read(int descriptor, void *data, size_t size) {
    return waitFor(descriptor, real(&::read, "read")(descriptor, data, size));
}

ssize_t pread64(int descriptor, void *data, size_t size, off64_t at) {
    return waitFor(descriptor, real(&::pread64, "pread64")(descriptor, data, size, at));
}

ssize_t copy_file_range(int in, off64_t *inAt, int out, off64_t *outAt, size_t size,
                        unsigned flags) {
    if (!isSlow(in))
        return real(&::copy_file_range, "copy_file_range")(in, inAt, out, outAt, size, flags);
    errno = EXDEV;
    return -1;
}

} // extern "C"
