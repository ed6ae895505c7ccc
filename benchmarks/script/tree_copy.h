// What a script's tree costs by itself: its records made once more from a tree that is there already, with
// nothing read and nothing decided.
#pragma once

#include "script/syntax_tree.h"

#include <memory>

// Every record with its texts, which share the memory of the first tree's. Goes as deep as the tree does, and is
// meant for generated programs.
[[nodiscard]] std::shared_ptr<ast::Program> copyOf(const ast::Program &program);
