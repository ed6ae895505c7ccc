// The JSON form.
#include "frame/steering_characters.h"
#include "script/printed_form.h"
#include "script/printing.h"

namespace ast {
namespace {

const char *kindName(ExprKind kind) {
    static const char *const names[] = {"Literal", "Identifier", "Unary",  "Binary", "Call",
                                        "Index",   "Member",     "IncDec", "Raw"};
    return names[int(kind)];
}

// The fields of one node, in order.
class Fields {
public:
    Fields(Parts &parts, const char *type)
        : out(parts) {
        out.text("{\"type\":\"").text(type).text("\"");
    }
    ~Fields() { out.text("}"); }
    Fields(const Fields &) = delete;
    Fields &operator=(const Fields &) = delete;

    Fields &add(const char *name, const QString &value) { return raw(name, quotedJson(value)); }
    Fields &add(const char *name, bool value) {
        return raw(name, value ? QStringLiteral("true") : QStringLiteral("false"));
    }
    Fields &add(const char *name, qint32 value) { return raw(name, QString::number(value)); }
    Fields &add(const char *name, const QStringList &values) {
        key(name).text("[").list(values, ",",
                                 [this](const QString &value) { out.text(quotedJson(value)); });
        out.text("]");
        return *this;
    }
    template<typename Node>
    Fields &add(const char *name, const std::shared_ptr<Node> &node) {
        key(name).node(node);
        return *this;
    }
    template<typename Node>
    Fields &add(const char *name, const std::vector<std::shared_ptr<Node>> &nodes) {
        key(name).text("[").list(nodes, ",", [this](const auto &node) { out.node(node); });
        out.text("]");
        return *this;
    }
    Fields &add(const char *name, const Expression &expression) {
        key(name);
        Fields(out, "Expression")
            .add("text", expression.text)
            .add("line", expression.line)
            .add("column", expression.column)
            .add("root", expression.root);
        return *this;
    }
    Fields &add(const char *name, const std::vector<ElseIfClause> &clauses) {
        key(name).text("[").list(clauses, ",", [this](const ElseIfClause &clause) {
            Fields(out, "ElseIfClause").add("condition", clause.condition).add("body", clause.body);
        });
        out.text("]");
        return *this;
    }
    Fields &add(const char *name, const std::vector<SwitchCase> &cases) {
        key(name).text("[").list(cases, ",", [this](const SwitchCase &arm) {
            Fields(out, "SwitchCase")
                .add("isDefault", arm.isDefault)
                .add("value", arm.value)
                .add("body", arm.body)
                .add("line", arm.line)
                .add("column", arm.column);
        });
        out.text("]");
        return *this;
    }
    // Of every statement.
    Fields &position(const Stmt &statement) {
        return add("line", statement.line).add("column", statement.column);
    }

private:
    Parts &key(const char *name) { return out.text(",\"").text(name).text("\":"); }
    Fields &raw(const char *name, const QString &value) {
        key(name).text(value);
        return *this;
    }

