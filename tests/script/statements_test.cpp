// Statements: what they give, how they fail, and where.
#include "parse_helpers.h"
#include "support/library_file.h"
#include "support/staged_main.h"

#include <QCoreApplication>

class StatementsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void trees_data();
    void trees();
    void errors_data();
    void errors();
    void ignoredFailures_data();
    void ignoredFailures();
    void aMissingParenthesisFailsInsideAFunctionOnly();
    void aMissingBraceFailsInsideAFunctionOnly();
    void positionsOfStatements();
    void positionsOfIf();
    void positionsOfLoops();
    void anInitBehindStaticStandsAtItsType();
    void positionsOfSwitch();
    void nodesCountInTheTextOfTheirExpression();
    void lineFeedsAroundAClauseAreTrimmed();
    void anOpenStringLosesTheBlanksAtItsEnd();
    void fieldsOfIncrements();
};

void StatementsTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void StatementsTest::trees_data() {
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("tree");

    // Declarations
    QTest::newRow("a declaration ends at the line feed") << "int a = 1\nb"
                                                         << "int a = 1 | b";
    QTest::newRow("a declaration ends at the semicolon") << "int a = 1; b"
                                                         << "int a = 1 | b";
    QTest::newRow("a declaration ends at the brace") << "while (a) { int a = 1 }"
                                                     << "while (a) { int a = 1 }";
    QTest::newRow("a declaration ends where its parts end") << "int a, b;"
                                                            << "int a | <, b>";
    QTest::newRow("every type") << "int a; bool b; float c; string d; char e"
                                << "int a | bool b | float c | string d | char e";
    QTest::newRow("static and global") << "static int a = 1\nglobal string b"
                                       << "static int a = 1 | global string b";
    QTest::newRow("an array") << "int a[10]"
                              << "int a[10]";
    QTest::newRow("an array without a size") << "int a[]"
                                             << "int a[null]";
    QTest::newRow("an array with an initialiser") << "int a[2] = b"
                                                  << "int a[2] = b";
    QTest::newRow("an array of two dimensions is a declaration and a statement")
        << "int a[2][3]"
        << "int a[2] | <[ 3 ]>";
    QTest::newRow("an initialiser may be empty") << "int a =\nb"
                                                 << "int a = null | b";
    QTest::newRow("an initialiser may run over two lines in brackets") << "int a = f(1,\n2)\nb"
                                                                       << "int a = f(1, null) | b";

    // Simple statements
    QTest::newRow("an assignment needs no semicolon") << "a = b\nc"
                                                      << "a = b | c";
    QTest::newRow("a call needs no semicolon") << "f(x)\nc"
                                               << "f(x) | c";
    QTest::newRow("a call over several lines is one statement") << "f(a,\n  b\n)\nc"
                                                                << "f(a, null) | c";
    QTest::newRow("a semicolon inside parentheses stops nothing") << "f(a; b)"
                                                                  << "f(a)";
    QTest::newRow("braces at statement level are one statement") << "{ a; b\nc }"
                                                                 << "<{ a ; b \n c }>";
    QTest::newRow("braces with an equals sign are an assignment") << "{ a = 1 }"
                                                                  << "{ a = 1";
    QTest::newRow("braces with an equals sign in parentheses are none") << "{ f(a = 1) }"
                                                                        << "<{ f ( a = 1 ) }>";
    QTest::newRow("an assignment to an element") << "a[i] = 1"
                                                 << "a [ i ] = 1";
    QTest::newRow("an assignment to a member") << "a.b = 1"
                                               << "a . b = 1";
    QTest::newRow("a comparison is no assignment") << "a == 1"
                                                   << "(== a 1)";
    QTest::newRow("a comparison in a call is no assignment") << "f(a == 1)"
                                                             << "f((== a 1))";
    QTest::newRow("an equals sign in parentheses is no assignment") << "f(x = 1)"
                                                                    << "f(x)";
    QTest::newRow("an equals sign in brackets is no assignment") << "a[x = 1]"
                                                                 << "a[x]";
    QTest::newRow("an equals sign behind closed parentheses is one") << "f(x) = 1"
                                                                     << "f ( x ) = 1";
    QTest::newRow("an equals sign in front is no assignment") << "= 1"
                                                              << "<= 1>";
    QTest::newRow("an assignment without a value") << "a ="
                                                   << "a = null";
    QTest::newRow("the first equals sign assigns") << "a = b = c"
                                                   << "a = b";
    QTest::newRow("there are no compound assignments") << "a += 1"
                                                       << "a + = 1";
    QTest::newRow("two assignments on a line are one") << "a = 1 b = 2"
                                                       << "a = 1";
    QTest::newRow("a stray parenthesis runs on past the line") << "a ) b\nc = 1\nd"
                                                               << "a ) b \n c = 1";
    QTest::newRow("a stray parenthesis that is balanced stops again") << "a ) b (\nc"
                                                                      << "a | c";
    QTest::newRow("a literal that ends in a backslash holds the statement open")
        << "f(\"c:\\\\\")\nb\nf(\"\")\nc"
        << "f(\"c:\\\\\")";
    QTest::newRow("a character literal of a backslash does too") << "a = '\\'\nb = 'c'\nd"
                                                                 << "a = '\\'";
    QTest::newRow("a case outside of a switch is an expression") << "case 1: a"
                                                                 << "<case 1 : a>";
    QTest::newRow("a default outside of a switch is an expression") << "default: a"
                                                                    << "<default : a>";
    QTest::newRow("a function inside a block is an expression")
        << "while (a) { function f() { b } }"
        << "while (a) { <function f ( ) { b }> }";
    QTest::newRow("a missing operand is no error") << "a = b +"
                                                   << "a = (+ b null)";
    QTest::newRow("an open string swallows the rest of the file") << "a = \"b\nc; } ) \n"
                                                                  << "a = \"b\nc; } )";

    // Increments
    QTest::newRow("a postfix increment") << "a++"
                                         << "a++";
    QTest::newRow("a postfix decrement") << "a--;"
                                         << "a--";
    QTest::newRow("a prefix increment") << "++a"
                                        << "++a";
    QTest::newRow("a prefix decrement") << "-- a"
                                        << "--a";
    QTest::newRow("an increment inside an assignment wins") << "x = y++"
                                                            << "y++";
    QTest::newRow("the first increment wins") << "a + b-- + c++"
                                              << "b--";
    QTest::newRow("a prefix in front wins over a postfix") << "++x--"
                                                           << "++x";
    QTest::newRow("a prefix inside is no increment") << "a + ++b"
                                                     << "(+ a (++ b))";
    QTest::newRow("parentheses keep an increment out") << "(a)++"
                                                       << "(a ++)";
    QTest::newRow("brackets keep an increment out") << "a[1]++"
                                                    << "(a[1] ++)";
    QTest::newRow("a string keeps an increment out") << "x = \"\" + y++"
                                                     << "x = (+ \"\" (y ++))";
    QTest::newRow("a comma keeps an increment out") << "a++, b"
                                                    << "(a ++)";
    QTest::newRow("braces keep an increment out") << "{ a++ }"
                                                  << "<{ a ++ }>";

    // break, continue, return
    QTest::newRow("break and continue") << "break\ncontinue; break ;\ncontinue"
                                        << "break | continue | break | continue";
    QTest::newRow("break needs no end") << "break a"
                                        << "break | a";
    QTest::newRow("a result") << "return a + 1\nb"
                              << "return (+ a 1) | b";
    QTest::newRow("no result before a semicolon") << "return;"
                                                  << "return";
    QTest::newRow("no result before a line feed") << "return\na"
                                                  << "return | a";
    QTest::newRow("no result before a brace") << "while (a) { return }"
                                              << "while (a) { return }";
    QTest::newRow("an empty result at the end of the file") << "return"
                                                            << "return null";

    // if
    QTest::newRow("if and else on one line") << "if (a) b = 1; else c = 2;"
                                             << "if (a) { b = 1 } else { c = 2 }";
    QTest::newRow("else on the next line") << "if (a) b = 1;\nelse c = 2;"
                                           << "if (a) { b = 1 } else { c = 2 }";
    QTest::newRow("else after blank lines") << "if (a) b = 1\n\n\nelse\n\nc = 2\nd"
                                            << "if (a) { b = 1 } else { c = 2 } | d";
    QTest::newRow("the brace of if on the next line") << "if (a)\n{ b }"
                                                      << "if (a) { b }";
    QTest::newRow("the brace of else on the next line") << "if (a) { b } else\n{ c }"
                                                        << "if (a) { b } else { c }";
    QTest::newRow("else if") << "if (a) { b } else if (c) { d } else if (e) f; else { g }"
                             << "if (a) { b } else if (c) { d } else if (e) { f } else { g }";
    QTest::newRow("else and if on two lines") << "if (a) { b } else\nif (c) { d }"
                                              << "if (a) { b } else if (c) { d }";
    QTest::newRow("nested if") << "if (a) { if (b) { c } else { d } }"
                               << "if (a) { if (b) { c } else { d } }";
    QTest::newRow("a body without braces is always simple") << "if (a) return 1;"
                                                            << "if (a) { <return 1> }";
    QTest::newRow("a loop as a body without braces is text") << "if (a) while (b) { c }"
                                                             << "if (a) { <while ( b ) { c }> }";
    QTest::newRow("a declaration as a body without braces is text") << "if (a) int b = 1"
                                                                    << "if (a) { int b = 1 }";
    QTest::newRow("an empty condition") << "if () { }"
                                        << "if (null) { }";
    QTest::newRow("a condition over two lines ends at the line feed") << "if (a &&\nb) { c }"
                                                                      << "if ((&& a null)) { c }";
    QTest::newRow("a string in a condition") << "if (a == \")\") { b }"
                                             << "if ((== a \")\")) { b }";
    QTest::newRow("an empty block") << "if (a) { \n\n }"
                                    << "if (a) { }";

    // while
    QTest::newRow("while") << "while (a < 1) { b; c }"
                           << "while ((< a 1)) { b; c }";
    QTest::newRow("while without braces") << "while (a) b++"
                                          << "while (a) { b++ }";
    QTest::newRow("the brace of while on the next line") << "while (a)\n\n{ b }"
                                                         << "while (a) { b }";

    // for
    QTest::newRow("for") << "for (i = 0; i < 3; i++) { }"
                         << "for (i = 0; (< i 3); i++) { }";
    QTest::newRow("for with a declaration") << "for (int i = 0; i < 3; i = i + 1) { a }"
                                            << "for (int i = 0; (< i 3); i = (+ i 1)) { a }";
    QTest::newRow("for with a static declaration") << "for (static int i = 0; ; ) { }"
                                                   << "for (static int i = 0; null; null) { }";
    QTest::newRow("for with a global declaration") << "for (global int i; ; ) { }"
                                                   << "for (global int i; null; null) { }";
    QTest::newRow("for with an expression") << "for (f(a; b); c; d) { }"
                                            << "for (f(a); c; d) { }";
    QTest::newRow("the init ends at its line feed") << "for (a =\n1; ; ) { }"
                                                    << "for (a = null; null; null) { }";
    QTest::newRow("the type of a static init may be any token")
        << "for (static x y; ; ) { }"
        << "for (static x y; null; null) { }";
    QTest::newRow("what follows the declaration in an init is dropped")
        << "for (int a b c; ; ) { }"
        << "for (int a; null; null) { }";
    QTest::newRow("for without braces") << "for (i = 0; i; i--) a = 1\nb"
                                        << "for (i = 0; i; i--) { a = 1 } | b";
    QTest::newRow("the brace of for on the next line") << "for (i = 0; i; i--)\n{ }"
                                                       << "for (i = 0; i; i--) { }";

    // switch
    QTest::newRow("switch") << "switch (a) { case 1: b; c\ncase f(x): default: d }"
                            << "switch (a) { case 1: { b; c } case f(x): { } default: { d } }";
    QTest::newRow("arms on lines of their own")
        << "switch (a) {\n\ncase 1:\nb\nbreak\n\ndefault:\n\nc\n}\nd"
        << "switch (a) { case 1: { b; break } default: { c } } | d";
    QTest::newRow("a switch without arms") << "switch (a) {\n}"
                                           << "switch (a) { }";
    QTest::newRow("a colon in parentheses does not end a value") << "switch (a) { case (b : c): d }"
                                                                 << "switch (a) { case b: { d } }";
    QTest::newRow("an empty value") << "switch (a) { case : b }"
                                    << "switch (a) { case null: { b } }";
    QTest::newRow("nothing is checked beyond syntax")
        << "switch (a) { default: b; case 1: c; case 1: d; default: break }\nreturn 1; break"
        << "switch (a) { default: { b } case 1: { c } case 1: { d } default: { break } } | "
           "return 1 | break";
    QTest::newRow("a switch in a switch")
        << "switch (a) { case 1: switch (b) { case 2: c } case 3: d }"
        << "switch (a) { case 1: { switch (b) { case 2: { c } } } case 3: { d } }";
}

