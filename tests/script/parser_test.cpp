// The parser's primitives, and the top of a script: functions, "#include" and "import".
#include "script/parser.h"

#include "parse_helpers.h"
#include "support/library_file.h"
#include "support/staged_main.h"

#include <QCoreApplication>

namespace {

ast::Parser parserOf(const QString &source) {
    return ast::Parser(ast::Lexer(source).tokenize());
}

bool isComma(const ast::Token &token) {
    return token.kind == ast::Comma;
}

} // namespace

class ParserTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void trees_data();
    void trees();
    void errors_data();
    void errors();
    void aStatementThatFailsAtTheEndIsDropped();
    void anIncludeWithoutItsBracketStands();
    void aStrayBraceGivesNoProgramAndNoMessage();
    void anOpenPathKeepsItsQuote();
    void positionsOfTheTop();
    void theSourcePathStaysEmpty();
    void withoutItsWordAnImportIsAnExpression();
    void withoutATypeADeclarationIsAnExpression();
    void everyOperationTakesNoPlaceForTheMessage();
    void primitives();
    void collectedText_data();
    void collectedText();
    void aParserOfNoTokensStandsAtTheEnd();
    void tokensWithoutAnEndAreReadAsIfItStoodThere();
    void aLexicalErrorLeavesAnEmptyProgram();
    void aTextIsReadAsAStatement();
    void theOperationsStandByThemselves();
};

void ParserTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void ParserTest::trees_data() {
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("tree");
    QTest::newRow("an empty script") << ""
                                     << "";
    QTest::newRow("comments and blank lines") << "// a\n\n  // b"
                                              << "";
    QTest::newRow("one line of global") << "global int a = 1"
                                        << "global int a = 1";
    QTest::newRow("a function") << "function f() { }"
                                << "function f() { }";
    QTest::newRow("a parameter without a type is an int") << "function f(a, string b) { }"
                                                          << "function f(int a, string b) { }";
    QTest::newRow("every type of parameter")
        << "function f(int a, bool b, float c, string d, char e) { }"
        << "function f(int a, bool b, float c, string d, char e) { }";
    QTest::newRow("the brace on the next line") << "function f()\n\n{ a }"
                                                << "function f() { a }";
    QTest::newRow("a body without braces") << "function f() x = 1;"
                                           << "function f() { x = 1 }";
    QTest::newRow("a body without braces is always simple") << "function f()\nreturn 1\na"
                                                            << "function f() { <return 1> } | a";
    QTest::newRow("functions come before the statements between them")
        << "a\nfunction f() { }\nb\nfunction g() { c }\nd"
        << "function f() { } | function g() { c } | a | b | d";
    QTest::newRow("two functions on a line") << "function f() { } function g() { } a"
                                             << "function f() { } | function g() { } | a";
    QTest::newRow("an include in quotes") << "#include \"a.ys\""
                                          << "#include \"a.ys\"";
    QTest::newRow("an include in angle brackets is joined by blanks") << "#include <a/b.ys>"
                                                                      << "#include \"a / b . ys\"";
    QTest::newRow("an include inside a function") << "function f() { #include \"a.ys\"\n }"
                                                  << "function f() { #include \"a.ys\" }";
    QTest::newRow("an include with a blank behind the mark") << "# include <a>"
                                                             << "#include \"a\"";
    QTest::newRow("two includes on a line") << "#include <a> #include <b>"
                                            << "#include \"a\" | #include \"b\"";
    QTest::newRow("an import") << "import \"a.ys\";"
                               << "import \"a.ys\"";
    QTest::newRow("an import with its semicolon apart") << "import \"a.ys\" ;\nb"
                                                        << "import \"a.ys\" | b";
    QTest::newRow("escapes of a path stay") << "import \"a\\\\b.ys\";"
                                            << "import \"a\\\\\\\\b.ys\"";
    QTest::newRow("an import inside a block") << "if (a) { import \"a.ys\"; }"
                                              << "if (a) { import \"a.ys\" }";
}

