// A script that is lexed and parsed at once, stretch by stretch, against a lexer and a parser one after the
// other: the same tree or the same messages, wherever a stretch ends. And the outline of a script against
// its whole tree.
#include "script/text_parser.h"

#include "parse_helpers.h"
#include "support/library_file.h"
#include "support/same_tree.h"
#include "support/script_generator.h"
#include "support/staged_main.h"

#include <QCoreApplication>

namespace {

using support::ScriptGenerator;

constexpr int tokensOfStretch = 1024;

// What is known of a direct statement without its clauses.
QString outlined(const ast::Stmt &statement) {
    const QString place = at(statement) + " ";
    if (const auto *import = dynamic_cast<const ast::ImportStmt *>(&statement))
        return place + "import " + import->path;
    if (const auto *variable = dynamic_cast<const ast::VarDeclStmt *>(&statement))
        return place + (variable->isGlobal ? "global " : "") + variable->typeName + " " +
               variable->name;
    if (dynamic_cast<const ast::IfStmt *>(&statement) != nullptr)
        return place + "if";
    return place;
}

QStringList outlined(const std::shared_ptr<ast::Program> &program) {
    QStringList lines;
    if (!program)
        return {"no program"};
    for (const auto &function : program->functions)
        lines.append(at(*function) + " function " + function->name);
    for (const auto &statement : program->statements)
        lines.append(outlined(*statement));
    return lines;
}

// Both ways give the same, and so does the outline in all that it tells.
void compare(const QString &source) {
    QString lexicalError;
    (void)ast::Lexer(source).tokenize(&lexicalError);
    const Parsed rule = parseScript(source);
    const ast::ParsedText whole = ast::parseText(source);
    const ast::ParsedText outline = ast::parseText(source, ast::Detail::Outline);
    const QString syntaxError = lexicalError.isEmpty() ? rule.error : QString();
    for (const ast::ParsedText *parsed : {&whole, &outline}) {
        QCOMPARE(parsed->lexicalError, lexicalError);
        QCOMPARE(parsed->syntaxError, syntaxError);
    }
    if (!support::sameTree(whole.program.get(), rule.program.get())) {
        QVERIFY(whole.program && rule.program);
        QCOMPARE(ast::programToJson(*whole.program), ast::programToJson(*rule.program));
    }
    QCOMPARE(outlined(outline.program), outlined(rule.program));
}

} // namespace

class TextParserTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void givesWhatLexerAndParserGive_data();
    void givesWhatLexerAndParserGive();
    void aStretchMayEndAtAnyToken_data();
    void aStretchMayEndAtAnyToken();
    void generatedScripts();
    void anOutlineHasNoClauses();
};

void TextParserTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void TextParserTest::givesWhatLexerAndParserGive_data() {
    QTest::addColumn<QString>("source");
    const auto row = [](const char *name, const QString &source) { QTest::newRow(name) << source; };
    row("nothing", "");
    row("a null text", QString());
    row("an unknown character at once", "$");
    row("an unknown character behind a program", "a = 1\n$");
    row("an unknown character behind a syntax error",
        "int 5\n" + QString("a = 1\n").repeated(2000) + "$");
    row("a syntax error and much behind it", "int 5\n" + QString("a = 1\n").repeated(2000));
    row("a stray brace and an unknown character", "}\n?");
    row("an unknown character inside a clause", "f(a, \n?");
    row("a left message and an unknown character",
        "if (a) {" + QString("b\n").repeated(2000) + "\\");
    row("a message that is left behind", "if (a) { b");
    row("a clause of many stretches",
        "f(" + QString("a, ").repeated(3 * tokensOfStretch) + "b)\nc = d");
    row("a clause that ends with the file", "f(" + QString("a, ").repeated(3 * tokensOfStretch));
    row("line feeds alone", QString("\n").repeated(3 * tokensOfStretch));
    row("exactly one stretch", QString("\n").repeated(tokensOfStretch));
    row("exactly one stretch with its end", QString("\n").repeated(tokensOfStretch - 1));
    row("an open string at the end", "a = \"b\nc  ");
    row("an outline's statement of line feeds", "for (i = 0; i; \n\n) {}\nwhile (\n) {}\n;");
    row("a for that fails inside its init", "for (int 5; a; b) {}");
    row("a for without a semicolon", "for (int i = 0");
    row("a bad init and an unknown character", "for (; a; b) {}\n@");
}

void TextParserTest::givesWhatLexerAndParserGive() {
    QFETCH(QString, source);
    compare(source);
}

void TextParserTest::aStretchMayEndAtAnyToken_data() {
    QTest::addColumn<QString>("script");
    const auto row = [](const char *name, const QString &script) { QTest::newRow(name) << script; };
    row("statements",
        "function f(int a, b) { return a[b] + 1; }\nglobal int cam1_x = - 2;\nimport \"a.ys\";\n"
        "#include <a/b>\nstatic string s[3];\nswitch (a) { case 1: b++; default: break; }\n");
    row("loops",
        "for (int i = 0; i < 3; i++) { if (a.b) c(d, \"e\") else if (f) g = h; else { i } }\n"
        "for (i = 0; i; ) j\nwhile (!k) { continue; }\n");
    row("a for whose init fails", "for (static 5; a; b) {}\n");
    row("a bad declaration", "a = b\nint = 3\n");
    row("an unknown character", "a = b\nc = $\n");
    row("a missing brace", "while (a) { b = c\n");
}

void TextParserTest::aStretchMayEndAtAnyToken() {
    QFETCH(QString, script);
    for (int behind = 0; behind < 120; ++behind) {
        compare(QString("\n").repeated(tokensOfStretch - behind) + script);
        if (QTest::currentTestFailed())
            return;
    }
}

void TextParserTest::generatedScripts() {
    ScriptGenerator generator(7);
    for (int i = 0; i < 60; ++i) {
        QString source;
        for (int part = generator.below(30); part >= 0; --part)
            source += generator.script();
        compare(source);
        compare(generator.mutation(source));
        if (QTest::currentTestFailed())
            return;
    }
}

void TextParserTest::anOutlineHasNoClauses() {
    const QString source = "int a = b + 1;\nif (c) { d = e }\nf++;";
    const auto program = ast::parseText(source, ast::Detail::Outline).program;
    const auto &variable = as<ast::VarDeclStmt>(program->statements[0]);
    QVERIFY(variable.hasInit && variable.init.text.isEmpty() && !variable.init.root);
    QCOMPARE(at(variable.init), QString("1:9"));
    const auto &choice = as<ast::IfStmt>(program->statements[1]);
    QCOMPARE(at(choice.condition), QString("2:5"));
    QVERIFY(!choice.condition.root);
    QVERIFY(!as<ast::ExprStmt>(choice.thenBlock->statements[0]).expr.root);
    QCOMPARE(at(as<ast::ExprStmt>(program->statements[2])), QString("3:1"));
}

QUORVANE_TEST_MAIN(QCoreApplication, TextParserTest)
#include "text_parser_test.moc"