void StatementsTest::trees() {
    QFETCH(QString, source);
    QFETCH(QString, tree);
    QCOMPARE(treeOf(source), tree.replace("\n", " | "));
    QCOMPARE(parseScript(source).error, QString());
}

void StatementsTest::errors_data() {
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("line");
    QTest::addColumn<int>("column");
    const auto row = [](const char *name, const char *source, const char *message, int line,
                        int column) {
        QTest::newRow(name) << QString(source) << QString(message) << line << column;
    };
    row("a semicolon alone on a line", "a\n;\nb", "empty statement", 2, 1);
    row("a semicolon behind a block", "if (a) { };\nb", "empty statement", 1, 11);
    row("two semicolons", "a = 1;;", "empty statement", 1, 7);
    row("an else without an if", "a\nelse b", "dangling else", 2, 1);
    row("static without a type", "static a\nb", "expected type after static", 1, 8);
    row("global without a type", "global a\nb", "expected type after global", 1, 8);
    row("static and global", "static global int a\nb", "expected type after static", 1, 8);
    row("a declaration without a name", "int = 1\nb", "expected variable name", 1, 5);
    row("a declaration of a keyword", "int if\nb", "expected variable name", 1, 5);
    row("a size without its bracket leaves the file", "function f() { int a[1\n}", "expected ']'",
        2, 2);
    row("if without a parenthesis", "if a\nb", "expected '(' after if", 1, 4);
    row("an empty body without braces", "if (a)\n;\nb", "empty statement", 2, 1);
    row("else if without a parenthesis", "if (a) { } else if b\n", "expected '(' after else if", 1,
        20);
    row("while without a parenthesis", "while a\n", "expected '(' after while", 1, 7);
    row("for without a parenthesis", "for a\n", "expected '(' after for", 1, 5);
    row("for without a clause", "for (;;) { }\na", "empty statement", 1, 1);
    row("the prefix test has no word boundary", "a\n for (internal = 0; ; ) { }\na",
        "for init: expected variable name", 2, 7);
    row("an init of a type alone", "for (int; ; ) { }\na", "for init: expected variable name", 1,
        6);
    row("an init of static alone", "for ( static; ; ) { }\na", "for init: expected variable name",
        1, 7);
    row("an init that fails on its second line keeps its own place",
        "a\nfor (static \n 5; ; ) { }\na", "expected variable name", 2, 2);
    row("an update that ends without its parenthesis", "function f() { for (a; b; c\n}",
        "expected ')' after for update", 2, 2);
    row("switch without a parenthesis", "switch a\n", "expected '(' after switch", 1, 8);
    row("the brace of switch on the next line", "switch (a)\n{ }", "expected '{' after switch", 1,
        11);
    row("a statement before the first arm", "switch (a) { b }",
        "expected case or default in switch", 1, 14);
    row("default without a colon", "switch (a) { default b }", "expected ':' after default", 1, 22);
    row("a statement of an arm that fails", "switch (a) { case 1: ; }", "empty statement", 1, 22);
    row("an arm over the end of a function", "function f() { switch (a) { case 1: b\n",
        "expected '}' after switch", 2, 1);
}