void ParserTest::trees() {
    QFETCH(QString, source);
    QTEST(treeOf(source), "tree");
    QVERIFY(parseScript(source).program);
    QCOMPARE(parseScript(source).error, QString());
}

void ParserTest::errors_data() {
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("line");
    QTest::addColumn<int>("column");
    const auto row = [](const char *name, const char *source, const char *message, int line,
                        int column) {
        QTest::newRow(name) << QString(source) << QString(message) << line << column;
    };
    row("a function named by a keyword", "function if()", "expected function name", 1, 10);
    row("a function without a name at the end", "a\nfunction", "expected function name", 2, 9);
    row("a function without parentheses", "function f { }", "expected '(' after function name", 1,
        12);
    row("a parameter list over two lines", "function f(int a,\nint b) { }",
        "expected parameter name", 1, 18);
    row("a parameter list that begins on the next line", "function f(\nint b) { }",
        "expected parameter name", 1, 12);
    row("a comma at the end of the list", "function f(a,) { }", "expected parameter name", 1, 14);
    row("a type without a name", "function f(int) { }", "expected parameter name", 1, 15);
    row("a default value", "function f(a = 1) { }", "expected ')' after function params", 1, 14);
    row("a list that closes on the next line", "function f(a\n) { }",
        "expected ')' after function params", 1, 13);
    row("a function without a body", "function f()\n;", "empty statement", 2, 1);
    row("a function without a body at the end", "function f()", "empty statement", 1, 13);
    row("a function whose block fails", "function f() { ; }\na", "empty statement", 1, 16);
    row("an import without its semicolon", "import \"a.ys\"\n", "expected ';' after import", 1, 14);
    row("an import without quotes", "import a.ys;", "import requires string path", 1, 8);
    row("an include without a path", "#include a\n", "invalid include syntax", 1, 10);
    row("another directive", "# define A\n", "expected include", 1, 3);
    row("a semicolon behind an include", "#include \"a\";\n", "empty statement", 1, 13);
}

void ParserTest::errors() {
    QFETCH(QString, source);
    QFETCH(QString, message);
    QFETCH(int, line);
    QFETCH(int, column);
    expectError(source, message, line, column);
}

// The parser stands at the end of the file: the statement is lost, the program is not.
void ParserTest::aStatementThatFailsAtTheEndIsDropped() {
    expectLeftError("a\nimport \"a.ys\"", "a", "expected ';' after import", 2, 14);
    expectLeftError("a\nimport", "a", "import requires string path", 2, 7);
    expectLeftError("a\n#", "a", "expected include", 2, 2);
    expectLeftError("a\n#include", "a", "invalid include syntax", 2, 9);
    expectLeftError("a\nstatic", "a", "expected type after static", 2, 7);
    expectLeftError("a\nelse", "no program", "dangling else", 2, 1);
}

void ParserTest::anIncludeWithoutItsBracketStands() {
    expectLeftError("#include <a\nb", "#include \"a \\n b\"", "expected '>' after include path", 2,
                    2);
}

void ParserTest::aStrayBraceGivesNoProgramAndNoMessage() {
    for (const char *source : {"}", "a\n}", "if (a) { } }", "\n\n } b"}) {
        const Parsed parsed = parseScript(source);
        QVERIFY2(!parsed.program, source);
        QVERIFY2(parsed.error.isEmpty(), source);
    }
}

void ParserTest::anOpenPathKeepsItsQuote() {
    QCOMPARE(as<ast::IncludeStmt>(parseScript("#include \"a").program->statements[0]).path,
             QString("\"a"));
    // A lone quote both begins and ends the text, and there are no two characters to remove.
    QCOMPARE(as<ast::IncludeStmt>(parseScript("#include \"").program->statements[0]).path,
             QString("\""));
    QCOMPARE(as<ast::IncludeStmt>(parseScript("#include \"\"").program->statements[0]).path,
             QString());
}

