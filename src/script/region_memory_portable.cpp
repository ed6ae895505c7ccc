#include "script/region_memory.h"

#include <cstdint>
#include <new>
#include <sys/mman.h>

namespace ast {

// A large page lies at a multiple of its size: what the system gives is cut to that.
void *takeRegion(std::size_t size) {
    const std::size_t enough = size + regionUnit;
    void *const given =
        mmap(nullptr, enough, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (given == MAP_FAILED)
        throw std::bad_alloc();
    char *const begin = static_cast<char *>(given);
    const std::size_t past = reinterpret_cast<std::uintptr_t>(begin) % regionUnit;
    const std::size_t before = past == 0 ? 0 : regionUnit - past;
    if (before > 0)
        (void)munmap(begin, before);
    (void)munmap(begin + before + size, enough - before - size);
    (void)madvise(begin + before, size, MADV_HUGEPAGE); // a wish
    return begin + before;
}

void giveRegionBack(void *memory, std::size_t size) noexcept {
    (void)munmap(memory, size);
}

} // namespace ast