void StatementsTest::errors() {
    QFETCH(QString, source);
    QFETCH(QString, message);
    QFETCH(int, line);
    QFETCH(int, column);
    expectError(source, message, line, column);
}

// A failure that nothing looks at leaves its message behind, and the program stands.
void StatementsTest::ignoredFailures_data() {
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("tree");
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("line");
    QTest::addColumn<int>("column");
    const auto row = [](const char *name, const char *source, const char *tree, const char *message,
                        int line, int column) {
        QTest::newRow(name) << QString(source) << QString(tree) << QString(message) << line
                            << column;
    };
    const char *left = "if (a) { b } else if (c) { null } | <{ d }>";
    row("the brace of else if on the next line", "if (a) { b }\nelse if (c)\n{ d }", left,
        "empty statement", 2, 12);
    row("an empty body of else", "if (a) b; else", "if (a) { b } else { null }", "empty statement",
        1, 15);
    row("an empty body of while", "while (a)", "while (a) { null }", "empty statement", 1, 10);
    row("an empty body of for", "for (a; b; c)", "for (a; b; c) { null }", "empty statement", 1,
        14);
    row("an empty body that stops at a semicolon fails with it", "if (a) b; else ;", "no program",
        "empty statement", 1, 16);
    row("an empty body that stops at a brace fails with it", "while (a) }", "no program",
        "empty statement", 1, 11);
    row("a block of if that never closes", "if (a) { b", "if (a) null", "expected '}'", 1, 11);
    row("a block of else that never closes", "if (a) { b } else { c\n", "if (a) { b }",
        "expected '}'", 2, 1);
    row("a block of else if that never closes", "if (a) { b } else if (c) { d",
        "if (a) { b } else if (c) null", "expected '}'", 1, 29);
    row("a block of while that never closes", "while (a) { b", "while (a) null", "expected '}'", 1,
        14);
    row("a block of for that never closes", "for (a; b; c) { d", "for (a; b; c) null",
        "expected '}'", 1, 18);
    row("a switch that never closes is dropped", "a\nswitch (b) { case 1: c", "a",
        "expected '}' after switch", 2, 23);
    row("a block that fails goes on at the token that failed", "if (a) { int }\nb", "no program",
        "expected variable name", 1, 14);
    row("an else behind a block that failed still counts", "if (a) { else c",
        "if (a) null else { c }", "dangling else", 1, 10);
    row("a failed block in a block fails on", "while (a) { if (b) { ; } }\nc", "no program",
        "empty statement", 1, 22);
    row("a condition without its parenthesis at the end of the file", "a\nif (b", "a",
        "expected ')' after if condition", 2, 6);
    row("a condition of while without its parenthesis", "while (b", "",
        "expected ')' after while condition", 1, 9);
    row("a condition of else if without its parenthesis", "if (a) { } else if (b", "",
        "expected ')' after else if condition", 1, 22);
    row("a switch without its parenthesis", "switch (b", "", "expected ')' after switch expression",
        1, 10);
    row("a for without its first semicolon", "for (a", "", "expected ';' after for init", 1, 7);
    row("a for without its second semicolon", "for (a; b", "", "expected ';' after for condition",
        1, 10);
    row("a for without its parenthesis", "for (a; b; c", "", "expected ')' after for update", 1,
        13);
    row("a case without its colon", "switch (a) { case b", "", "expected ':' after case", 1, 20);
    row("only line feeds behind a label", "a\nswitch (b) { case 1:\n\n", "a", "", 0, 0);
    row("nothing behind a label", "switch (b) { case 1:", "", "expected '}' after switch", 1, 21);
    row("a size without its bracket", "int a[1", "", "expected ']'", 1, 8);
    row("a declaration without a name at the end", "a; int", "a", "expected variable name", 1, 7);
    row("a later message replaces an earlier one",
        "if (a) { b }\nelse if (c)\n{ d }\nif (e) b; else",
        "if (a) { b } else if (c) { null } | <{ d }> | if (e) { b } else { null }",
        "empty statement", 4, 15);
    row("a later success does not clear a message", "if (a) { b }\nelse if (c)\n{ d }\nc = 1",
        "if (a) { b } else if (c) { null } | <{ d }> | c = 1", "empty statement", 2, 12);
    row("a stray brace comes with the message before it", "if (a) { b }\nelse if (c)\n{ d }\n}",
        "no program", "empty statement", 2, 12);
    row("a for that fails replaces the message before it",
        "if (a) { b }\nelse if (c)\n{ d }\nfor (;;) { }\nc", "no program", "empty statement", 1, 1);
}

