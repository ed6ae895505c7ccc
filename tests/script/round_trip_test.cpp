// Parses, writes the tree back as a script from the tree's own fields, parses that, and compares.
#include "parse_helpers.h"
#include "support/library_file.h"
#include "support/same_tree.h"
#include "support/script_generator.h"
#include "support/staged_main.h"

#include <QCoreApplication>

namespace {

using namespace ast;
using support::ScriptGenerator;

bool isSimple(const Stmt *statement) {
    return dynamic_cast<const AssignStmt *>(statement) ||
           dynamic_cast<const IncDecStmt *>(statement) || dynamic_cast<const ExprStmt *>(statement);
}

// Writes a tree as a script. What the tree cannot hold (comments, the blanks between tokens, the
// order between functions and statements) is chosen freely.
class Writer {
public:
    // False after a null entry, or a result that could not stand here: the text then says nothing.
    bool isWhole = true;

    QString program(const Program &tree) {
        QString text;
        for (const auto &function : tree.functions)
            text += statement(function.get());
        for (const auto &entry : tree.statements)
            text += statement(entry.get());
        return text;
    }

private:
    QString block(const std::shared_ptr<Block> &tree) {
        if (!tree) {
            isWhole = false;
            return QString();
        }
        QString text = "{\n";
        for (const auto &entry : tree->statements)
            text += statement(entry.get());
        return text + "}\n";
    }

    // A lone simple statement is written without braces: it may have been read as a text there,
    // and would be read as something else inside braces.
    QString body(const std::shared_ptr<Block> &tree) {
        if (tree && tree->statements.size() == 1 && isSimple(tree->statements[0].get())) {
            const QString text = simple(tree->statements[0].get());
            if (!text.startsWith('{'))
                return text + ";\n";
        }
        return block(tree);
    }

    QString simple(const Stmt *tree) {
        if (const auto *assign = dynamic_cast<const AssignStmt *>(tree))
            return assign->target + " = " + assign->value.text;
        if (const auto *step = dynamic_cast<const IncDecStmt *>(tree)) {
            const QString op = step->isIncrement ? "++" : "--";
            return step->isPrefix ? op + step->name : step->name + op;
        }
        return dynamic_cast<const ExprStmt &>(*tree).expr.text;
    }

    QString declaration(const VarDeclStmt &tree) {
        QString text = QString(tree.isStatic ? "static " : "") + (tree.isGlobal ? "global " : "") +
                       tree.typeName + " " + tree.name;
        if (tree.isArray)
            text += "[" + tree.arraySize.text + "]";
        if (tree.hasInit)
            text += " = " + tree.init.text;
        return text;
    }

    QString clause(const std::shared_ptr<Stmt> &tree) {
        if (const auto *variable = dynamic_cast<const VarDeclStmt *>(tree.get()))
            return declaration(*variable);
        // A sign in front keeps a name that begins like a type from being taken for one.
        const auto *step = dynamic_cast<const IncDecStmt *>(tree.get());
        return (step != nullptr && !step->isPrefix ? "+ " : "") + simple(tree.get());
    }

    QString path(const QString &text) {
        const QString quoted = '"' + text + '"';
        const auto tokens = Lexer(quoted).tokenize();
        return tokens.size() == 2 && tokens[0].text == quoted ? quoted : "<" + text + ">";
    }

    QString statement(const Stmt *tree) {
        if (!tree) {
            isWhole = false;
            return QString();
        }
        if (isSimple(tree))
            return simple(tree) + ";\n";
        if (const auto *variable = dynamic_cast<const VarDeclStmt *>(tree))
            return declaration(*variable) + ";\n";
        if (const auto *include = dynamic_cast<const IncludeStmt *>(tree))
            return "#include " + path(include->path) + "\n";
        if (const auto *import = dynamic_cast<const ImportStmt *>(tree))
            return "import \"" + import->path + "\";\n";
        if (const auto *back = dynamic_cast<const ReturnStmt *>(tree))
            return result(*back);
        if (dynamic_cast<const BreakStmt *>(tree))
            return "break;\n";
        if (dynamic_cast<const ContinueStmt *>(tree))
            return "continue;\n";
        return nested(tree);
    }

    QString result(const ReturnStmt &tree) {
        // A value that is there and empty stands at the very end of a file only.
        isWhole = isWhole && (!tree.hasValue || !tree.value.text.isEmpty());
        return tree.hasValue ? "return " + tree.value.text + ";\n" : "return;\n";
    }

