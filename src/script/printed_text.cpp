// The text form.
#include "script/printed_form.h"
#include "script/printing.h"

namespace ast {
namespace {

struct Text {
    static void partsOf(const ExprNode *node, Parts &parts) {
        if (node == nullptr) {
            parts.text("null");
            return;
        }
        switch (node->kind) {
        case ExprKind::Literal:
            parts.text(node->literalText);
            return;
        case ExprKind::Identifier:
            parts.text(node->identifierName);
            return;
        case ExprKind::Unary:
            parts.text("(").text(node->op).text(" ").node(node->operand).text(")");
            return;
        case ExprKind::Binary:
            parts.text("(").text(node->op).text(" ").node(node->left).text(" ");
            parts.node(node->right).text(")");
            return;
        case ExprKind::Call:
            parts.text(node->callee).text("(");
            parts.list(node->args, ", ", [&parts](const auto &argument) { parts.node(argument); });
            parts.text(")");
            return;
        case ExprKind::Index:
            parts.node(node->indexBase).text("[").node(node->indexValue).text("]");
            return;
        case ExprKind::Member:
            parts.text(node->memberBase).text(".").text(node->memberName);
            return;
        case ExprKind::IncDec:
            incDec(*node, parts);
            return;
        case ExprKind::Raw:
            parts.text("<").text(node->rawText).text(">");
            return;
        }
    }

    static void incDec(const ExprNode &node, Parts &parts) {
        const char *op = node.isIncrement ? "++" : "--";
        if (node.isPrefix)
            parts.text("(").text(op).text(" ").node(node.incDecOperand).text(")");
        else
            parts.text("(").node(node.incDecOperand).text(" ").text(op).text(")");
    }

    static void partsOf(const Block *block, Parts &parts) {
        if (block == nullptr) {
            parts.text("null");
            return;
        }
        parts.text("{ ");
        parts.list(block->statements, "; ", [&parts](const auto &entry) { parts.node(entry); });
        parts.text(block->statements.empty() ? "}" : " }");
    }

    static void partsOf(const Stmt *statement, Parts &parts) {
        if (statement == nullptr)
            parts.text("null");
        else if (!nested(statement, parts) && !jump(statement, parts))
            simple(statement, parts);
    }

    static void simple(const Stmt *statement, Parts &parts) {
        if (const auto *declaration = dynamic_cast<const VarDeclStmt *>(statement))
            variable(*declaration, parts);
        else if (const auto *assign = dynamic_cast<const AssignStmt *>(statement))
            parts.text(assign->target).text(" = ").node(assign->value.root);
        else if (const auto *step = dynamic_cast<const IncDecStmt *>(statement))
            incDec(*step, parts);
        else if (const auto *expression = dynamic_cast<const ExprStmt *>(statement))
            parts.node(expression->expr.root);
    }

    static void incDec(const IncDecStmt &statement, Parts &parts) {
        const char *op = statement.isIncrement ? "++" : "--";
        parts.text(statement.isPrefix ? op : "").text(statement.name);
        parts.text(statement.isPrefix ? "" : op);
    }

    static void variable(const VarDeclStmt &declaration, Parts &parts) {
        parts.text(declaration.isStatic ? "static " : "");
        parts.text(declaration.isGlobal ? "global " : "");
        parts.text(declaration.typeName).text(" ").text(declaration.name);
        if (declaration.isArray)
            parts.text("[").node(declaration.arraySize.root).text("]");
        if (declaration.hasInit)
            parts.text(" = ").node(declaration.init.root);
    }

    static bool jump(const Stmt *statement, Parts &parts) {
        if (const auto *include = dynamic_cast<const IncludeStmt *>(statement))
            parts.text("#include ").text(quotedJson(include->path));
        else if (const auto *import = dynamic_cast<const ImportStmt *>(statement))
            parts.text("import ").text(quotedJson(import->path));
        else if (dynamic_cast<const BreakStmt *>(statement))
            parts.text("break");
        else if (dynamic_cast<const ContinueStmt *>(statement))
            parts.text("continue");
        else if (const auto *back = dynamic_cast<const ReturnStmt *>(statement))
            result(*back, parts);
        else
            return false;
        return true;
    }

    static void result(const ReturnStmt &statement, Parts &parts) {
        parts.text("return");
        if (statement.hasValue)
            parts.text(" ").node(statement.value.root);
    }