void StatementsTest::ignoredFailures() {
    QFETCH(QString, source);
    QFETCH(QString, tree);
    QFETCH(QString, message);
    QFETCH(int, line);
    QFETCH(int, column);
    expectLeftError(source, tree, message, line, column);
}

// The same faults at the end of the file, at the top level and inside a function body.
void StatementsTest::aMissingParenthesisFailsInsideAFunctionOnly() {
    expectLeftError("if (a", "", "expected ')' after if condition", 1, 6);
    QVERIFY(parseScript("if (a").program);
    expectError("function f() { if (a", "expected ')' after if condition", 1, 21);
}

void StatementsTest::aMissingBraceFailsInsideAFunctionOnly() {
    for (const char *open : {"if (a) {", "for (a; b; c) {", "while (a) {"})
        QVERIFY2(parseScript(open).program, open);
    QVERIFY(parseScript("switch (a) {").program);
    expectError("function f() {", "expected '}'", 1, 15);
    expectError("function f() { if (a) { b", "expected '}'", 1, 26);
    expectError("function f() { if (a) { b }", "expected '}'", 1, 28);
}

void StatementsTest::positionsOfStatements() {
    const auto program = parseScript("\n  static int a[2] = b\n  c = 1\n  d++\n  e(1)\n"
                                     "  return f\n  break\n  continue")
                             .program;
    QStringList positions;
    for (const auto &statement : program->statements)
        positions.append(at(*statement));
    QCOMPARE(positions.join(' '), QString("2:10 3:3 4:3 5:3 6:3 7:3 8:3"));
    const auto &declaration = as<ast::VarDeclStmt>(program->statements[0]);
    QCOMPARE(at(declaration.arraySize), QString("2:16"));
    QCOMPARE(at(declaration.init), QString("2:21"));
    QVERIFY(declaration.isStatic && !declaration.isGlobal && declaration.isArray &&
            declaration.hasInit);
    QCOMPARE(at(as<ast::AssignStmt>(program->statements[1]).value), QString("3:3"));
    QCOMPARE(at(as<ast::ExprStmt>(program->statements[3]).expr), QString("5:3"));
    QCOMPARE(at(as<ast::ReturnStmt>(program->statements[4]).value), QString("6:10"));
}

