#include "script/large_pages.h"

namespace ast {

// Large pages need a privilege that operators do not have, and are never paged out.
void preferLargePages(void *, std::size_t) {}

} // namespace ast
