// How trees are freed: without recursion, so that depth takes no stack.
#include "script/syntax_tree.h"

#include <new>
#include <utility>

namespace ast {
namespace {

using ExprPointer = std::shared_ptr<ExprNode>;

bool hasChildren(const ExprNode &node) {
    return node.operand || node.left || node.right || !node.args.empty() || node.indexBase ||
           node.indexValue || node.incDecOperand;
}

// A list of nodes that wait to be freed, linked through `operand`: freeing takes no memory.
class DyingNodes {
public:
    // Takes `child` if nobody else holds it. Its own chain of operands is a part of the list at
    // once: each node is walked only here, once.
    void take(ExprPointer &child) {
        if (!child || child.use_count() > 1 || !hasChildren(*child)) {
            child.reset();
            return;
        }
        ExprNode *end = child.get();
        while (end->operand && end->operand.use_count() == 1)
            end = end->operand.get();
        end->operand = std::move(first);
        first = std::move(child);
    }

    void takeChildrenOf(ExprNode &node) {
        take(node.left);
        take(node.right);
        for (ExprPointer &argument : node.args)
            take(argument);
        take(node.indexBase);
        take(node.indexValue);
        take(node.incDecOperand);
    }

    void freeAll() {
        while (first) {
            const ExprPointer node = std::move(first);
            first = std::move(node->operand);
            takeChildrenOf(*node);
        }
    }

private:
    ExprPointer first;
};

using Statements = std::vector<std::shared_ptr<Stmt>>;

// The statements of blocks that die while another block of this thread is being freed.
thread_local std::vector<Statements> *waitingStatements = nullptr;

} // namespace

// Frees the nodes below one after another. Left to the pointers alone, each level of nesting would
// take a few frames of the stack.
ExprNode::~ExprNode() {
    if (!hasChildren(*this))
        return;
    DyingNodes nodes;
    nodes.take(operand);
    nodes.takeChildrenOf(*this);
    nodes.freeAll();
}

Stmt::~Stmt() = default;

// The same for blocks: an inner block hands its statements to the outermost one and is done.
Block::~Block() {
    if (statements.empty())
        return;
    if (waitingStatements != nullptr) {
        try {
            waitingStatements->push_back(std::move(statements));
        } catch (const std::bad_alloc &) {
            // No memory left to wait in: they are freed here and now, one level deeper.
        }
        return;
    }
    std::vector<Statements> waiting;
    waitingStatements = &waiting;
    statements.clear();
    while (!waiting.empty()) {
        const Statements next = std::move(waiting.back());
        waiting.pop_back();
    }
    waitingStatements = nullptr;
}

} // namespace ast
