// Preloaded into Wine's server, which does all that changes a folder for the programs of its prefix: counts
// the changes below one folder, and stands still once the n-th is done, until whoever waits for that has
// killed the program.
//
//   STOP_CONTROL  a file of three numbers of 32 bits: at which change (0: none), how many were seen, and 1
//                 while the server stands still, which the other side sets back
//   STOP_BELOW    a piece of text that the paths of the folder have
//   STOP_TRACE    a file that gets a line for each change
#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

namespace {

struct Control {
    std::atomic<std::uint32_t> at;
    std::atomic<std::uint32_t> seen;
    std::atomic<std::uint32_t> stands;
};

Control *control = nullptr;
const char *below = nullptr;
int trace = -1;

__attribute__((constructor)) void start() {
    const char *const path = getenv("STOP_CONTROL");
    below = getenv("STOP_BELOW");
    if (path == nullptr || below == nullptr)
        return;
    const int file = open(path, O_RDWR | O_CLOEXEC);
    void *const memory =
        mmap(nullptr, sizeof(Control), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (memory != MAP_FAILED)
        control = static_cast<Control *>(memory);
    if (const char *const told = getenv("STOP_TRACE"))
        trace = open(told, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
}

// Wine's server goes into folders and names files from there.
bool isBelow(const char *path) {
    char folder[4096];
    return strstr(path, below) != nullptr ||
           (path[0] != '/' && getcwd(folder, sizeof folder) != nullptr &&
            strstr(folder, below) != nullptr);
}

void tell(const char *name, const char *path) {
    char line[4096];
    const int size = snprintf(line, sizeof line, "%s %s\n", name, path);
    if (trace >= 0 && write(trace, line, size_t(size)) < 0)
        trace = -1;
}

void changed(const char *name, const char *path, bool done) {
    if (!done || control == nullptr || !isBelow(path))
        return;
    tell(name, path);
    if (++control->seen != control->at)
        return;
    control->stands = 1;
    while (control->stands != 0)
        usleep(1000);
}

template<typename Function>
Function real(Function, const char *name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace

#define QUORVANE_CHANGE(name, path, parameters, arguments)                                         \
    int name parameters {                                                                          \
        static const auto function = real(&::name, #name);                                         \
        const int result = function arguments;                                                     \
        changed(#name, path, result == 0);                                                         \
        return result;                                                                             \
    }

// A file that was there before is opened for what is written into it.
#define QUORVANE_OPEN(name)                                                                        \
    int name(const char *path, int flags, ...) {                                                   \
        va_list more;                                                                              \
        va_start(more, flags);                                                                     \
        const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;                     \
        va_end(more);                                                                              \
        static const auto function = real(&::name, #name);                                         \
        const bool creates = (flags & (O_CREAT | O_TRUNC)) != 0;                                   \
        const int file = function(path, flags, mode);                                              \
        changed(#name, path, creates &&file >= 0);                                                 \
        return file;                                                                               \
    }

extern "C" {

QUORVANE_OPEN(open)
QUORVANE_OPEN(open64)
QUORVANE_CHANGE(rename, to, (const char *from, const char *to), (from, to))
QUORVANE_CHANGE(unlink, path, (const char *path), (path))
QUORVANE_CHANGE(rmdir, path, (const char *path), (path))
QUORVANE_CHANGE(mkdir, path, (const char *path, mode_t mode), (path, mode))

} // extern "C"
