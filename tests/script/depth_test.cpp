// Depth and size are data: scripts that nest a million deep (twenty thousand for the less likely
// shapes) give what the rules give for three levels, and are parsed, printed and freed on a thread
// with a stack of 256 KiB.
#include "script/expression_parser.h"
#include "script/lexer.h"
#include "script/parser.h"
#include "script/printed_form.h"

#include "reference_parser.h"
#include "support/library_file.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QThread>

#include <functional>
#include <memory>

namespace {

constexpr int smallStack = 256 * 1024;

void runOnSmallStack(const std::function<void()> &work) {
    const std::unique_ptr<QThread> thread(QThread::create(work));
    thread->setStackSize(smallStack);
    thread->start();
    thread->wait();
}

QString text(const std::shared_ptr<ast::Program> &program, const QString &error) {
    return (program ? ast::programToText(*program) : QString("no program\n")) + error;
}

QString byTheRules(const QString &source) {
    QString error;
    auto program = reference::Parser(reference::tokenize(source)).parseProgram(&error);
    return text(program, error);
}

QString parsed(const QString &source) {
    QString error;
    auto program = ast::Parser(ast::Lexer(source).tokenize()).parseProgram(&error);
    return text(program, error);
}

// A text with a part that is repeated in front of the core, and one behind it.
struct Shape {
    QString head;
    QString open;
    QString core;
    QString close;
    QString tail;
    QString at(int depth) const {
        return head + open.repeated(depth) + core + close.repeated(depth) + tail;
    }
};

constexpr int million = 1000000;

} // namespace

Q_DECLARE_METATYPE(Shape)

class DepthTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void nesting_data();
    void nesting();
    void aDeepTreeIsPrintedAsJson();
    void aSharedPartOutlivesItsTree();
    void aNodeWithEverySlotFilledIsFreed();
};

void DepthTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

// '@' in a result stands for the column behind the source.
void DepthTest::nesting_data() {
    QTest::addColumn<Shape>("source");
    QTest::addColumn<Shape>("result");
    QTest::addColumn<int>("depth");
    const auto row = [](const char *name, const Shape &source, const Shape &result,
                        int depth = million / 50) {
        QTest::newRow(name) << source << result << depth;
    };
    row("parentheses", {"", "(", "a", ")", ""}, {"", "", "a", "", "\n"}, million);
    row("parentheses that never close", {"", "(", "a", "", ""}, {"", "", "a", "", "\n"});
    row("empty parentheses", {"", "(", "()", ")", ""}, {"<", "( ", "( )", " )", ">\n"});
    row("brackets", {"", "a[", "b", "]", ""}, {"", "a[", "b", "]", "\n"}, million);
    row("brackets alone", {"", "[", "a", "]", ""}, {"<", "[ ", "a", " ]", ">\n"});
    row("brackets in the size of an array", {"int x[", "a[", "b", "]", "]"},
        {"int x[", "a[", "b", "]", "]\n"});
    row("braces", {"", "{", "a", "}", ""}, {"<", "{ ", "a", " }", ">\n"}, million);
    row("unary minus", {"", "- ", "a", "", ""}, {"", "(- ", "a", ")", "\n"}, million);
    row("unary not", {"", "!", "a", "", ""}, {"", "(! ", "a", ")", "\n"});
    row("prefix increments", {"", "++ ", "f(a)", "", ""}, {"", "(++ ", "f(a)", ")", "\n"});
    row("postfix increments", {"", "", "f(a)", "++", ""}, {"", "(", "f(a)", " ++)", "\n"});
    row("member chains", {"x = a", ".b", "", "", ""}, {"x = .b", "", "", "", "\n"}, million);
    row("calls in calls", {"", "f(", "a", ")", ""}, {"", "f(", "a", ")", "\n"});
    row("calls as second arguments", {"", "f(a, ", "b", ")", ""}, {"", "f(a, ", "b", ")", "\n"});
    row("calls of calls", {"f", "()", "", "", ""}, {"()", "", "", "", "\n"});
    row("many arguments", {"f(b", ", a", "", "", ")"}, {"f(b", ", a", "", "", ")\n"});
    row("subscripts of subscripts", {"a", "[1]", "", "", ""}, {"a", "[1]", "", "", "\n"});
    row("a sum to the left", {"", "", "x + y", " + a", ""}, {"", "(+ ", "(+ x y)", " a)", "\n"});
    row("a sum to the right", {"", "a + (", "x", ")", ""}, {"", "(+ a ", "x", ")", "\n"});
    row("if in if", {"", "if (a) {", "b", "}", ""}, {"", "if (a) { ", "b", " }", "\n"}, million);
    row("if in if that never closes", {"", "if (a) {", "b", "", ""},
        {"if (a) null\nexpected '}' (at 1:@)", "", "", "", ""});
    row("if in if with a statement that fails", {"", "if (a) {", ";", "}", ""},
        {"no program\nempty statement (at 1:@)", "", "", "", ""});
    row("if in else", {"", "if (a) b; else {", "c", "}", ""},
        {"", "if (a) { b } else { ", "c", " }", "\n"});
    row("if in else if", {"", "if (a) b; else if (c) {", "d", "}", ""},
        {"", "if (a) { b } else if (c) { ", "d", " }", "\n"});
    row("else if behind else if", {"if (a) b", "\nelse if (c) d", "", "", ""},
        {"if (a) { b }", " else if (c) { d }", "", "", "\n"});
    row("while in while", {"", "while (a) {\n", "b", "}", ""},
        {"", "while (a) { ", "b", " }", "\n"});
    row("for in for", {"", "for (i = 0; i; i++) {", "b", "}", ""},
        {"", "for (i = 0; i; i++) { ", "b", " }", "\n"});
    row("switch in switch", {"", "switch (a) { case 1: ", "b\n", "}", ""},
        {"", "switch (a) { case 1: { ", "b", " } }", "\n"});
    row("empty arms", {"switch (a) {", "case 1: ", "", "", "}"},
        {"switch (a) { ", "case 1: { } ", "", "", "}\n"});
    row("if in a function", {"function f() {", "if (a) {", "b", "}", "}"},
        {"function f() { ", "if (a) { ", "b", " }", " }\n"});
    row("lines", {"", "a = 1\n", "", "", ""}, {"", "a = 1\n", "", "", ""});
    row("empty lines", {"", "\n", "a", "", ""}, {"", "", "a", "", "\n"});
}