    Parts &out;
};

// Adds the fields of a statement of class `Statement`; false if it is of another class.
template<typename Statement, typename Add>
bool addAs(const Stmt *statement, const char *type, Parts &parts, Add add) {
    const auto *own = dynamic_cast<const Statement *>(statement);
    if (own == nullptr)
        return false;
    Fields fields(parts, type);
    add(fields.position(*own), *own);
    return true;
}

void addSimple(const Stmt *statement, Parts &parts) {
    addAs<IncludeStmt>(statement, "IncludeStmt", parts,
                       [](Fields &f, const auto &s) { f.add("path", s.path); }) ||
        addAs<ImportStmt>(statement, "ImportStmt", parts,
                          [](Fields &f, const auto &s) { f.add("path", s.path); }) ||
        addAs<ReturnStmt>(statement, "ReturnStmt", parts,
                          [](Fields &f, const auto &s) {
                              f.add("hasValue", s.hasValue).add("value", s.value);
                          }) ||
        addAs<VarDeclStmt>(statement, "VarDeclStmt", parts,
                           [](Fields &f, const auto &s) {
                               f.add("typeName", s.typeName)
                                   .add("isStatic", s.isStatic)
                                   .add("isGlobal", s.isGlobal)
                                   .add("name", s.name)
                                   .add("arraySize", s.arraySize)
                                   .add("isArray", s.isArray)
                                   .add("hasInit", s.hasInit)
                                   .add("init", s.init);
                           }) ||
        addAs<AssignStmt>(
            statement, "AssignStmt", parts,
            [](Fields &f, const auto &s) { f.add("target", s.target).add("value", s.value); }) ||
        addAs<IncDecStmt>(
            statement, "IncDecStmt", parts,
            [](Fields &f, const auto &s) {
                f.add("name", s.name).add("isIncrement", s.isIncrement).add("isPrefix", s.isPrefix);
            }) ||
        addAs<ExprStmt>(statement, "ExprStmt", parts,
                        [](Fields &f, const auto &s) { f.add("expr", s.expr); }) ||
        addAs<BreakStmt>(statement, "BreakStmt", parts, [](Fields &, const auto &) {}) ||
        addAs<ContinueStmt>(statement, "ContinueStmt", parts, [](Fields &, const auto &) {});
}

bool addNested(const Stmt *statement, Parts &parts) {
    return addAs<FunctionDeclStmt>(statement, "FunctionDeclStmt", parts,
                                   [](Fields &f, const auto &s) {
                                       f.add("name", s.name)
                                           .add("paramTypes", s.paramTypes)
                                           .add("paramNames", s.paramNames)
                                           .add("body", s.body);
                                   }) ||
           addAs<IfStmt>(statement, "IfStmt", parts,
                         [](Fields &f, const auto &s) {
                             f.add("condition", s.condition)
                                 .add("thenBlock", s.thenBlock)
                                 .add("elseIfs", s.elseIfs)
                                 .add("elseBlock", s.elseBlock);
                         }) ||
           addAs<ForStmt>(statement, "ForStmt", parts,
                          [](Fields &f, const auto &s) {
                              f.add("init", s.init)
                                  .add("condition", s.condition)
                                  .add("update", s.update)
                                  .add("body", s.body);
                          }) ||
           addAs<WhileStmt>(statement, "WhileStmt", parts,
                            [](Fields &f, const auto &s) {
                                f.add("condition", s.condition).add("body", s.body);
                            }) ||
           addAs<SwitchStmt>(statement, "SwitchStmt", parts, [](Fields &f, const auto &s) {
               f.add("value", s.value).add("cases", s.cases);
           });
}

struct Json {
    static void partsOf(const ExprNode *node, Parts &parts) {
        if (node == nullptr) {
            parts.text("null");
            return;
        }
        Fields(parts, "ExprNode")
            .add("kind", QString::fromLatin1(kindName(node->kind)))
            .add("line", node->line)
            .add("column", node->column)
            .add("rawText", node->rawText)
            .add("literalText", node->literalText)
            .add("literalIsString", node->literalIsString)
            .add("identifierName", node->identifierName)
            .add("op", node->op)
            .add("operand", node->operand)
            .add("left", node->left)
            .add("right", node->right)
            .add("callee", node->callee)
            .add("args", node->args)
            .add("indexBase", node->indexBase)
            .add("indexValue", node->indexValue)
            .add("memberBase", node->memberBase)
            .add("memberName", node->memberName)
            .add("incDecOperand", node->incDecOperand)
            .add("isIncrement", node->isIncrement)
            .add("isPrefix", node->isPrefix);
    }
    static void partsOf(const Block *block, Parts &parts) {
        if (block == nullptr) {
            parts.text("null");
            return;
        }
        Fields(parts, "Block")
            .add("statements", block->statements)
            .add("line", block->line)
            .add("column", block->column);
    }
    static void partsOf(const Stmt *statement, Parts &parts) {
        if (statement == nullptr)
            parts.text("null");
        else if (!addNested(statement, parts))
            addSimple(statement, parts);
    }
};

} // namespace

QString quotedJson(const QString &text) {
    QString result(QLatin1Char('"'));
    for (const QChar unit : text) {
        const bool isPlain = !steersDisplay(unit) && !unit.isSurrogate();
        if (unit == QLatin1Char('"') || unit == QLatin1Char('\\'))
            (result += QLatin1Char('\\')) += unit;
        else if (unit == QLatin1Char('\n'))
            result += QLatin1String("\\n");
        else if (isPlain)
            result += unit;
        else
            result += unicodeEscape(unit);
    }
    return result + QLatin1Char('"');
}

void tokensToJson(const std::vector<Token> &tokens, const TextSink &sink) {
    Pieces pieces(sink);
    const char *separator = "[";
    for (const Token &token : tokens) {
        pieces.add(QLatin1String(separator) +
                   QStringLiteral("[%1,%2,%3,%4]")
                       .arg(QString::number(token.kind), quotedJson(token.text),
                            QString::number(token.line), QString::number(token.column)));
        separator = ",";
    }
    pieces.add(tokens.empty() ? QStringLiteral("[]") : QStringLiteral("]"));
    pieces.handOn();
}

QString tokensToJson(const std::vector<Token> &tokens) {
    return gathered([&tokens](const TextSink &sink) { tokensToJson(tokens, sink); });
}

void programToJson(const Program &program, const TextSink &sink) {
    Parts parts;
    Fields(parts, "Program")
        .add("functions", program.functions)
        .add("statements", program.statements)
        .add("sourcePath", program.sourcePath);
    print<Json>(std::move(parts), sink);
}

QString programToJson(const Program &program) {
    return gathered([&program](const TextSink &sink) { programToJson(program, sink); });
}

QString expressionToJson(const ExprNode *root) {
    Parts parts;
    parts.parts().emplace_back(root);
    return printed<Json>(std::move(parts));
}

QString statementToJson(const Stmt *statement) {
    Parts parts;
    parts.parts().emplace_back(statement);
    return printed<Json>(std::move(parts));
}

} // namespace ast
