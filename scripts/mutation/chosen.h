// Included by scripts/mutate in a copy of the product's source files. All changes of a run are compiled
// into one build; MUTATE_CHOSEN tells the number of the one that is to hold, in this program and in those
// that it starts. MUTATE_REACHED names a file with a byte for each: where a program has come by, it is set.
// A file that is mapped keeps that even if the program is killed.
#pragma once

#include <cstdlib>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace mutation {

inline long chosenNumber() {
    const char *number = std::getenv("MUTATE_CHOSEN");
    return number != nullptr ? std::atol(number) : -1;
}

struct Reached {
    unsigned char *bytes = nullptr;
    long size = 0;

    Reached() {
        const char *name = std::getenv("MUTATE_REACHED");
        const int file = name != nullptr ? open(name, O_RDWR | O_CLOEXEC) : -1;
        struct stat status = {};
        if (file < 0 || fstat(file, &status) != 0)
            return;
        void *place =
            mmap(nullptr, std::size_t(status.st_size), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        close(file);
        if (place == MAP_FAILED)
            return;
        bytes = static_cast<unsigned char *>(place);
        size = status.st_size;
    }
};

inline const long chosen = chosenNumber();
inline const Reached reached;

inline bool isChosen(long number) {
    if (number < reached.size)
        reached.bytes[number] = 1;
    return number == chosen;
}

} // namespace mutation
