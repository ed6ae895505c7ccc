#include "support/same_tree.h"

#include <algorithm>
#include <typeinfo>

namespace support {
namespace {

using namespace ast;

class Comparison {
public:
    explicit Comparison(Positions positions)
        : comparesPositions(positions == Positions::Compared) {}

    template<typename Node>
    bool same(const std::shared_ptr<Node> &a, const std::shared_ptr<Node> &b) const {
        return same(a.get(), b.get());
    }

    template<typename Entry>
    bool same(const std::vector<Entry> &a, const std::vector<Entry> &b) const {
        return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                          [this](const Entry &x, const Entry &y) { return same(x, y); });
    }

    bool same(const Program *a, const Program *b) const {
        if (!a || !b)
            return a == b;
        return same(a->functions, b->functions) && same(a->statements, b->statements) &&
               a->sourcePath == b->sourcePath;
    }

    bool same(const ExprNode *a, const ExprNode *b) const {
        if (!a || !b)
            return a == b;
        return a->kind == b->kind && samePosition(*a, *b) && a->rawText == b->rawText &&
               a->literalText == b->literalText && a->literalIsString == b->literalIsString &&
               a->identifierName == b->identifierName && a->op == b->op &&
               same(a->operand, b->operand) && same(a->left, b->left) && same(a->right, b->right) &&
               a->callee == b->callee && same(a->args, b->args) &&
               same(a->indexBase, b->indexBase) && same(a->indexValue, b->indexValue) &&
               a->memberBase == b->memberBase && a->memberName == b->memberName &&
               same(a->incDecOperand, b->incDecOperand) && a->isIncrement == b->isIncrement &&
               a->isPrefix == b->isPrefix;
    }

    bool same(const Block *a, const Block *b) const {
        if (!a || !b)
            return a == b;
        return samePosition(*a, *b) && same(a->statements, b->statements);
    }

    bool same(const Stmt *a, const Stmt *b) const {
        if (!a || !b)
            return a == b;
        if (typeid(*a) != typeid(*b) || !samePosition(*a, *b))
            return false;
        return sameAs<IncludeStmt>(a, b) && sameAs<ImportStmt>(a, b) &&
               sameAs<FunctionDeclStmt>(a, b) && sameAs<ReturnStmt>(a, b) &&
               sameAs<VarDeclStmt>(a, b) && sameAs<AssignStmt>(a, b) && sameAs<IncDecStmt>(a, b) &&
               sameAs<ExprStmt>(a, b) && sameAs<IfStmt>(a, b) && sameAs<ForStmt>(a, b) &&
               sameAs<WhileStmt>(a, b) && sameAs<SwitchStmt>(a, b);
    }

private:
    template<typename Node>
    bool samePosition(const Node &a, const Node &b) const {
        return !comparesPositions || (a.line == b.line && a.column == b.column);
    }

    // True also for statements of another class.
    template<typename Statement>
    bool sameAs(const Stmt *a, const Stmt *b) const {
        const auto *own = dynamic_cast<const Statement *>(a);
        return own == nullptr || fields(*own, static_cast<const Statement &>(*b));
    }

    bool same(const Expression &a, const Expression &b) const {
        return a.text == b.text && samePosition(a, b) && same(a.root, b.root);
    }
    bool same(const ElseIfClause &a, const ElseIfClause &b) const {
        return same(a.condition, b.condition) && same(a.body, b.body);
    }
    bool same(const SwitchCase &a, const SwitchCase &b) const {
        return a.isDefault == b.isDefault && same(a.value, b.value) && same(a.body, b.body) &&
               samePosition(a, b);
    }

    bool fields(const IncludeStmt &a, const IncludeStmt &b) const { return a.path == b.path; }
    bool fields(const ImportStmt &a, const ImportStmt &b) const { return a.path == b.path; }
    bool fields(const FunctionDeclStmt &a, const FunctionDeclStmt &b) const {
        return a.name == b.name && a.paramTypes == b.paramTypes && a.paramNames == b.paramNames &&
               same(a.body, b.body);
    }
    bool fields(const ReturnStmt &a, const ReturnStmt &b) const {
        return a.hasValue == b.hasValue && same(a.value, b.value);
    }
    bool fields(const VarDeclStmt &a, const VarDeclStmt &b) const {
        return a.typeName == b.typeName && a.isStatic == b.isStatic && a.isGlobal == b.isGlobal &&
               a.name == b.name && same(a.arraySize, b.arraySize) && a.isArray == b.isArray &&
               a.hasInit == b.hasInit && same(a.init, b.init);
    }
    bool fields(const AssignStmt &a, const AssignStmt &b) const {
        return a.target == b.target && same(a.value, b.value);
    }
    bool fields(const IncDecStmt &a, const IncDecStmt &b) const {
        return a.name == b.name && a.isIncrement == b.isIncrement && a.isPrefix == b.isPrefix;
    }
    bool fields(const ExprStmt &a, const ExprStmt &b) const { return same(a.expr, b.expr); }
    bool fields(const IfStmt &a, const IfStmt &b) const {
        return same(a.condition, b.condition) && same(a.thenBlock, b.thenBlock) &&
               same(a.elseIfs, b.elseIfs) && same(a.elseBlock, b.elseBlock);
    }
    bool fields(const ForStmt &a, const ForStmt &b) const {
        return same(a.init, b.init) && same(a.condition, b.condition) && same(a.update, b.update) &&
               same(a.body, b.body);
    }
    bool fields(const WhileStmt &a, const WhileStmt &b) const {
        return same(a.condition, b.condition) && same(a.body, b.body);
    }
    bool fields(const SwitchStmt &a, const SwitchStmt &b) const {
        return same(a.value, b.value) && same(a.cases, b.cases);
    }

    bool comparesPositions;
};

} // namespace

bool sameTree(const Program *a, const Program *b, Positions positions) {
    return Comparison(positions).same(a, b);
}

bool sameTree(const ExprNode *a, const ExprNode *b, Positions positions) {
    return Comparison(positions).same(a, b);
}

} // namespace support
