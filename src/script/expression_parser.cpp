#include "script/expression_parser.h"

#include "script/lexer.h"

#include <iterator>
#include <utility>

namespace ast {
namespace {

using ExprPointer = std::shared_ptr<ExprNode>;

// Of a binary operator, 1 binds loosest; 0 for any other token.
int binaryLevel(qint32 kind) {
    switch (kind) {
    case OrOr:
        return 1;
    case AndAnd:
        return 2;
    case EqualEqual:
    case NotEqual:
        return 3;
    case Less:
    case Greater:
    case LessEqual:
    case GreaterEqual:
        return 4;
    case Plus:
    case Minus:
        return 5;
    case Star:
    case Slash:
    case Percent:
        return 6;
    default:
        return 0;
    }
}

ExprPointer rawNode(const QString &text, NodePool &nodes) {
    ExprPointer node = nodes.make<ExprNode>(); // Raw is what a new node is
    node->rawText = text;
    return node;
}

// What a call or a member access keeps of the tree before it.
const QString &nameOf(const ExprNode &tree) {
    return tree.kind == ExprKind::Identifier ? tree.identifierName : tree.rawText;
}

// "a" for a, "a[]" for a[i]; the subscript's text is kept only where it could not be parsed.
QString memberBaseOf(const ExprNode &tree) {
    if (tree.kind != ExprKind::Index || !tree.indexBase ||
        tree.indexBase->kind != ExprKind::Identifier)
        return nameOf(tree);
    const bool isRaw = tree.indexValue && tree.indexValue->kind == ExprKind::Raw;
    return tree.indexBase->identifierName + QLatin1Char('[') +
           (isRaw ? tree.indexValue->rawText : QString()) + QLatin1Char(']');
}

// A tree of which only a text is kept makes room for the node that holds the text, at its own position.
void becomeAnother(ExprNode &tree, ExprKind kind) {
    if (tree.kind == ExprKind::Identifier) {
        tree.identifierName.clear();
    } else {
        ExprNode node;
        node.line = tree.line;
        node.column = tree.column;
        tree = std::move(node);
    }
    tree.kind = kind;
}

} // namespace

ExprPointer parseExpressionText(const QString &text, QString *error) {
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return nullptr;
    NodePool nodes;
    QString lexError;
    std::vector<Token> tokens = Lexer(text).tokenize(&lexError);
    if (!lexError.isEmpty()) {
        if (error != nullptr)
            *error = lexError;
        return rawNode(trimmed, nodes);
    }
    // Without Eof. No clause was made of these tokens: they stand where the text has them.
    Token *first = tokens.data();
    ExprPointer root = ExprParser({first, first + tokens.size() - 1}, nodes).parseOr();
    return root ? root : rawNode(trimmed, nodes);
}

Expression makeExpression(const QString &text, qint32 line, qint32 column) {
    const QString trimmed = text.trimmed();
    // The Raw node that a lexical error gives is all that is kept of it.
    QString ignored;
    return {trimmed, line, column, parseExpressionText(trimmed, &ignored)};
}

Expression makeExpression(const Clause &clause, qint32 line, qint32 column, NodePool &nodes) {
    QString text = joinedText(clause, nodes.texts);
    if (text.isEmpty())
        return {text, line, column, nullptr};
    ExprPointer root = ExprParser(clause, nodes).parseOr();
    if (!root)
        root = rawNode(text, nodes);
    return {std::move(text), line, column, std::move(root)};
}

ExprParser::ExprParser(const Clause &clause, NodePool &nodes)
    : next(clause.first)
    , end(clause.last)
    , pool(nodes) {}

bool ExprParser::match(qint32 kind) {
    if (!check(kind))
        return false;
    advance();
    return true;
}

ExprPointer ExprParser::newNode(ExprKind kind) {
    ExprPointer node = pool.make<ExprNode>();
    node->kind = kind;
    return node;
}

// Position is a token or another node.
template<typename Position>
ExprPointer ExprParser::newNodeAt(ExprKind kind, const Position &position) {
    ExprPointer node = newNode(kind);
    node->line = position.line;
    node->column = position.column;
    return node;
}

void ExprParser::push(Frame::Kind kind, ExprPointer node, int level) {
    frames.append(Frame{kind, level, std::move(node), arguments.size()});
}

ExprPointer ExprParser::pop() {
    ExprPointer node = std::move(frames.last().node);
    frames.removeLast();
    return node;
}

// The recursive rule, with what it would leave on the stack kept in frames.
ExprPointer ExprParser::parseOr() {
    Step step = Step::Operand;
    while (step != Step::Done) {
        switch (step) {
        case Step::Operand:
            step = readOperand();
            break;
        case Step::Postfix:
            step = readPostfix();
            break;
        default:
            step = readOperator();
            break;
        }
    }
    return std::move(value);
}

ExprParser::Step ExprParser::readOperand() {
    switch (currentKind()) {
    case PlusPlus:
    case MinusMinus: {
        ExprPointer node = newNode(ExprKind::IncDec);
        node->isIncrement = advance().kind == PlusPlus;
        push(Frame::Kind::Prefix, std::move(node));
        return Step::Operand;
    }
    case Not:
    case Minus:
    case Plus: {
        ExprPointer node = newNode(ExprKind::Unary);
        node->op = std::move(advance().text);
        push(Frame::Kind::Unary, std::move(node));
        return Step::Operand;
    }
    case LParen:
        advance();
        push(Frame::Kind::Paren, nullptr);
        return Step::Operand;
    default:
        return readPrimary();
    }
}

ExprParser::Step ExprParser::readPrimary() {
    switch (currentKind()) {
    case IntLiteral:
    case FloatLiteral:
    case StringLiteral:
    case CharLiteral: {
        Token &token = advance();
        value = newNodeAt(ExprKind::Literal, token);
        value->literalText = std::move(token.text);
        value->literalIsString = token.kind == StringLiteral || token.kind == CharLiteral;
        return Step::Postfix;
    }
    case Identifier: {
        Token &token = advance();
        // The one constant that is folded.
        const bool isPi = token.text == QLatin1String("Pi");
        value = newNodeAt(isPi ? ExprKind::Literal : ExprKind::Identifier, token);
        if (isPi)
            value->literalText = QStringLiteral("3.1415926");
        else
            value->identifierName = std::move(token.text);
        return Step::Postfix;
    }
    default:
        value.reset();
        return Step::Operator;
    }
}

ExprParser::Step ExprParser::readPostfix() {
    switch (currentKind()) {
    case LBracket: {
        advance();
        ExprPointer node = newNodeAt(ExprKind::Index, *value);
        node->indexBase = std::move(value);
        push(Frame::Kind::Index, std::move(node));
        return Step::Operand;
    }
    case Dot:
        advance();
        return readMember();
    case LParen:
        advance();
        return beginCall();
    case PlusPlus:
    case MinusMinus: {
        ExprPointer node = newNodeAt(ExprKind::IncDec, *value);
        node->isIncrement = advance().kind == PlusPlus;
        node->isPrefix = false;
        node->incDecOperand = std::move(value);
        value = std::move(node);
        return Step::Postfix;
    }
    default:
        return Step::Operator;
    }
}

// A member access keeps the text of the tree before it and drops the tree. A dot without a name
// stays consumed and ends the operand.
ExprParser::Step ExprParser::readMember() {
    if (!check(Identifier))
        return Step::Operator;
    const QString base = memberBaseOf(*value);
    becomeAnother(*value, ExprKind::Member);
    value->memberName = std::move(advance().text);
    value->memberBase = base;
    return Step::Postfix;
}

ExprParser::Step ExprParser::beginCall() {
    const QString callee = nameOf(*value);
    becomeAnother(*value, ExprKind::Call);
    value->callee = callee;
    if (match(RParen))
        return Step::Postfix;
    push(Frame::Kind::Call, std::move(value));
    return Step::Operand;
}

// An operand is complete: a binary operator goes on with it, anything else closes what it stands
// in.
ExprParser::Step ExprParser::readOperator() {
    closePrefixes();
    const int level = binaryLevel(currentKind());
    closeBinaries(level);
    if (level > 0) {
        ExprPointer node = newNode(ExprKind::Binary);
        node->left = std::move(value);
        node->op = std::move(advance().text);
        push(Frame::Kind::Binary, std::move(node), level);
        return Step::Operand;
    }
    if (frames.isEmpty())
        return Step::Done;
    return frames.last().kind == Frame::Kind::Call ? closeArgument() : closeBracket();
}

void ExprParser::closePrefixes() {
    while (!frames.isEmpty()) {
        const Frame::Kind kind = frames.last().kind;
        if (kind != Frame::Kind::Unary && kind != Frame::Kind::Prefix)
            return;
        ExprPointer node = pop();
        if (kind == Frame::Kind::Unary) {
            node->operand = std::move(value);
        } else {
            node->incDecOperand = std::move(value);
            // Meant: the last token of the operand and not the operator.
            node->line = next[-1].line;
            node->column = next[-1].column;
        }
        value = std::move(node);
    }
}

// Operators of one level nest on the left; 0 closes all.
void ExprParser::closeBinaries(int level) {
    while (!frames.isEmpty() && frames.last().kind == Frame::Kind::Binary &&
           frames.last().level >= level) {
        ExprPointer node = pop();
        node->right = std::move(value);
        value = std::move(node);
    }
}

ExprParser::Step ExprParser::closeBracket() {
    const bool isIndex = frames.last().kind == Frame::Kind::Index;
    ExprPointer node = pop();
    // A missing bracket is passed over.
    (void)match(isIndex ? RBracket : RParen);
    if (isIndex) {
        node->indexValue = std::move(value);
        value = std::move(node);
    }
    // An empty pair of parentheses is null, and nothing can follow it.
    return value ? Step::Postfix : Step::Operator;
}

ExprParser::Step ExprParser::closeArgument() {
    arguments.append(std::move(value));
    if (match(Comma))
        return Step::Operand;
    // A missing parenthesis is passed over.
    (void)match(RParen);
    const int first = frames.last().firstArgument;
    value = pop();
    value->args.assign(std::make_move_iterator(arguments.begin() + first),
                       std::make_move_iterator(arguments.end()));
    arguments.resize(first);
    return Step::Postfix;
}

} // namespace ast