void ParserTest::positionsOfTheTop() {
    const auto program =
        parseScript("\n #include \"a\"\n import \"b\";\n function f() { }\n function g()\n a")
            .program;
    QCOMPARE(at(*program->statements[0]), QString("2:11"));
    QCOMPARE(at(*program->statements[1]), QString("3:9"));
    QCOMPARE(at(*program->functions[0]), QString("4:2"));
    QCOMPARE(at(*program->functions[0]->body), QString("4:15"));
    QCOMPARE(at(*program->functions[1]->body), QString("6:2"));
}

void ParserTest::theSourcePathStaysEmpty() {
    QVERIFY(parseScript("a").program->sourcePath.isEmpty());
}

void ParserTest::withoutItsWordAnImportIsAnExpression() {
    QVERIFY(support::loadLibraryText(""));
    const Parsed parsed = parseScript("import \"a.ys\";");
    QVERIFY(support::loadScriptVocabulary());
    QCOMPARE(ast::programToText(*parsed.program), QString("import\n"));
    QCOMPARE(as<ast::ExprStmt>(parsed.program->statements[0]).expr.text,
             QString("import \"a.ys\""));
}

void ParserTest::withoutATypeADeclarationIsAnExpression() {
    QVERIFY(support::loadLibraryText("[Highlight]\ntype=int,float"));
    const Parsed parsed = parseScript("bool x;");
    QVERIFY(support::loadScriptVocabulary());
    QCOMPARE(ast::programToText(*parsed.program), QString("bool\n"));
}

void ParserTest::everyOperationTakesNoPlaceForTheMessage() {
    for (const char *source : {"if a", "for (;;)", "for (int;;)", "static a", "else", "#a",
                               "import a", "function", ";", "switch (a) b", "int", "}"})
        (void)parserOf(source).parseProgram();
    QVERIFY(!parserOf("if a\n").parseProgram());
}

void ParserTest::primitives() {
    ast::Parser parser = parserOf("a\n\n(b");
    QCOMPARE(parser.peek().text, QString("a"));
    QCOMPARE(parser.peek(1).kind, qint32(ast::Newline));
    QCOMPARE(parser.peek(100).kind, qint32(ast::Eof));
    QVERIFY(parser.check(ast::Identifier) && !parser.atEnd());
    QVERIFY(!parser.match(ast::LParen));
    QCOMPARE(parser.advance().text, QString("a"));
    parser.skipNewlines();
    QString error;
    QVERIFY(!parser.expect(ast::RParen, "wanted %1", &error));
    QCOMPARE(error, QString("wanted %1 (at 3:1)"));
    QVERIFY(!parser.expect(ast::RParen, "wanted"));
    QVERIFY(parser.expect(ast::LParen, "unused", &error));
    QCOMPARE(error, QString("wanted %1 (at 3:1)"));
    parser.advance();
    QVERIFY(parser.atEnd());
    QVERIFY(!parser.check(ast::Eof) && !parser.match(ast::Eof));
    // At the end it stays, and gives the token before the end.
    QCOMPARE(parser.advance().text, QString("b"));
    QCOMPARE(parser.advance().text, QString("b"));
}

