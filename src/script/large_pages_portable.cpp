#include "script/large_pages.h"

#include <cstdint>
#include <sys/mman.h>

namespace ast {
namespace {

constexpr std::uintptr_t page = 4096;
// What is smaller holds no large page as a whole.
constexpr std::size_t smallest = 2 * 1024 * 1024;

} // namespace

void preferLargePages(void *memory, std::size_t size) {
    if (size < smallest)
        return;
    const auto begin = reinterpret_cast<std::uintptr_t>(memory);
    const std::uintptr_t first = (begin + page - 1) / page * page;
    const std::uintptr_t last = (begin + size) / page * page;
    (void)madvise(reinterpret_cast<void *>(first), last - first, MADV_HUGEPAGE);
}

} // namespace ast
