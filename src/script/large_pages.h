// large_pages_portable.cpp, large_pages_windows.cpp: how the system backs memory.
#pragma once

#include <cstddef>

namespace ast {

// Asks the system for large pages behind memory that is about to be filled: it then enters a few times
// instead of once for each 4 KiB. A wish, whose refusal costs nothing but time. Small memory is left alone.
void preferLargePages(void *memory, std::size_t size);

} // namespace ast
