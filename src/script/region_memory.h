// region_memory_portable.cpp, region_memory_windows.cpp: memory straight from the system, for what is large
// and freed as a whole. A heap would keep it, search it and put it together with its neighbours.
#pragma once

#include <cstddef>

namespace ast {

// A multiple of it is what the system hands out best.
inline constexpr std::size_t regionUnit = std::size_t(2) * 1024 * 1024;

// `size` is a multiple of regionUnit. Zeroed; behind it stand large pages where the system has them, so
// that it enters a few times instead of once for each 4 KiB. Throws std::bad_alloc.
[[nodiscard]] void *takeRegion(std::size_t size);

// What takeRegion gave for this size.
void giveRegionBack(void *memory, std::size_t size) noexcept;

} // namespace ast
