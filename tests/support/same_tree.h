// Compares syntax trees field by field, recursively: for trees of modest depth.
#pragma once

#include "script/syntax_tree.h"

namespace support {

enum class Positions { Compared, Ignored };

[[nodiscard]] bool sameTree(const ast::Program *a, const ast::Program *b,
                            Positions positions = Positions::Compared);
[[nodiscard]] bool sameTree(const ast::ExprNode *a, const ast::ExprNode *b,
                            Positions positions = Positions::Compared);

} // namespace support
