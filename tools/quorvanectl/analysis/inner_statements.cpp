#include "quorvanectl/analysis/inner_statements.h"

#include "script/script_facts.h"
#include "script/syntax_tree.h"
#include "update/files/project_path.h"

#include <QDir>
#include <QFileInfo>

namespace ctl {
namespace {

template<typename Statements>
void addAll(const Statements &list, std::vector<const ast::Stmt *> *statements) {
    for (const auto &statement : list) {
        if (statement != nullptr)
            statements->push_back(statement.get());
    }
}

void addBlock(const ast::Block *block, std::vector<const ast::Stmt *> *statements) {
    if (block != nullptr)
        addAll(block->statements, statements);
}

} // namespace

void addInner(const ast::Program &program, std::vector<const ast::Stmt *> *statements) {
    addAll(program.functions, statements);
    addAll(program.statements, statements);
}

void addInner(const ast::Stmt &statement, std::vector<const ast::Stmt *> *statements) {
    if (const auto *const function = dynamic_cast<const ast::FunctionDeclStmt *>(&statement)) {
        addBlock(function->body.get(), statements);
    } else if (const auto *const branch = dynamic_cast<const ast::IfStmt *>(&statement)) {
        addBlock(branch->thenBlock.get(), statements);
        for (const ast::ElseIfClause &clause : branch->elseIfs)
            addBlock(clause.body.get(), statements);
        addBlock(branch->elseBlock.get(), statements);
    } else if (const auto *const loop = dynamic_cast<const ast::ForStmt *>(&statement)) {
        addBlock(loop->body.get(), statements);
    } else if (const auto *const turn = dynamic_cast<const ast::WhileStmt *>(&statement)) {
        addBlock(turn->body.get(), statements);
    } else if (const auto *const choice = dynamic_cast<const ast::SwitchStmt *>(&statement)) {
        for (const ast::SwitchCase &arm : choice->cases)
            addBlock(arm.body.get(), statements);
    }
}

QStringList parametersOf(const ast::FunctionDeclStmt &function) {
    QStringList parameters;
    for (int i = 0; i < function.paramNames.size(); ++i)
        parameters.append(function.paramTypes.at(i) + QLatin1Char(' ') + function.paramNames.at(i));
    return parameters;
}

QString importedPath(const QString &filePath, const ast::ImportStmt &import) {
    if (ast::isRootedPath(import.path))
        return {};
    const QDir folder = QFileInfo(filePath).absoluteDir();
    return QDir::cleanPath(folder.absoluteFilePath(slashedPath(import.path)));
}

} // namespace ctl
