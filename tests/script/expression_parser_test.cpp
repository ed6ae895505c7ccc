// The tree of an expression: how operators bind, what broken and cut-off texts give, and where each
// node stands; the trees are compared in their printed form.
#include "script/expression_parser.h"

#include "script/lexer.h"
#include "script/printed_form.h"

#include "support/library_file.h"
#include "support/staged_main.h"

#include <QCoreApplication>

namespace {

// The tree with the positions of its nodes behind them: "(+ a@1:1 b@1:5)@1:1".
QString withPositions(const ast::ExprNode *node) {
    if (!node)
        return "null";
    QString text = ast::expressionToText(node);
    if (node->kind == ast::ExprKind::Binary)
        text = "(" + node->op + " " + withPositions(node->left.get()) + " " +
               withPositions(node->right.get()) + ")";
    if (node->kind == ast::ExprKind::Unary)
        text = "(" + node->op + " " + withPositions(node->operand.get()) + ")";
    return text + "@" + QString::number(node->line) + ":" + QString::number(node->column);
}

std::shared_ptr<ast::ExprNode> parse(const QString &text) {
    return ast::parseExpressionText(text);
}

} // namespace

class ExpressionParserTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void trees_data();
    void trees();
    void blankTextIsNull();
    void aLexicalErrorGivesARawNodeAndTheMessage();
    void successLeavesTheMessageAlone();
    void positions_data();
    void positions();
    void aNodeUsesTheFieldsOfItsKindAndLeavesTheRest();
    void stringsAndCharactersAreNotToldApart();
    void incrementAndDecrementAreToldApart();
    void anExpressionKeepsItsTrimmedTextAndItsPosition();
    void anExpressionOfBlankTextHasNoRoot();
    void anExpressionOfAnUnknownCharacterIsRaw();
    void theParserChecksAndMatches();
    void aParserOfNoTokensGivesNothing();
};

void ExpressionParserTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void ExpressionParserTest::trees_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("tree");
    QTest::newRow("multiplication binds tighter") << "1 + 2 * 3"
                                                  << "(+ 1 (* 2 3))";
    QTest::newRow("and binds tighter than or") << "a || b && c"
                                               << "(|| a (&& b c))";
    QTest::newRow("subtraction nests on the left") << "1 - 2 - 3"
                                                   << "(- (- 1 2) 3)";
    QTest::newRow("division and remainder are one level") << "a / b % c * d"
                                                          << "(* (% (/ a b) c) d)";
    QTest::newRow("every level") << "a || b && c == d < e + f * -g"
                                 << "(|| a (&& b (== c (< d (+ e (* f (- g)))))))";
    QTest::newRow("every level from the tight end")
        << "-a * b + c < d == e && f || g"
        << "(|| (&& (== (< (+ (* (- a) b) c) d) e) f) g)";
    QTest::newRow("comparisons are one level") << "a < b > c <= d >= e"
                                               << "(>= (<= (> (< a b) c) d) e)";
    QTest::newRow("equalities are one level") << "a == b != c"
                                              << "(!= (== a b) c)";
    QTest::newRow("not binds tighter than equality") << "!a == b"
                                                     << "(== (! a) b)";
    QTest::newRow("two minus signs apart") << "- - a"
                                           << "(- (- a))";
    QTest::newRow("a plus sign before an operand") << "+a"
                                                   << "(+ a)";
    QTest::newRow("a prefix before a postfix") << "-a[1]"
                                               << "(- a[1])";
    QTest::newRow("parentheses leave no node") << "(a + b) * c"
                                               << "(* (+ a b) c)";
    QTest::newRow("a parenthesis that never closes") << "(a"
                                                     << "a";
    QTest::newRow("a parenthesis too many") << "a)"
                                            << "a";
    QTest::newRow("empty parentheses") << "( )"
                                       << "<( )>";
    QTest::newRow("nothing follows empty parentheses") << "( ) . a"
                                                       << "<( ) . a>";
    QTest::newRow("an operator follows empty parentheses") << "() + a"
                                                           << "(+ null a)";
    QTest::newRow("a keyword cannot begin") << "if x"
                                            << "<if x>";
    QTest::newRow("a keyword ends") << "x if"
                                    << "x";
    QTest::newRow("tokens left over are dropped") << "a b c"
                                                  << "a";
    QTest::newRow("a missing right operand") << "a +"
                                             << "(+ a null)";
    QTest::newRow("a missing left operand") << "* b"
                                            << "(* null b)";
    QTest::newRow("a missing operand of a prefix") << "-"
                                                   << "(- null)";
    QTest::newRow("an operator alone") << "&&"
                                       << "(&& null null)";
    QTest::newRow("a line feed stops an expression") << "a &&\nb"
                                                     << "(&& a null)";
    QTest::newRow("a call over two lines keeps a null argument") << "f(a,\nb)"
                                                                 << "f(a, null)";
    QTest::newRow("Pi is folded") << "Pi"
                                  << "3.1415926";
    QTest::newRow("pi is a name") << "pi"
                                  << "pi";
    QTest::newRow("a call of Pi has no name") << "Pi(1)"
                                              << "(1)";
    QTest::newRow("a member of Pi has no base") << "Pi.a"
                                                << ".a";
    QTest::newRow("a call") << "f(a, 1 + 2)"
                            << "f(a, (+ 1 2))";
    QTest::newRow("a call without arguments") << "f()"
                                              << "f()";
    QTest::newRow("a call with a missing argument") << "f(,a)"
                                                    << "f(null, a)";
    QTest::newRow("a call with a comma at the end") << "f(a,)"
                                                    << "f(a, null)";
    QTest::newRow("a call with a comma alone") << "f(,)"
                                               << "f(null, null)";
    QTest::newRow("a call that never closes") << "f(a"
                                              << "f(a)";
    QTest::newRow("a call that ends at the parenthesis") << "f("
                                                         << "f(null)";
    QTest::newRow("a call of a call has no name") << "f(a)(b)"
                                                  << "(b)";
    QTest::newRow("a call of parentheses") << "(f)(a)"
                                           << "f(a)";
    QTest::newRow("a subscript") << "a[i + 1]"
                                 << "a[(+ i 1)]";
    QTest::newRow("an empty subscript") << "a[]"
                                        << "a[null]";
    QTest::newRow("a subscript that never closes") << "a[1"
                                                   << "a[1]";
    QTest::newRow("a subscript of a subscript") << "a[1][2]"
                                                << "a[1][2]";
    QTest::newRow("a member") << "a.b"
                              << "a.b";
    QTest::newRow("a member of a member has no base") << "a.b.c"
                                                      << ".c";
    QTest::newRow("a member of an element") << "a[i].b"
                                            << "a[].b";
    QTest::newRow("a member of an element without a subscript") << "a[].b"
                                                                << "a[].b";
    QTest::newRow("a member of an element of an element") << "a[1][2].b"
                                                          << ".b";
    QTest::newRow("a member of a call has no base") << "f(a).b"
                                                    << ".b";
    QTest::newRow("a call of a member has no name") << "a.b(c)"
                                                    << "(c)";
    QTest::newRow("a call of an element has no name") << "a[1](c)"
                                                      << "(c)";
    QTest::newRow("a dot at the end") << "a."
                                      << "a";
    QTest::newRow("a dot before a number") << "a . 1 + 2"
                                           << "a";
    QTest::newRow("a dot before a keyword") << "a.if"
                                            << "a";
    QTest::newRow("a postfix increment of an element") << "a[1]++"
                                                       << "(a[1] ++)";
    QTest::newRow("a prefix decrement") << "--a"
                                        << "(-- a)";
    QTest::newRow("a postfix increment twice") << "a++ --"
                                               << "((a ++) --)";
    QTest::newRow("a subscript of an increment") << "a++[1]"
                                                 << "(a ++)[1]";
    QTest::newRow("prefixes in a row") << "++-a"
                                       << "(++ (- a))";
    QTest::newRow("an increment binds tighter than a sign") << "-a++ + b"
                                                            << "(+ (- (a ++)) b)";
    QTest::newRow("a string") << "\"a b\""
                              << "\"a b\"";
    QTest::newRow("a character") << "'a'"
                                 << "'a'";
    QTest::newRow("a real number") << "1."
                                   << "1.";
    QTest::newRow("a call of a number has no name") << "1(a)"
                                                    << "(a)";
    QTest::newRow("an assignment ends an expression") << "a = 1"
                                                      << "a";
    QTest::newRow("an unknown character") << " a $ b "
                                          << "<a $ b>";
}