void StatementsTest::positionsOfIf() {
    const auto program = parseScript("if (a) b\nelse if (c) d\nelse\n e\n if (f) {\n}").program;
    const auto &first = as<ast::IfStmt>(program->statements[0]);
    QCOMPARE(at(first), QString("1:1"));
    QCOMPARE(at(first.condition), QString("1:5"));
    QCOMPARE(at(*first.thenBlock), QString("1:8"));
    QCOMPARE(at(first.elseIfs[0].condition), QString("2:10"));
    // Only the first body without braces has a position.
    QCOMPARE(at(*first.elseIfs[0].body), QString("1:1"));
    QCOMPARE(at(*first.elseBlock), QString("1:1"));
    QCOMPARE(at(*first.elseBlock->statements[0]), QString("4:2"));
    QCOMPARE(at(*as<ast::IfStmt>(program->statements[1]).thenBlock), QString("5:9"));
}

void StatementsTest::positionsOfLoops() {
    const auto program =
        parseScript("\n for (int i = 0; i < 3; i++) a\n for (i = 0; ; ) { }\n while (b) c").program;
    const auto &first = as<ast::ForStmt>(program->statements[0]);
    QCOMPARE(at(first), QString("2:2"));
    // The init clause has the positions of its own text.
    QCOMPARE(at(*first.init), QString("1:1"));
    QCOMPARE(at(as<ast::VarDeclStmt>(first.init).init), QString("1:9"));
    QCOMPARE(at(first.condition), QString("2:18"));
    QCOMPARE(at(*first.update), QString("2:25"));
    QCOMPARE(at(*first.body), QString("1:1"));
    const auto &second = as<ast::ForStmt>(program->statements[1]);
    QCOMPARE(at(*second.init), QString("1:1"));
    QCOMPARE(at(second.condition), QString("3:14"));
    QVERIFY(second.condition.text.isEmpty() && !second.condition.root);
    QCOMPARE(at(*second.update), QString("3:16"));
    QVERIFY(as<ast::ExprStmt>(second.update).expr.text.isEmpty());
    QCOMPARE(at(*second.body), QString("3:18"));
    const auto &third = as<ast::WhileStmt>(program->statements[2]);
    QCOMPARE(at(third), QString("4:2"));
    QCOMPARE(at(third.condition), QString("4:9"));
    QCOMPARE(at(*third.body), QString("1:1"));
}

