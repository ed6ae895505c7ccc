// The rules of the script language, written down once more as plainly as they can be: recursive,
// every clause joined to a text and lexed again, no care for speed or depth. The product's parsers
// are compared with it.
#pragma once

#include "script/syntax_tree.h"
#include "script/token.h"

#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace reference {

std::vector<ast::Token> tokenize(const QString &source, QString *error = nullptr);

std::shared_ptr<ast::ExprNode> parseExpressionText(const QString &text, QString *error = nullptr);
ast::Expression makeExpression(const QString &text, int line, int column);

class Parser {
public:
    explicit Parser(std::vector<ast::Token> tokens);

    std::shared_ptr<ast::Program> parseProgram(QString *error);
    std::shared_ptr<ast::FunctionDeclStmt> parseFunctionDecl(QString *error);
    std::shared_ptr<ast::Stmt> parseIncludeDirective(QString *error);
    std::shared_ptr<ast::Stmt> parseImportStatement(QString *error);
    std::shared_ptr<ast::Stmt> parseStatement(QString *error);
    std::shared_ptr<ast::Block> parseBlock(QString *error);
    std::shared_ptr<ast::Stmt> parseSimpleStatement(QString *error);
    std::shared_ptr<ast::Stmt> parseSimpleText(const QString &text, int line, int column,
                                               QString *error);
    std::shared_ptr<ast::Stmt> parseVarDecl(const ast::Token &type, bool isStatic, bool isGlobal,
                                            QString *error);
    std::shared_ptr<ast::Stmt> parseIf(QString *error);
    std::shared_ptr<ast::Stmt> parseFor(QString *error);
    std::shared_ptr<ast::Stmt> parseWhile(QString *error);
    std::shared_ptr<ast::Stmt> parseSwitch(QString *error);

private:
    using Stop = std::function<bool(const ast::Token &)>;

    const ast::Token &peek(int offset = 0) const;
    bool atEnd() const;
    bool check(int kind) const;
    ast::Token advance();
    bool match(int kind);
    bool expect(int kind, const QString &message, QString *error);
    void skipNewlines();
    QString collectText(const Stop &stop);

    std::vector<ast::Token> tokens;
    size_t pos = 0;
};

} // namespace reference