void ExpressionParserTest::trees() {
    QFETCH(QString, text);
    QTEST(ast::expressionToText(parse(text).get()), "tree");
}

void ExpressionParserTest::blankTextIsNull() {
    QVERIFY(!parse(""));
    QVERIFY(!parse(" \t\n"));
}

void ExpressionParserTest::aLexicalErrorGivesARawNodeAndTheMessage() {
    QString error;
    const auto node = ast::parseExpressionText(" a $ ", &error);
    QCOMPARE(node->kind, ast::ExprKind::Raw);
    QCOMPARE(node->rawText, QString("a $"));
    QCOMPARE(error, QString("Unknown character '$' at 1:4"));
    QVERIFY(ast::parseExpressionText("$"));
}

void ExpressionParserTest::successLeavesTheMessageAlone() {
    QString error = "old";
    QVERIFY(ast::parseExpressionText("a", &error));
    QVERIFY(ast::parseExpressionText(")", &error));
    QCOMPARE(error, QString("old"));
}

void ExpressionParserTest::positions_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("tree");
    QTest::newRow("an operator stands at 1:1") << "  a + b"
                                               << "(+ a@1:3 b@1:7)@1:1";
    QTest::newRow("a prefix operator too") << "  - a"
                                           << "(- a@1:5)@1:1";
    QTest::newRow("a subscript stands where its base does") << "  a[1]"
                                                            << "a[1]@1:3";
    QTest::newRow("a call stands where its name does") << "  f(1)"
                                                       << "f(1)@1:3";
    QTest::newRow("a member stands where its base does") << "  a.b.c"
                                                         << ".c@1:3";
    QTest::newRow("a postfix increment stands where its operand does") << "  a++"
                                                                       << "(a ++)@1:3";
    // Meant: the token consumed last, and not the operator.
    QTest::newRow("a prefix increment stands at its operand's last token") << "  ++a[10]"
                                                                           << "(++ a[10])@1:9";
    QTest::newRow("a prefix increment without an operand stands at itself") << "  ++"
                                                                            << "(++ null)@1:3";
    QTest::newRow("a prefix increment before a lost dot stands at the dot") << "++a."
                                                                            << "(++ a)@1:4";
    QTest::newRow("an increment of an increment") << "++ --a"
                                                  << "(++ (-- a))@1:6";
    QTest::newRow("a subscript of an operator") << "  (a + b)[1]"
                                                << "(+ a b)[1]@1:1";
    QTest::newRow("positions count lines") << "\n a"
                                           << "null";
    QTest::newRow("a string over two lines") << "\"a\nb\" + c"
                                             << "(+ \"a\nb\"@1:1 c@2:6)@1:1";
}

void ExpressionParserTest::positions() {
    QFETCH(QString, text);
    QFETCH(QString, tree);
    if (text.startsWith('\n')) {
        // The text is lexed as it is, so a line feed in front is a token that cannot begin.
        QCOMPARE(ast::expressionToText(parse(text).get()), QString("<a>"));
        return;
    }
    QCOMPARE(withPositions(parse(text).get()), tree);
}