void ParserTest::collectedText_data() {
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("text");
    QTest::newRow("stops at the first comma") << "a+b,c"
                                              << "a + b";
    QTest::newRow("not in parentheses") << "f(a,b),c"
                                        << "f ( a , b )";
    QTest::newRow("not in brackets") << "a[b,c],d"
                                     << "a [ b , c ]";
    QTest::newRow("not in braces") << "{a,b},c"
                                   << "{ a , b }";
    QTest::newRow("kinds of brackets are counted apart") << "( ] [ ),a"
                                                         << "( ] [ )";
    QTest::newRow("not below zero") << ") a,b"
                                    << ") a , b";
    QTest::newRow("again at zero") << ") a,b ( ,c"
                                   << ") a , b (";
    QTest::newRow("brackets in a string do not count") << "\"(\",a"
                                                       << "\"(\"";
    QTest::newRow("an escaped quote does not end a string") << "\"\\\"(\",a"
                                                            << "\"\\\"(\"";
    QTest::newRow("a string that ends in a backslash stays open") << "\"\\\\\",a"
                                                                  << "\"\\\\\" , a";
    QTest::newRow("the next quote closes it, and the text behind it counts")
        << "\"\\\\\", \"(\",a)\"\",b"
        << "\"\\\\\" , \"(\" , a ) \"\" , b";
    QTest::newRow("a line feed is text") << "a\n(\n)\n,b"
                                         << "a \n ( \n )";
    QTest::newRow("nothing") << ",a"
                             << "";
    QTest::newRow("up to the end") << "a b"
                                   << "a b";
}

void ParserTest::collectedText() {
    QFETCH(QString, source);
    QFETCH(QString, text);
    QCOMPARE(parserOf(source).collectText(isComma), text);
}

void ParserTest::aParserOfNoTokensStandsAtTheEnd() {
    ast::Parser parser{std::vector<ast::Token>()};
    QString error;
    QVERIFY(parser.atEnd());
    QVERIFY(parser.advance().kind == ast::Eof);
    QVERIFY(parser.parseProgram(&error));
    QVERIFY(!parser.parseStatement(&error));
    QVERIFY(error.isEmpty());
    QVERIFY(!parser.parseSimpleStatement(&error));
    QCOMPARE(error, QString("empty statement (at 1:1)"));
}

void ParserTest::tokensWithoutAnEndAreReadAsIfItStoodThere() {
    auto tokens = ast::Lexer("if (a) { b").tokenize();
    tokens.pop_back();
    ast::Parser parser(std::move(tokens));
    QString error;
    QCOMPARE(ast::programToText(*parser.parseProgram(&error)), QString("if (a) null\n"));
    QCOMPARE(error, QString("expected '}' (at 1:1)"));
    QVERIFY(parser.atEnd());
}

// What the lexer cannot read reaches a parser as no tokens at all.
void ParserTest::aLexicalErrorLeavesAnEmptyProgram() {
    QVERIFY(parserOf("while ($) a").parseProgram()->statements.empty());
}

void ParserTest::aTextIsReadAsAStatement() {
    ast::Parser parser = parserOf("");
    QString error;
    const auto statement = parser.parseSimpleText(" a = b ", 3, 4, &error);
    QCOMPARE(at(*statement), QString("3:4"));
    QCOMPARE(ast::statementToText(statement.get()), QString("a = b"));
    QCOMPARE(as<ast::ExprStmt>(parser.parseSimpleText("", 3, 4, &error)).expr.text, QString());
    QVERIFY(!parser.parseSimpleText("$", 3, 4, &error));
    QCOMPARE(error, QString("Unknown character '$' at 1:1"));
}

void ParserTest::theOperationsStandByThemselves() {
    QCOMPARE(ast::statementToText(parserOf("if (a) { b }").parseIf().get()),
             QString("if (a) { b }"));
    QCOMPARE(ast::statementToText(parserOf("for (a; b; c) { d }").parseFor().get()),
             QString("for (a; b; c) { d }"));
    QCOMPARE(ast::statementToText(parserOf("while (a) b").parseWhile().get()),
             QString("while (a) { b }"));
    QCOMPARE(ast::statementToText(parserOf("switch (a) { }").parseSwitch().get()),
             QString("switch (a) { }"));
    QCOMPARE(int(parserOf("{ a; b }").parseBlock()->statements.size()), 2);
    QString error;
    QVERIFY(!parserOf("a").parseBlock(&error));
    QCOMPARE(error, QString("expected '{' (at 1:1)"));
    QCOMPARE(parserOf("function f() { }").parseFunctionDecl()->name, QString("f"));
}

QUORVANE_TEST_MAIN(QCoreApplication, ParserTest)
#include "parser_test.moc"
