#include "tree_copy.h"

#include "script/node_pool.h"

namespace {

using namespace ast;

class TreeCopy {
public:
    std::shared_ptr<Program> program(const Program &of) {
        auto copy = pool.make<Program>();
        copy->functions.reserve(of.functions.size());
        for (const auto &function : of.functions)
            copy->functions.push_back(
                std::static_pointer_cast<FunctionDeclStmt>(statement(function)));
        copy->statements.reserve(of.statements.size());
        for (const auto &other : of.statements)
            copy->statements.push_back(statement(other));
        return copy;
    }

private:
    // Only the fields that a kind uses are written, as by the parser.
    std::shared_ptr<ExprNode> node(const std::shared_ptr<ExprNode> &of) {
        if (!of)
            return nullptr;
        auto copy = pool.make<ExprNode>();
        copy->kind = of->kind;
        copy->line = of->line;
        copy->column = of->column;
        switch (of->kind) {
        case ExprKind::Raw:
            copy->rawText = of->rawText;
            break;
        case ExprKind::Literal:
            copy->literalText = of->literalText;
            copy->literalIsString = of->literalIsString;
            break;
        case ExprKind::Identifier:
            copy->identifierName = of->identifierName;
            break;
        case ExprKind::Unary:
            copy->op = of->op;
            copy->operand = node(of->operand);
            break;
        case ExprKind::Binary:
            copy->op = of->op;
            copy->left = node(of->left);
            copy->right = node(of->right);
            break;
        case ExprKind::Call:
            copy->callee = of->callee;
            copy->args.reserve(of->args.size());
            for (const auto &argument : of->args)
                copy->args.push_back(node(argument));
            break;
        case ExprKind::Index:
            copy->indexBase = node(of->indexBase);
            copy->indexValue = node(of->indexValue);
            break;
        case ExprKind::Member:
            copy->memberBase = of->memberBase;
            copy->memberName = of->memberName;
            break;
        case ExprKind::IncDec:
            copy->incDecOperand = node(of->incDecOperand);
            copy->isIncrement = of->isIncrement;
            copy->isPrefix = of->isPrefix;
            break;
        }
        return copy;
    }

    Expression expression(const Expression &of) {
        return {of.text, of.line, of.column, node(of.root)};
    }

    std::shared_ptr<Block> block(const std::shared_ptr<Block> &of) {
        if (!of)
            return nullptr;
        auto copy = pool.make<Block>();
        copy->line = of->line;
        copy->column = of->column;
        copy->statements.reserve(of->statements.size());
        for (const auto &inner : of->statements)
            copy->statements.push_back(statement(inner));
        return copy;
    }

    // A new statement of that kind at the same place; null if `of` is of another.
    template<typename Kind>
    std::shared_ptr<Kind> madeLike(const Stmt &of) {
        if (dynamic_cast<const Kind *>(&of) == nullptr)
            return nullptr;
        auto copy = pool.make<Kind>();
        copy->line = of.line;
        copy->column = of.column;
        return copy;
    }

    std::shared_ptr<Stmt> statement(const std::shared_ptr<Stmt> &of) {
        if (!of)
            return nullptr;
        if (auto copy = simpleStatement(*of))
            return copy;
        return nestedStatement(*of);
    }

    std::shared_ptr<Stmt> simpleStatement(const Stmt &of) {
        if (auto copy = madeLike<AssignStmt>(of)) {
            const auto &from = static_cast<const AssignStmt &>(of);
            copy->target = from.target;
            copy->value = expression(from.value);
            return copy;
        }
        if (auto copy = madeLike<ExprStmt>(of)) {
            copy->expr = expression(static_cast<const ExprStmt &>(of).expr);
            return copy;
        }
        if (auto copy = madeLike<VarDeclStmt>(of)) {
            const auto &from = static_cast<const VarDeclStmt &>(of);
            copy->typeName = from.typeName;
            copy->isStatic = from.isStatic;
            copy->isGlobal = from.isGlobal;
            copy->name = from.name;
            copy->arraySize = expression(from.arraySize);
            copy->isArray = from.isArray;
            copy->hasInit = from.hasInit;
            copy->init = expression(from.init);
            return copy;
        }
        if (auto copy = madeLike<IncDecStmt>(of)) {
            const auto &from = static_cast<const IncDecStmt &>(of);
            copy->name = from.name;
            copy->isIncrement = from.isIncrement;
            copy->isPrefix = from.isPrefix;
            return copy;
        }
        if (auto copy = madeLike<ReturnStmt>(of)) {
            const auto &from = static_cast<const ReturnStmt &>(of);
            copy->hasValue = from.hasValue;
            copy->value = expression(from.value);
            return copy;
        }
        if (auto copy = madeLike<BreakStmt>(of))
            return copy;
        if (auto copy = madeLike<ContinueStmt>(of))
            return copy;
        if (auto copy = madeLike<IncludeStmt>(of)) {
            copy->path = static_cast<const IncludeStmt &>(of).path;
            return copy;
        }
        if (auto copy = madeLike<ImportStmt>(of)) {
            copy->path = static_cast<const ImportStmt &>(of).path;
            return copy;
        }
        return nullptr;
    }

    std::shared_ptr<Stmt> nestedStatement(const Stmt &of) {
        if (auto copy = madeLike<IfStmt>(of)) {
            const auto &from = static_cast<const IfStmt &>(of);
            copy->condition = expression(from.condition);
            copy->thenBlock = block(from.thenBlock);
            for (const ElseIfClause &clause : from.elseIfs)
                copy->elseIfs.push_back({expression(clause.condition), block(clause.body)});
            copy->elseBlock = block(from.elseBlock);
            return copy;
        }
        if (auto copy = madeLike<ForStmt>(of)) {
            const auto &from = static_cast<const ForStmt &>(of);
            copy->init = statement(from.init);
            copy->condition = expression(from.condition);
            copy->update = statement(from.update);
            copy->body = block(from.body);
            return copy;
        }
        if (auto copy = madeLike<WhileStmt>(of)) {
            const auto &from = static_cast<const WhileStmt &>(of);
            copy->condition = expression(from.condition);
            copy->body = block(from.body);
            return copy;
        }
        if (auto copy = madeLike<SwitchStmt>(of)) {
            const auto &from = static_cast<const SwitchStmt &>(of);
            copy->value = expression(from.value);
            for (const SwitchCase &arm : from.cases)
                copy->cases.push_back(
                    {arm.isDefault, expression(arm.value), block(arm.body), arm.line, arm.column});
            return copy;
        }
        auto copy = madeLike<FunctionDeclStmt>(of);
        const auto &from = static_cast<const FunctionDeclStmt &>(of);
        copy->name = from.name;
        copy->paramTypes = from.paramTypes;
        copy->paramNames = from.paramNames;
        copy->body = block(from.body);
        return copy;
    }

    NodePool pool;
};

} // namespace

std::shared_ptr<ast::Program> copyOf(const ast::Program &program) {
    return TreeCopy().program(program);
}