void ExpressionParserTest::aNodeUsesTheFieldsOfItsKindAndLeavesTheRest() {
    QCOMPARE(ast::expressionToJson(parse("a+1").get()),
             QString("{\"type\":\"ExprNode\",\"kind\":\"Binary\",\"line\":1,\"column\":1,"
                     "\"rawText\":\"\",\"literalText\":\"\",\"literalIsString\":false,"
                     "\"identifierName\":\"\",\"op\":\"+\",\"operand\":null,\"left\":") +
                 ast::expressionToJson(parse("a").get()) +
                 ",\"right\":" + ast::expressionToJson(parse("  1").get()) +
                 ",\"callee\":\"\",\"args\":[],\"indexBase\":null,\"indexValue\":null,"
                 "\"memberBase\":\"\",\"memberName\":\"\",\"incDecOperand\":null,"
                 "\"isIncrement\":true,\"isPrefix\":true}");
}

void ExpressionParserTest::stringsAndCharactersAreNotToldApart() {
    QVERIFY(parse("'a'")->literalIsString);
    QVERIFY(parse("\"a\"")->literalIsString);
    QVERIFY(!parse("1")->literalIsString);
    QVERIFY(!parse("Pi")->literalIsString);
}

void ExpressionParserTest::incrementAndDecrementAreToldApart() {
    QVERIFY(parse("++a")->isIncrement && parse("++a")->isPrefix);
    QVERIFY(!parse("--a")->isIncrement && parse("--a")->isPrefix);
    QVERIFY(parse("a++")->isIncrement && !parse("a++")->isPrefix);
    QVERIFY(!parse("a--")->isIncrement && !parse("a--")->isPrefix);
}

void ExpressionParserTest::anExpressionKeepsItsTrimmedTextAndItsPosition() {
    const ast::Expression expression = ast::makeExpression("  a + b ", 7, 9);
    QCOMPARE(expression.text, QString("a + b"));
    QCOMPARE(expression.line, 7);
    QCOMPARE(expression.column, 9);
    QCOMPARE(withPositions(expression.root.get()), QString("(+ a@1:1 b@1:5)@1:1"));
}

void ExpressionParserTest::anExpressionOfBlankTextHasNoRoot() {
    const ast::Expression expression = ast::makeExpression(" ", 7, 9);
    QVERIFY(expression.text.isEmpty());
    QVERIFY(!expression.root);
    QCOMPARE(expression.line, 7);
}

void ExpressionParserTest::anExpressionOfAnUnknownCharacterIsRaw() {
    QCOMPARE(ast::expressionToText(ast::makeExpression(" $ ", 1, 1).root.get()), QString("<$>"));
}

void ExpressionParserTest::theParserChecksAndMatches() {
    auto tokens = ast::Lexer("a )").tokenize();
    ast::NodePool nodes;
    ast::ExprParser parser(ast::makeClause(tokens.data(), tokens.data() + 2), nodes);
    QVERIFY(parser.check(ast::Identifier));
    QVERIFY(!parser.check(ast::RParen));
    QVERIFY(!parser.match(ast::RParen));
    QVERIFY(parser.match(ast::Identifier));
    QVERIFY(parser.match(ast::RParen));
    // At the end nothing matches, not even the end.
    QVERIFY(!parser.check(ast::Eof));
    QVERIFY(!parser.match(ast::Eof));
    QVERIFY(!parser.match(ast::RParen));
    QVERIFY(!parser.parseOr());
}

void ExpressionParserTest::aParserOfNoTokensGivesNothing() {
    ast::NodePool nodes;
    ast::ExprParser parser(ast::makeClause(nullptr, nullptr), nodes);
    QVERIFY(!parser.check(ast::Eof));
    QVERIFY(!parser.parseOr());
}

QUORVANE_TEST_MAIN(QCoreApplication, ExpressionParserTest)
#include "expression_parser_test.moc"
