// The product's parsers against the plain recursive rules, over generated scripts, mutations of
// them and noise: the same tree to the last field, or the same failure, with the same message.
#include "script/lexer.h"
#include "script/parser.h"
#include "script/printed_form.h"

#include "reference_parser.h"
#include "script/expression_parser.h"
#include "support/library_file.h"
#include "support/same_tree.h"
#include "support/script_generator.h"
#include "support/staged_main.h"

#include <QCoreApplication>

namespace {

using support::ScriptGenerator;

// What came out of a parse.
struct Outcome {
    std::vector<ast::Token> tokens;
    std::shared_ptr<ast::Program> program;
    QString error;
};

bool operator==(const Outcome &a, const Outcome &b) {
    return a.error == b.error && a.tokens == b.tokens &&
           support::sameTree(a.program.get(), b.program.get());
}

QString printed(const Outcome &outcome) {
    return outcome.error + "\n" +
           (outcome.program ? ast::programToJson(*outcome.program) : QString("no program"));
}

Outcome byTheRules(const QString &source) {
    Outcome outcome;
    outcome.tokens = reference::tokenize(source, &outcome.error);
    if (outcome.error.isEmpty())
        outcome.program = reference::Parser(outcome.tokens).parseProgram(&outcome.error);
    return outcome;
}

Outcome parsed(const QString &source) {
    Outcome outcome;
    outcome.tokens = ast::Lexer(source).tokenize(&outcome.error);
    if (outcome.error.isEmpty())
        outcome.program = ast::Parser(outcome.tokens).parseProgram(&outcome.error);
    return outcome;
}

// Compares the outcome with that of the rules.
bool compare(const QString &source, bool *hasProgram = nullptr) {
    const Outcome rule = byTheRules(source);
    if (hasProgram)
        *hasProgram = rule.program != nullptr;
    const Outcome outcome = parsed(source);
    if (outcome == rule)
        return true;
    qWarning().noquote() << "source:" << source << "\nrule:" << printed(rule)
                         << "\nparsed:" << printed(outcome);
    return false;
}

enum class Kind { Script, Mutation, Noise };

QString generate(ScriptGenerator &generator, Kind kind) {
    switch (kind) {
    case Kind::Script:
        return generator.script();
    case Kind::Mutation:
        return generator.mutation(generator.script());
    default:
        return generator.noise(1 + generator.below(40));
    }
}

} // namespace

Q_DECLARE_METATYPE(Kind)

class ReferenceComparisonTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void scripts_data();
    void scripts();
    void expressions();
    void allShortSequences();
    void sequencesInsideClauses();
    void openLiteralsWithBlanksBehind();
};

void ReferenceComparisonTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void ReferenceComparisonTest::scripts_data() {
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<quint32>("seed");
    QTest::addColumn<int>("count");
    QTest::newRow("scripts from the grammar") << Kind::Script << 1U << 4000;
    QTest::newRow("mutations of scripts") << Kind::Mutation << 2U << 8000;
    QTest::newRow("noise") << Kind::Noise << 3U << 12000;
}

void ReferenceComparisonTest::scripts() {
    QFETCH(Kind, kind);
    QFETCH(quint32, seed);
    QFETCH(int, count);
    ScriptGenerator generator(seed);
    int programs = 0;
    for (int i = 0; i < count; ++i) {
        bool hasProgram = false;
        QVERIFY(compare(generate(generator, kind), &hasProgram));
        programs += int(hasProgram);
    }
    qInfo("%d of %d gave a program", programs, count);
    // Neither kind of end must be rare, except that the grammar gives good scripts only.
    QVERIFY(programs > count / 20);
    QVERIFY(kind == Kind::Script ? programs == count : programs < count);
}

void ReferenceComparisonTest::expressions() {
    ScriptGenerator generator(4);
    for (int i = 0; i < 12000; ++i) {
        const QString source =
            i % 2 == 0 ? generator.expression(4) : generator.mutation(generator.expression(3));
        QString ruleError;
        QString error;
        const auto rule = reference::parseExpressionText(source, &ruleError);
        const auto tree = ast::parseExpressionText(source, &error);
        if (!support::sameTree(tree.get(), rule.get()))
            QCOMPARE(ast::expressionToJson(tree.get()), ast::expressionToJson(rule.get()));
        QCOMPARE(error, ruleError);
    }
}

// The whole set of short token sequences, where most of the odd cases live.
void ReferenceComparisonTest::allShortSequences() {
    const QStringList words{"if",     "else", "for",       "switch",  "case",  "int", "static",
                            "import", "#",    "a",         "1",       "\"s\"", "(",   ")",
                            "[",      "{",    "}",         ";",       ":",     "=",   "++",
                            ".",      "\n",   "\"x\\\\\"", "function"};
    const int base = words.size();
    for (int number = 0; number < base * base * base; ++number) {
        const QString source = words.at(number % base) + ' ' + words.at(number / base % base) +
                               ' ' + words.at(number / base / base);
        QVERIFY(compare(source));
    }
}

// Sequences behind a "for (" and inside a block, where texts are cut out of texts.
void ReferenceComparisonTest::sequencesInsideClauses() {
    ScriptGenerator generator(5);
    for (int i = 0; i < 12000; ++i) {
        const QString noise = generator.noise(1 + generator.below(8));
        const QStringList frames{"for (%1; a; b) { }",
                                 "for (a = 1; %1; b) { }",
                                 "for (a = 1; a; %1) { }",
                                 "if (%1) { a } else { b }",
                                 "switch (%1) { case 1: a }",
                                 "switch (a) { case %1: a }",
                                 "int a[%1] = 2",
                                 "while (a) { %1 }",
                                 "if (a) %1 else b",
                                 "function f(%1) { }",
                                 "for (int %1; ; ) a",
                                 "for (static %1; ; ) a",
                                 "#include <%1>",
                                 "return %1"};
        const QString source = frames.at(generator.below(frames.size())).arg(noise);
        QVERIFY(compare(source));
    }
}

// A literal that never closes takes the rest of the file with it, and a clause that ends in one
// loses the blanks at its end.
void ReferenceComparisonTest::openLiteralsWithBlanksBehind() {
    const QStringList frames{"%1",
                             "a = %1",
                             "a = b + %1",
                             "f(%1",
                             "++a %1",
                             "int a = %1",
                             "int a[%1",
                             "return %1",
                             "if (%1",
                             "if (a) %1",
                             "while (a) { %1",
                             "for (%1",
                             "for (int i = %1",
                             "for (a; %1",
                             "for (a; b; %1",
                             "for (a; b; c) %1",
                             "switch (a) { case %1",
                             "switch (a) { case 1: %1",
                             "function f() %1",
                             "function f() { b = %1",
                             "#include %1",
                             "#include <%1",
                             "import %1"};
    const QStringList literals{"\"",      "'",      "\"a",      "'a",    "\"a\\",
                               "\"a\\\"", "\"\\\\", "\"a b\nc", "'a\nb", "\"a\\\\\" \"b"};
    const QStringList blanks{"",
                             " ",
                             "  ",
                             "\t",
                             "\n",
                             " \n \n",
                             "\r\n",
                             "\f",
                             "\v",
                             QString(QChar(0xa0)),
                             QString(QChar(0x3000)) + " "};
    for (const QString &frame : frames) {
        for (const QString &literal : literals) {
            for (const QString &blank : blanks)
                QVERIFY(compare(QString(frame).arg(literal + blank)));
        }
    }
}

QUORVANE_TEST_MAIN(QCoreApplication, ReferenceComparisonTest)
#include "reference_comparison_test.moc"