void StatementsTest::anInitBehindStaticStandsAtItsType() {
    const auto program = parseScript("for (static int i = 0; ; ) { }").program;
    const auto &init = as<ast::VarDeclStmt>(as<ast::ForStmt>(program->statements[0]).init);
    QCOMPARE(at(init), QString("1:8"));
    QVERIFY(init.isStatic);
}

void StatementsTest::positionsOfSwitch() {
    const auto program = parseScript("switch (a) {\n case b: c\n default: d }").program;
    const auto &statement = as<ast::SwitchStmt>(program->statements[0]);
    QCOMPARE(at(statement.value), QString("1:9"));
    QCOMPARE(at(statement.cases[0]), QString("2:2"));
    QCOMPARE(at(*statement.cases[0].body), QString("2:2"));
    QCOMPARE(at(statement.cases[0].value), QString("2:7"));
    QCOMPARE(at(statement.cases[1]), QString("3:2"));
    QVERIFY(statement.cases[1].isDefault && !statement.cases[0].isDefault);
    QVERIFY(statement.cases[1].value.text.isEmpty());
}

// Expressions keep their text joined by blanks; the nodes below count in that text.
void StatementsTest::nodesCountInTheTextOfTheirExpression() {
    const auto program = parseScript("x = f(a,\n  b+1)").program;
    const auto &value = as<ast::AssignStmt>(program->statements[0]).value;
    QCOMPARE(value.text, QString("f ( a , \n b + 1 )"));
    QCOMPARE(at(*value.root), QString("1:1"));
    QCOMPARE(at(*value.root->args[0]), QString("1:5"));
    const auto other = parseScript("if (a+\"x\ny\"+b) { }").program;
    const auto &condition = as<ast::IfStmt>(other->statements[0]).condition;
    QCOMPARE(condition.text, QString("a + \"x\ny\" + b"));
    QCOMPARE(at(*condition.root->right), QString("2:6"));
}