void DepthTest::nesting() {
    QFETCH(Shape, source);
    QFETCH(Shape, result);
    QFETCH(int, depth);
    const auto expected = [&](int levels) {
        // The statement that fails is the core, and the end of the file stands behind it.
        const int column = source.open.size() * levels + (source.core == ";" ? 1 : 2);
        return result.at(levels).replace('@', QString::number(column));
    };
    QCOMPARE(byTheRules(source.at(3)), expected(3));
    QString actual;
    runOnSmallStack([&] { actual = parsed(source.at(depth)); });
    QVERIFY(actual == expected(depth));
}

// Printing as JSON and freeing need no more stack either.
void DepthTest::aDeepTreeIsPrintedAsJson() {
    const int depth = million / 50;
    QString json;
    runOnSmallStack([&json] {
        auto program =
            ast::Parser(ast::Lexer(QString("- ").repeated(depth) + "a").tokenize()).parseProgram();
        json = ast::programToJson(*program);
    });
    QCOMPARE(json.count("\"kind\":\"Unary\""), depth);
}

// A part of a tree that somebody else still holds outlives the rest, whole.
void DepthTest::aSharedPartOutlivesItsTree() {
    std::shared_ptr<ast::ExprNode> kept;
    {
        auto root = ast::parseExpressionText("- - - (a + - - b)");
        kept = root->operand->operand->operand;
    }
    QCOMPARE(ast::expressionToText(kept.get()), QString("(+ a (- (- b)))"));
    std::shared_ptr<ast::Block> body;
    {
        auto program =
            ast::Parser(ast::Lexer("if (a) { if (b) { c; d } }").tokenize()).parseProgram();
        const auto &outer = dynamic_cast<ast::IfStmt &>(*program->statements.front());
        body = dynamic_cast<ast::IfStmt &>(*outer.thenBlock->statements.front()).thenBlock;
    }
    QCOMPARE(int(body->statements.size()), 2);
    QCOMPARE(ast::statementToText(body->statements.back().get()), QString("d"));
}

// Every slot of a node may hold a chain, also where the parser would not put one.
void DepthTest::aNodeWithEverySlotFilledIsFreed() {
    std::weak_ptr<ast::ExprNode> last;
    runOnSmallStack([&last] {
        std::shared_ptr<ast::ExprNode> root;
        for (int i = 0; i < 200000; ++i) {
            auto node = std::make_shared<ast::ExprNode>();
            node->left = std::make_shared<ast::ExprNode>();
            node->left->operand = std::make_shared<ast::ExprNode>();
            std::shared_ptr<ast::ExprNode> *chains[] = {&node->operand, &node->right,
                                                        &node->indexBase, &node->indexValue,
                                                        &node->incDecOperand};
            *chains[i % 5] = root;
            node->args = {root, nullptr, node->left};
            if (i == 0)
                last = node;
            root = node;
        }
    });
    QVERIFY(last.expired());
}

QUORVANE_TEST_MAIN(QCoreApplication, DepthTest)
#include "depth_test.moc"
