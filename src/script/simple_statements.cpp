// Statements that hold no other statement: declarations, and the simple statements that are read
// from a text.
#include "script/expression_parser.h"
#include "script/lexer.h"
#include "script/parser.h"
#include "script/stop_tests.h"

#include <algorithm>
#include <utility>

namespace ast {
namespace {

bool hasBracketOrLiteral(const Token *first, const Token *last) {
    return std::any_of(first, last, [](const Token &token) {
        return (token.kind >= LParen && token.kind <= RBracket) || token.kind == Comma ||
               token.kind == StringLiteral || token.kind == CharLiteral;
    });
}

bool isIncDec(const Token &token) {
    return token.kind == PlusPlus || token.kind == MinusMinus;
}

std::shared_ptr<IncDecStmt> incDec(const Token &name, const Token &op, bool isPrefix,
                                   NodePool &nodes) {
    auto statement = nodes.make<IncDecStmt>();
    statement->name = name.text;
    statement->isIncrement = op.kind == PlusPlus;
    statement->isPrefix = isPrefix;
    return statement;
}

// The scan looks at the whole text on purpose: "x = y++" is an increment of y, and nothing of the
// assignment remains.
std::shared_ptr<IncDecStmt> readIncDec(const Token *first, const Token *last, NodePool &nodes) {
    if (last - first < 2 || hasBracketOrLiteral(first, last))
        return nullptr;
    if (isIncDec(first[0]) && first[1].kind == Identifier)
        return incDec(first[1], first[0], true, nodes);
    const auto *name = std::adjacent_find(first, last, [](const Token &a, const Token &b) {
        return a.kind == Identifier && isIncDec(b);
    });
    return name == last ? nullptr : incDec(name[0], name[1], false, nodes);
}

// The first '=' outside of parentheses and brackets; `last` if there is none, or if one opens the
// text. Braces do not count.
Token *assignOperator(Token *first, Token *last) {
    int depth = 0;
    for (Token *token = first; token != last; ++token) {
        if (token->kind == LParen || token->kind == LBracket)
            ++depth;
        else if (token->kind == RParen || token->kind == RBracket)
            depth = std::max(depth - 1, 0);
        else if (token->kind == Assign && depth == 0)
            return token == first ? last : token;
    }
    return last;
}

// What the tokens of one lexer run, without Eof, say by themselves: null for an expression.
std::shared_ptr<Stmt> readIncDecOrAssign(Token *first, Token *last, qint32 line, qint32 column,
                                         NodePool &nodes) {
    if (auto statement = readIncDec(first, last, nodes)) {
        statement->line = line;
        statement->column = column;
        return statement;
    }
    Token *op = assignOperator(first, last);
    if (op == last)
        return nullptr;
    auto statement = nodes.make<AssignStmt>();
    statement->line = line;
    statement->column = column;
    statement->target = joinedText(makeClause(first, op), nodes.texts);
    statement->value = makeExpression(makeClause(op + 1, last), line, column, nodes);
    return statement;
}

std::shared_ptr<Stmt> expressionStatement(Expression expression, NodePool &nodes) {
    auto statement = nodes.make<ExprStmt>();
    statement->line = expression.line;
    statement->column = expression.column;
    statement->expr = std::move(expression);
    return statement;
}

} // namespace

Expression Parser::collectExpression(StopTest stop) {
    const Position at = here();
    if (detail == Detail::Whole)
        return makeExpression(collectClause(stop), at.line, at.column, *pool);
    (void)collectTokens(stop);
    return {QString(), at.line, at.column, nullptr};
}

std::shared_ptr<Stmt> Parser::parseSimpleText(const QString &text, qint32 line, qint32 column,
                                              QString *error) {
    QString lexError;
    std::vector<Token> lexed = Lexer(text).tokenize(&lexError);
    if (!lexError.isEmpty()) {
        if (error != nullptr)
            *error = lexError;
        return nullptr;
    }
    Token *first = lexed.data();
    auto statement = readIncDecOrAssign(first, first + lexed.size() - 1, line, column, *pool);
    return statement ? statement : expressionStatement(makeExpression(text, line, column), *pool);
}

// parseSimpleText of the clause's text.
std::shared_ptr<Stmt> Parser::parseSimpleClause(const Clause &clause, Position at) {
    if (detail == Detail::Outline)
        return expressionStatement({QString(), at.line, at.column, nullptr}, *pool);
    auto statement = readIncDecOrAssign(clause.first, clause.last, at.line, at.column, *pool);
    return statement
               ? statement
               : expressionStatement(makeExpression(clause, at.line, at.column, *pool), *pool);
}

std::shared_ptr<Stmt> Parser::parseSimpleStatement(QString *error) {
    const Position at = here();
    const Clause clause = collectStatement(isStatementEnd);
    if (clause.first == clause.last) {
        report(QStringLiteral("empty statement"), at, error);
        return nullptr;
    }
    auto statement = parseSimpleClause(clause, at);
    match(Semicolon);
    return statement;
}

// "static" or "global" and what must follow it.
std::shared_ptr<Stmt> Parser::parseStoredDeclaration(QString *error) {
    const bool isStatic = advance().kind == KwStatic;
    if (!isType(peek())) {
        report(isStatic ? QStringLiteral("expected type after static")
                        : QStringLiteral("expected type after global"),
               here(), error);
        return nullptr;
    }
    return parseVarDecl(advance(), isStatic, !isStatic, error);
}

std::shared_ptr<Stmt> Parser::parseVarDecl(const Token &type, bool isStatic, bool isGlobal,
                                           QString *error) {
    auto statement = pool->make<VarDeclStmt>();
    statement->line = type.line;
    statement->column = type.column;
    statement->typeName = type.text;
    statement->isStatic = isStatic;
    statement->isGlobal = isGlobal;
    if (!check(Identifier)) {
        report(QStringLiteral("expected variable name"), here(), error);
        return nullptr;
    }
    statement->name = advance().text;
    if (match(LBracket)) {
        statement->isArray = true;
        statement->arraySize = collectExpression(isCloseBracket);
        if (!expect(RBracket, QStringLiteral("expected ']'"), error))
            return nullptr;
    }
    if (match(Assign)) {
        statement->hasInit = true;
        statement->init = collectExpression(isStatementEnd);
    }
    match(Semicolon);
    return statement;
}

template<typename Statement>
std::shared_ptr<Stmt> Parser::parseJump() {
    auto statement = pool->make<Statement>();
    statement->line = peek().line;
    statement->column = peek().column;
    advance();
    match(Semicolon);
    return statement;
}

// At Eof none of the three ends stands there, so the value is there and empty.
std::shared_ptr<Stmt> Parser::parseReturn() {
    auto statement = pool->make<ReturnStmt>();
    statement->line = peek().line;
    statement->column = peek().column;
    advance();
    if (!isStatementEnd(peek())) {
        statement->hasValue = true;
        statement->value = collectExpression(isStatementEnd);
    }
    match(Semicolon);
    return statement;
}

template std::shared_ptr<Stmt> Parser::parseJump<BreakStmt>();
template std::shared_ptr<Stmt> Parser::parseJump<ContinueStmt>();

} // namespace ast