    QString nested(const Stmt *tree) {
        if (const auto *function = dynamic_cast<const FunctionDeclStmt *>(tree)) {
            QStringList parameters;
            for (int i = 0; i < function->paramNames.size(); ++i)
                parameters.append(function->paramTypes[i] + " " + function->paramNames[i]);
            return "function " + function->name + "(" + parameters.join(", ") + ") " +
                   body(function->body);
        }
        if (const auto *loop = dynamic_cast<const WhileStmt *>(tree))
            return "while (" + loop->condition.text + ") " + body(loop->body);
        if (const auto *loop = dynamic_cast<const ForStmt *>(tree))
            return "for (" + clause(loop->init) + "; " + loop->condition.text + "; " +
                   simple(loop->update.get()) + ") " + body(loop->body);
        if (const auto *choice = dynamic_cast<const IfStmt *>(tree)) {
            QString text = "if (" + choice->condition.text + ") " + body(choice->thenBlock);
            for (const ElseIfClause &clause : choice->elseIfs)
                text += "else if (" + clause.condition.text + ") " + body(clause.body);
            return choice->elseBlock ? text + "else " + body(choice->elseBlock) : text;
        }
        const auto &selection = dynamic_cast<const SwitchStmt &>(*tree);
        QString text = "switch (" + selection.value.text + ") {\n";
        for (const SwitchCase &arm : selection.cases) {
            text += (arm.isDefault ? "default" : "case " + arm.value.text) + ":\n";
            for (const auto &entry : arm.body->statements)
                text += statement(entry.get());
        }
        return text + "}\n";
    }
};

// True if the script ends inside a literal or a bracket that the text walk sees: its last statement
// then has no end that could be written.
bool endsOpen(const QString &source) {
    // A comma behind a script that ends closed is a statement of its own.
    const auto program = parseScript(source + "\n,").program;
    const auto *last = program && !program->statements.empty()
                           ? dynamic_cast<const ExprStmt *>(program->statements.back().get())
                           : nullptr;
    return last == nullptr || last->expr.text != ",";
}

} // namespace

class RoundTripTest : public QObject {
    Q_OBJECT

private:
    static bool roundTrip(const QString &source, bool *isSame);

private Q_SLOTS:
    void initTestCase();
    void scriptsFromTheGrammar();
    void mutations();
    void noise();
    void unbalancedTextsStandLast();
};

// True if the script could be compared.
bool RoundTripTest::roundTrip(const QString &source, bool *isSame) {
    *isSame = true;
    const Parsed first = parseScript(source);
    if (!first.program || !first.error.isEmpty() || endsOpen(source))
        return false;
    Writer writer;
    const QString written = writer.program(*first.program);
    if (!writer.isWhole)
        return false;
    const Parsed second = parseScript(written);
    *isSame = second.error.isEmpty() && support::sameTree(first.program.get(), second.program.get(),
                                                          support::Positions::Ignored);
    if (!*isSame)
        qWarning().noquote() << "source:" << source << "\nwritten:" << written
                             << "\nfirst:" << programToText(*first.program) << "\nsecond:"
                             << (second.program ? programToText(*second.program) : second.error);
    return true;
}

void RoundTripTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void RoundTripTest::scriptsFromTheGrammar() {
    ScriptGenerator generator(11);
    for (int i = 0; i < 10000; ++i) {
        bool isSame = false;
        QVERIFY(roundTrip(generator.script(), &isSame));
        QVERIFY(isSame);
    }
}

void RoundTripTest::mutations() {
    ScriptGenerator generator(12);
    int compared = 0;
    for (int i = 0; i < 6000; ++i) {
        bool isSame = false;
        compared += int(roundTrip(generator.mutation(generator.script()), &isSame));
        QVERIFY(isSame);
    }
    qInfo("%d of 6000 could be compared", compared);
    QVERIFY(compared > 1500);
}

void RoundTripTest::noise() {
    ScriptGenerator generator(13);
    int compared = 0;
    for (int i = 0; i < 6000; ++i) {
        bool isSame = false;
        compared += int(roundTrip(generator.noise(1 + generator.below(12)), &isSame));
        QVERIFY(isSame);
    }
    qInfo("%d of 6000 could be compared", compared);
    QVERIFY(compared > 300);
}

// Texts with unbalanced brackets stand last: nothing ends them but the end of the file.
void RoundTripTest::unbalancedTextsStandLast() {
    for (const char *tail : {"a ) b", "f(a", "x = ]", "a = (b { c", "{ a", "g = \"x\\\\\""}) {
        const QString source = QString("a = 1;\nif (b) { c; d }\n") + tail;
        const Parsed first = parseScript(source);
        QCOMPARE(int(first.program->statements.size()), 3);
        const auto last = first.program->statements.back();
        first.program->statements.pop_back();
        QString written = Writer().program(*first.program);
        const auto *assign = dynamic_cast<const AssignStmt *>(last.get());
        written +=
            assign ? assign->target + " = " + assign->value.text : as<ExprStmt>(last).expr.text;
        first.program->statements.push_back(last);
        QVERIFY2(support::sameTree(first.program.get(), parseScript(written).program.get(),
                                   support::Positions::Ignored),
                 tail);
    }
}

QUORVANE_TEST_MAIN(QCoreApplication, RoundTripTest)
#include "round_trip_test.moc"