    static bool nested(const Stmt *statement, Parts &parts) {
        if (const auto *function = dynamic_cast<const FunctionDeclStmt *>(statement))
            declaration(*function, parts);
        else if (const auto *choice = dynamic_cast<const IfStmt *>(statement))
            branches(*choice, parts);
        else if (const auto *loop = dynamic_cast<const ForStmt *>(statement))
            forLoop(*loop, parts);
        else if (const auto *whileLoop = dynamic_cast<const WhileStmt *>(statement))
            parts.text("while (").node(whileLoop->condition.root).text(") ").node(whileLoop->body);
        else if (const auto *selection = dynamic_cast<const SwitchStmt *>(statement))
            arms(*selection, parts);
        else
            return false;
        return true;
    }

    static void declaration(const FunctionDeclStmt &function, Parts &parts) {
        parts.text("function ").text(function.name).text("(");
        for (int i = 0; i < function.paramNames.size(); ++i) {
            parts.text(i > 0 ? ", " : "").text(function.paramTypes.at(i)).text(" ");
            parts.text(function.paramNames.at(i));
        }
        parts.text(") ").node(function.body);
    }

    static void branches(const IfStmt &statement, Parts &parts) {
        parts.text("if (").node(statement.condition.root).text(") ").node(statement.thenBlock);
        for (const ElseIfClause &clause : statement.elseIfs)
            parts.text(" else if (").node(clause.condition.root).text(") ").node(clause.body);
        if (statement.elseBlock)
            parts.text(" else ").node(statement.elseBlock);
    }

    static void forLoop(const ForStmt &statement, Parts &parts) {
        parts.text("for (").node(statement.init).text("; ").node(statement.condition.root);
        parts.text("; ").node(statement.update).text(") ").node(statement.body);
    }

    static void arms(const SwitchStmt &statement, Parts &parts) {
        parts.text("switch (").node(statement.value.root).text(") { ");
        for (const SwitchCase &arm : statement.cases) {
            if (arm.isDefault)
                parts.text("default: ");
            else
                parts.text("case ").node(arm.value.root).text(": ");
            parts.node(arm.body).text(" ");
        }
        parts.text("}");
    }
};

} // namespace

QString tokenKindName(qint32 kind) {
    static const char *const names[] = {
        "Eof",          "Newline",    "Identifier", "IntLiteral", "FloatLiteral", "StringLiteral",
        "CharLiteral",  "KwIf",       "KwElse",     "KwFor",      "KwWhile",      "KwSwitch",
        "KwCase",       "KwDefault",  "KwBreak",    "KwContinue", "KwInt",        "KwBool",
        "KwFloat",      "KwString",   "KwChar",     "KwStatic",   "KwGlobal",     "KwInclude",
        "KwImport",     "KwFunction", "KwReturn",   "LParen",     "RParen",       "LBrace",
        "RBrace",       "LBracket",   "RBracket",   "Semicolon",  "Comma",        "Colon",
        "Dot",          "Plus",       "Minus",      "Star",       "Slash",        "Percent",
        "Assign",       "EqualEqual", "NotEqual",   "Less",       "Greater",      "LessEqual",
        "GreaterEqual", "AndAnd",     "OrOr",       "Not",        "PlusPlus",     "MinusMinus",
        "Hash"};
    return kind >= Eof && kind <= Hash ? QString::fromLatin1(names[kind]) : QString::number(kind);
}

void tokensToText(const std::vector<Token> &tokens, const TextSink &sink) {
    Pieces pieces(sink);
    for (const Token &token : tokens)
        pieces.add(QStringLiteral("%1:%2 %3 %4\n")
                       .arg(QString::number(token.line), QString::number(token.column),
                            tokenKindName(token.kind), quotedJson(token.text)));
    pieces.handOn();
}

QString tokensToText(const std::vector<Token> &tokens) {
    return gathered([&tokens](const TextSink &sink) { tokensToText(tokens, sink); });
}

void programToText(const Program &program, const TextSink &sink) {
    Parts parts;
    for (const auto &function : program.functions)
        parts.node(function).text("\n");
    for (const auto &statement : program.statements)
        parts.node(statement).text("\n");
    print<Text>(std::move(parts), sink);
}

QString programToText(const Program &program) {
    return gathered([&program](const TextSink &sink) { programToText(program, sink); });
}

QString expressionToText(const ExprNode *root) {
    Parts parts;
    parts.parts().emplace_back(root);
    return printed<Text>(std::move(parts));
}

QString statementToText(const Stmt *statement) {
    Parts parts;
    parts.parts().emplace_back(statement);
    return printed<Text>(std::move(parts));
}

} // namespace ast
