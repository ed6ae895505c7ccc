// Statements that hold others. What the recursive rule would leave on the thread's stack stands in
// frames: a frame for each statement that waits for a block, and for each block or arm that waits
// for its next statement.
#include "script/expression_parser.h"
#include "script/parser.h"
#include "script/stop_tests.h"

#include <iterator>
#include <utility>

namespace ast {

std::shared_ptr<Stmt> Parser::parseStatement(QString *error) {
    return runStatement(beginStatement(error), error);
}

std::shared_ptr<Stmt> Parser::parseIf(QString *error) {
    return runStatement(beginIf(error), error);
}

std::shared_ptr<Stmt> Parser::parseFor(QString *error) {
    return runStatement(beginFor(error), error);
}

std::shared_ptr<Stmt> Parser::parseWhile(QString *error) {
    return runStatement(beginWhile(error), error);
}

std::shared_ptr<Stmt> Parser::parseSwitch(QString *error) {
    return runStatement(beginSwitch(error), error);
}

std::shared_ptr<Block> Parser::parseBlock(QString *error) {
    run(Step::Block, error);
    return std::move(readBlock);
}

std::shared_ptr<Stmt> Parser::runStatement(Step step, QString *error) {
    run(step, error);
    return std::move(readStatement);
}

// Goes on until nothing stands open.
void Parser::run(Step step, QString *error) {
    while (step != Step::Finished || !frames.empty()) {
        switch (step) {
        case Step::Statement:
            step = beginStatement(error);
            break;
        case Step::Block:
            step = beginBlock(error);
            break;
        case Step::Finished:
            step = resume(error);
            break;
        }
    }
}

Parser::Step Parser::finish(std::shared_ptr<Stmt> statement) {
    readStatement = std::move(statement);
    return Step::Finished;
}

Parser::Step Parser::fail() {
    return finish(nullptr);
}

Parser::Step Parser::beginStatement(QString *error) {
    skipNewlines();
    switch (peek().kind) {
    case Eof:
    case RBrace:
        return fail();
    case Hash:
        return finish(parseIncludeDirective(error));
    case KwImport:
        return finish(parseImportStatement(error));
    case KwIf:
        return beginIf(error);
    case KwFor:
        return beginFor(error);
    case KwWhile:
        return beginWhile(error);
    case KwSwitch:
        return beginSwitch(error);
    case KwBreak:
        return finish(parseJump<BreakStmt>());
    case KwContinue:
        return finish(parseJump<ContinueStmt>());
    case KwReturn:
        return finish(parseReturn());
    case KwElse:
        report(QStringLiteral("dangling else"), here(), error);
        return fail();
    case KwStatic:
    case KwGlobal:
        return finish(parseStoredDeclaration(error));
    case KwInt:
    case KwBool:
    case KwFloat:
    case KwString:
    case KwChar:
        return finish(parseVarDecl(advance(), false, false, error));
    default:
        return finish(parseSimpleStatement(error));
    }
}

Parser::Step Parser::beginBlock(QString *error) {
    auto block = pool->make<Block>();
    block->line = peek().line;
    block->column = peek().column;
    if (!expect(LBrace, QStringLiteral("expected '{'"), error)) {
        readBlock.reset();
        return Step::Finished;
    }
    skipNewlines();
    frames.push_back({Frame::Kind::Block, nullptr, std::move(block), collected.size()});
    return check(RBrace) || atEnd() ? closeBlock(error) : Step::Statement;
}

// A statement that fails fails its block.
Parser::Step Parser::resumeBlock(QString *error) {
    if (!readStatement) {
        collected.resize(frames.back().firstStatement);
        frames.pop_back();
        readBlock.reset();
        return Step::Finished;
    }
    collected.push_back(std::move(readStatement));
    skipNewlines();
    return check(RBrace) || atEnd() ? closeBlock(error) : Step::Statement;
}

Parser::Step Parser::closeBlock(QString *error) {
    const auto first = collected.begin() + std::ptrdiff_t(frames.back().firstStatement);
    readBlock = std::move(frames.back().block);
    readBlock->statements.assign(std::make_move_iterator(first),
                                 std::make_move_iterator(collected.end()));
    collected.erase(first, collected.end());
    frames.pop_back();
    if (!expect(RBrace, QStringLiteral("expected '}'"), error))
        readBlock.reset();
    return Step::Finished;
}

// Hands the result of the step that finished to what it stands in. A body that failed stays null
// in its statement, which goes on.
Parser::Step Parser::resume(QString *error) {
    const Frame::Kind kind = frames.back().kind;
    if (kind == Frame::Kind::Block)
        return resumeBlock(error);
    if (kind == Frame::Kind::Arm)
        return resumeArm(error);
    const std::shared_ptr<Stmt> statement = std::move(frames.back().statement);
    frames.pop_back();
    if (kind == Frame::Kind::ForBody) {
        static_cast<ForStmt &>(*statement).body = std::move(readBlock);
        return finish(statement);
    }
    if (kind == Frame::Kind::WhileBody) {
        static_cast<WhileStmt &>(*statement).body = std::move(readBlock);
        return finish(statement);
    }
    const auto ifStatement = std::static_pointer_cast<IfStmt>(statement);
    if (kind == Frame::Kind::Else) {
        ifStatement->elseBlock = std::move(readBlock);
        return finish(statement);
    }
    if (kind == Frame::Kind::Then)
        ifStatement->thenBlock = std::move(readBlock);
    else
        ifStatement->elseIfs.back().body = std::move(readBlock);
    return continueIf(ifStatement, error);
}

Parser::Step Parser::enterBody(Frame::Kind kind, std::shared_ptr<Stmt> statement) {
    frames.push_back({kind, std::move(statement), nullptr});
    return Step::Block;
}

// A body without braces, at no position; a statement that fails leaves a null entry.
std::shared_ptr<Block> Parser::bareBody(QString *error) {
    auto body = pool->make<Block>();
    body->statements.push_back(parseSimpleStatement(error));
    return body;
}

// "(" text ")"
bool Parser::parseCondition(const QString &openMessage, const QString &closeMessage,
                            Expression &condition, QString *error) {
    if (!expect(LParen, openMessage, error))
        return false;
    condition = collectExpression(isCloseParen);
    return expect(RParen, closeMessage, error);
}

Parser::Step Parser::beginIf(QString *error) {
    auto statement = pool->make<IfStmt>();
    statement->line = peek().line;
    statement->column = peek().column;
    advance();
    if (!parseCondition(QStringLiteral("expected '(' after if"),
                        QStringLiteral("expected ')' after if condition"), statement->condition,
                        error))
        return fail();
    skipNewlines();
    if (check(LBrace))
        return enterBody(Frame::Kind::Then, std::move(statement));
    // Unlike every other bare body this one has a position, and its failure fails the statement.
    const Position at = here();
    statement->thenBlock = bareBody(error);
    statement->thenBlock->line = at.line;
    statement->thenBlock->column = at.column;
    if (!statement->thenBlock->statements.front())
        return fail();
    return continueIf(statement, error);
}

// Behind the first body, and behind each "else if" that had its own.
Parser::Step Parser::continueIf(const std::shared_ptr<IfStmt> &statement, QString *error) {
    skipNewlines();
    while (match(KwElse)) {
        skipNewlines();
        if (!match(KwIf))
            return beginElse(statement, error);
        ElseIfClause clause;
        if (!parseCondition(QStringLiteral("expected '(' after else if"),
                            QStringLiteral("expected ')' after else if condition"),
                            clause.condition, error))
            return fail();
        // No newlines are skipped here: a '{' on the next line leaves an empty bare body.
        const bool hasBlock = check(LBrace);
        if (!hasBlock)
            clause.body = bareBody(error);
        statement->elseIfs.push_back(std::move(clause));
        if (hasBlock)
            return enterBody(Frame::Kind::ElseIf, statement);
        skipNewlines();
    }
    return finish(statement);
}

Parser::Step Parser::beginElse(const std::shared_ptr<IfStmt> &statement, QString *error) {
    if (check(LBrace))
        return enterBody(Frame::Kind::Else, statement);
    statement->elseBlock = bareBody(error);
    return finish(statement);
}

Parser::Step Parser::beginWhile(QString *error) {
    auto statement = pool->make<WhileStmt>();
    statement->line = peek().line;
    statement->column = peek().column;
    advance();
    if (!parseCondition(QStringLiteral("expected '(' after while"),
                        QStringLiteral("expected ')' after while condition"), statement->condition,
                        error))
        return fail();
    skipNewlines();
    if (check(LBrace))
        return enterBody(Frame::Kind::WhileBody, std::move(statement));
    statement->body = bareBody(error);
    return finish(std::move(statement));
}

Parser::Step Parser::beginFor(QString *error) {
    auto statement = pool->make<ForStmt>();
    statement->line = peek().line;
    statement->column = peek().column;
    advance();
    if (!expect(LParen, QStringLiteral("expected '(' after for"), error))
        return fail();
    statement->init = parseForInit(error);
    if (!statement->init)
        return fail();
    statement->condition = collectExpression(isSemicolon);
    if (!expect(Semicolon, QStringLiteral("expected ';' after for condition"), error))
        return fail();
    statement->update = parseForUpdate();
    if (!expect(RParen, QStringLiteral("expected ')' after for update"), error))
        return fail();
    skipNewlines();
    if (check(LBrace))
        return enterBody(Frame::Kind::ForBody, std::move(statement));
    statement->body = bareBody(error);
    return finish(std::move(statement));
}

Parser::Step Parser::beginSwitch(QString *error) {
    auto statement = pool->make<SwitchStmt>();
    statement->line = peek().line;
    statement->column = peek().column;
    advance();
    if (!parseCondition(QStringLiteral("expected '(' after switch"),
                        QStringLiteral("expected ')' after switch expression"), statement->value,
                        error))
        return fail();
    // No newlines are skipped before the brace.
    if (!expect(LBrace, QStringLiteral("expected '{' after switch"), error))
        return fail();
    skipNewlines();
    frames.push_back({Frame::Kind::Arm, std::move(statement), nullptr});
    return readArms(error);
}

// Reads labels until one has a statement behind it, or the switch ends.
Parser::Step Parser::readArms(QString *error) {
    auto &statement = static_cast<SwitchStmt &>(*frames.back().statement);
    bool isWhole = true;
    while (isWhole && !check(RBrace) && !atEnd()) {
        skipNewlines();
        if (check(RBrace))
            break;
        isWhole = readArmLabel(statement, error);
        if (isWhole && startsArmStatement())
            return Step::Statement;
    }
    std::shared_ptr<Stmt> result = std::move(frames.back().statement);
    frames.pop_back();
    if (!isWhole || !expect(RBrace, QStringLiteral("expected '}' after switch"), error))
        return fail();
    return finish(std::move(result));
}

bool Parser::readArmLabel(SwitchStmt &statement, QString *error) {
    const Position label = here();
    SwitchCase arm;
    arm.line = label.line;
    arm.column = label.column;
    if (match(KwCase)) {
        arm.value = collectExpression(isColon);
        if (!expect(Colon, QStringLiteral("expected ':' after case"), error))
            return false;
    } else if (match(KwDefault)) {
        arm.isDefault = true;
        if (!expect(Colon, QStringLiteral("expected ':' after default"), error))
            return false;
    } else {
        report(QStringLiteral("expected case or default in switch"), label, error);
        return false;
    }
    arm.body = pool->make<Block>();
    arm.body->line = arm.line;
    arm.body->column = arm.column;
    statement.cases.push_back(std::move(arm));
    return true;
}

// False where the arm ends. With nothing but newlines before the end of the file a statement is
// still tried, and fails the switch.
bool Parser::startsArmStatement() {
    const auto isAtArmEnd = [this] { return check(RBrace) || check(KwCase) || check(KwDefault); };
    if (isAtArmEnd() || atEnd())
        return false;
    skipNewlines();
    return !isAtArmEnd();
}

Parser::Step Parser::resumeArm(QString *error) {
    if (!readStatement) {
        frames.pop_back();
        return fail();
    }
    auto &statement = static_cast<SwitchStmt &>(*frames.back().statement);
    statement.cases.back().body->statements.push_back(std::move(readStatement));
    skipNewlines();
    return !check(RBrace) && startsArmStatement() ? Step::Statement : readArms(error);
}

} // namespace ast
