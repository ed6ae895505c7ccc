// The statements of a script, from the outside inwards, for who goes through them without taking stack, and what
// more than one of those asks of them.
#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace ast {
struct FunctionDeclStmt;
struct ImportStmt;
struct Program;
struct Stmt;
} // namespace ast

namespace ctl {

// Appends what stands directly in it, none of it null: in the order of the text of each list of statements, the
// functions of a program first.
void addInner(const ast::Program &program, std::vector<const ast::Stmt *> *statements);
void addInner(const ast::Stmt &statement, std::vector<const ast::Stmt *> *statements);

// Such as "int image" for each.
[[nodiscard]] QStringList parametersOf(const ast::FunctionDeclStmt &function);

// Cleaned and absolute; empty for a rooted path, which is not followed.
[[nodiscard]] QString importedPath(const QString &filePath, const ast::ImportStmt &import);

} // namespace ctl