void StatementsTest::lineFeedsAroundAClauseAreTrimmed() {
    const auto program = parseScript("if (\n\n a + b\n) { }").program;
    const auto &condition = as<ast::IfStmt>(program->statements[0]).condition;
    QCOMPARE(condition.text, QString("a + b"));
    QCOMPARE(at(condition), QString("1:5"));
    QCOMPARE(at(*condition.root->right), QString("1:5"));
}

// The trimmed text loses the blanks, and so does what is lexed from it.
void StatementsTest::anOpenStringLosesTheBlanksAtItsEnd() {
    const auto program = parseScript("a = \"b \n ").program;
    const auto &value = as<ast::AssignStmt>(program->statements[0]).value;
    QCOMPARE(value.text, QString("\"b"));
    QCOMPARE(value.root->literalText, QString("\"b"));
}

void StatementsTest::fieldsOfIncrements() {
    const auto program = parseScript("a++\nb--\n++c\n--d").program;
    QStringList fields;
    for (const auto &statement : program->statements) {
        const auto &step = as<ast::IncDecStmt>(statement);
        fields.append(step.name + QString::number(step.isIncrement) +
                      QString::number(step.isPrefix));
    }
    QCOMPARE(fields.join(' '), QString("a10 b00 c11 d01"));
}

QUORVANE_TEST_MAIN(QCoreApplication, StatementsTest)
#include "statements_test.moc"
