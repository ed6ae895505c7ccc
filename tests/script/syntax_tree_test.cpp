// The records of the tree: their defaults, which of their parts may be null, and that dropping a
// deep tree frees its innermost node; several threads may drop theirs at once.
#include "script/syntax_tree.h"

#include "parse_helpers.h"
#include "support/library_file.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QThread>

#include <type_traits>

class SyntaxTreeTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void everyStatementIsAStmtDirectly();
    void theNumbersOfTheExpressionKinds();
    void aNewNodeHasItsDefaults();
    void bodiesAndEntriesMayBeNull();
    void theInnermostNodeIsFreed();
    void treesAreFreedOnSeveralThreads();
    void aCopyOfANodeSharesItsChildren();
};

void SyntaxTreeTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void SyntaxTreeTest::everyStatementIsAStmtDirectly() {
    static_assert(std::has_virtual_destructor_v<ast::Stmt>);
    static_assert(std::is_base_of_v<ast::Stmt, ast::FunctionDeclStmt>);
    static_assert(!std::is_base_of_v<ast::Stmt, ast::Block>);
    static_assert(!std::is_base_of_v<ast::Stmt, ast::Program>);
    static_assert(!std::is_base_of_v<ast::Block, ast::Program>);
    static_assert(!std::is_polymorphic_v<ast::Block>);
    static_assert(!std::is_polymorphic_v<ast::ExprNode>);
    const std::shared_ptr<ast::Stmt> statement = std::make_shared<ast::ImportStmt>();
    QVERIFY(std::dynamic_pointer_cast<ast::ImportStmt>(statement));
    QVERIFY(!std::dynamic_pointer_cast<ast::VarDeclStmt>(statement));
}

void SyntaxTreeTest::theNumbersOfTheExpressionKinds() {
    QCOMPARE(int(ast::ExprKind::Literal), 0);
    QCOMPARE(int(ast::ExprKind::Identifier), 1);
    QCOMPARE(int(ast::ExprKind::Unary), 2);
    QCOMPARE(int(ast::ExprKind::Binary), 3);
    QCOMPARE(int(ast::ExprKind::Call), 4);
    QCOMPARE(int(ast::ExprKind::Index), 5);
    QCOMPARE(int(ast::ExprKind::Member), 6);
    QCOMPARE(int(ast::ExprKind::IncDec), 7);
    QCOMPARE(int(ast::ExprKind::Raw), 8);
}

void SyntaxTreeTest::aNewNodeHasItsDefaults() {
    const ast::ExprNode node;
    QCOMPARE(int(node.kind), int(ast::ExprKind::Raw));
    QCOMPARE(at(node), QString("1:1"));
    QVERIFY(!node.literalIsString && node.isIncrement && node.isPrefix);
    QVERIFY(!node.operand && !node.left && !node.right && !node.indexBase && !node.indexValue &&
            !node.incDecOperand && node.args.empty());
    const ast::VarDeclStmt declaration;
    QVERIFY(!declaration.isStatic && !declaration.isGlobal && !declaration.isArray &&
            !declaration.hasInit);
    QVERIFY(!ast::ReturnStmt().hasValue);
    QVERIFY(!ast::SwitchCase().isDefault);
    QCOMPARE(at(ast::BreakStmt()), QString("1:1"));
    QCOMPARE(at(ast::Block()), QString("1:1"));
    QCOMPARE(at(ast::Expression()), QString("1:1"));
    QCOMPARE(at(ast::SwitchCase()), QString("1:1"));
}

// A walker must test for null.
void SyntaxTreeTest::bodiesAndEntriesMayBeNull() {
    const auto open = parseScript("if (a) {").program;
    QVERIFY(!as<ast::IfStmt>(open->statements[0]).thenBlock);
    const auto openElse = parseScript("if (a) b; else {").program;
    QVERIFY(!as<ast::IfStmt>(openElse->statements[0]).elseBlock);
    const auto openFor = parseScript("for (a; b; c) {").program;
    QVERIFY(!as<ast::ForStmt>(openFor->statements[0]).body);
    const auto openWhile = parseScript("while (a) {").program;
    QVERIFY(!as<ast::WhileStmt>(openWhile->statements[0]).body);
    const auto empty = parseScript("while (a)").program;
    const auto &body = *as<ast::WhileStmt>(empty->statements[0]).body;
    QCOMPARE(int(body.statements.size()), 1);
    QVERIFY(!body.statements[0]);
}

// Dropping the last pointer frees the innermost node, without anybody's help.
void SyntaxTreeTest::theInnermostNodeIsFreed() {
    const QString open = "if (a) b; else if (a) { switch (c) { case 1: while (d) { ";
    const QString source =
        "function f() { " + open.repeated(1000) + "- - x" + QString(" } } }").repeated(1000) + " }";
    auto program = parseScript(source).program;
    QVERIFY(program);
    const ast::Block *block = program->functions[0]->body.get();
    std::weak_ptr<ast::Stmt> last;
    for (int i = 0; i < 1000; ++i) {
        const auto &choice = as<ast::IfStmt>(block->statements[0]);
        const auto &arms = as<ast::SwitchStmt>(choice.elseIfs[0].body->statements[0]);
        const auto &loop = as<ast::WhileStmt>(arms.cases[0].body->statements[0]);
        block = loop.body.get();
        last = block->statements[0];
    }
    const std::weak_ptr<ast::ExprNode> node = as<ast::ExprStmt>(last.lock()).expr.root->operand;
    QVERIFY(!last.expired() && !node.expired());
    program.reset();
    QVERIFY(last.expired() && node.expired());
}

// Each thread frees its own trees, also at the same time.
void SyntaxTreeTest::treesAreFreedOnSeveralThreads() {
    std::vector<std::unique_ptr<QThread>> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back(QThread::create([] {
            for (int round = 0; round < 20; ++round)
                (void)parseScript(QString("if (a) { b = - - c; ").repeated(500) +
                                  QString("}").repeated(500));
        }));
        threads.back()->start();
    }
    for (const auto &thread : threads)
        QVERIFY(thread->wait(60000));
}

void SyntaxTreeTest::aCopyOfANodeSharesItsChildren() {
    const auto program = parseScript("a + - b").program;
    const auto root = as<ast::ExprStmt>(program->statements[0]).expr.root;
    {
        const ast::ExprNode copy = *root;
        QCOMPARE(copy.right, root->right);
    }
    QCOMPARE(ast::expressionToText(root.get()), QString("(+ a (- b))"));
}

QUORVANE_TEST_MAIN(QCoreApplication, SyntaxTreeTest)
#include "syntax_tree_test.moc"
