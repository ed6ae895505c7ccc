// Where a file decides how much memory is needed, running out of it is an outcome and not the end
// of the program: the file then counts as one that cannot be read.
#pragma once

#include <new>

// What `work` returns; `fallback` if memory ran out on the way.
template<typename Work, typename Result>
[[nodiscard]] Result unlessOutOfMemory(Work work, Result fallback) {
    try {
        return work();
    } catch (const std::bad_alloc &) {
        return fallback;
    }
}
