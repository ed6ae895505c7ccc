#include "script/node_pool.h"

#include "script/region_memory.h"

#include <algorithm>
#include <limits>
#include <new>

namespace ast {
namespace {

// The first region fits a script of a few lines, and each next one is twice as large. The large ones
// come from the system itself.
constexpr std::size_t firstRegion = 4096;
constexpr std::size_t largestRegion = 4 * regionUnit;
static_assert(regionUnit % firstRegion == 0);
// More than any standard library keeps beside a record: counts, a table of functions, the allocator.
constexpr std::size_t mostBesideNode = 64;
// No region holds as many records.
constexpr std::ptrdiff_t held = std::numeric_limits<std::ptrdiff_t>::max() / 2;

} // namespace

NodePool::~NodePool() {
    closeRegion();
}

void *NodePool::Region::take(std::size_t size) {
    const std::size_t rounded = (size + alignment - 1) / alignment * alignment;
    if (rounded > std::size_t(end - next))
        throw std::bad_alloc();
    void *const memory = next;
    next += rounded;
    ++taken;
    return memory;
}

// Frees the region with its last record.
void NodePool::Region::drop(std::ptrdiff_t count) noexcept {
    if (live.fetch_sub(count, std::memory_order_acq_rel) != count)
        return;
    const std::size_t bytes = wholeSize;
    this->~Region();
    if (bytes < regionUnit)
        ::operator delete(static_cast<void *>(this));
    else
        giveRegionBack(this, bytes);
}

NodePool::Region *NodePool::withRoomFor(std::size_t size) {
    if (current != nullptr && std::size_t(current->end - current->next) >= size + mostBesideNode)
        return current;
    closeRegion();
    const std::size_t bytes = std::max(nextSize, firstRegion);
    nextSize = std::min(bytes * 2, largestRegion);
    void *const memory = bytes < regionUnit ? ::operator new(bytes) : takeRegion(bytes);
    char *const begin = static_cast<char *>(memory);
    current = new (memory) Region{{held}, 0, begin + sizeof(Region), begin + bytes, bytes};
    return current;
}

// From here on the records alone keep the region.
void NodePool::closeRegion() noexcept {
    if (current != nullptr)
        current->drop(held - current->taken);
    current = nullptr;
}

} // namespace ast
