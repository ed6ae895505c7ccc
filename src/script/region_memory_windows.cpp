#include "script/region_memory.h"

#include <new>

#include <windows.h>

namespace ast {

// Large pages need a privilege that operators do not have.
void *takeRegion(std::size_t size) {
    void *const memory = VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void giveRegionBack(void *memory, std::size_t) noexcept {
    (void)VirtualFree(memory, 0, MEM_RELEASE);
}

} // namespace ast
