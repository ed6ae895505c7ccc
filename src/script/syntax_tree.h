// The syntax tree of a script: plain records, held by shared pointers, with no behaviour beyond
// their destruction. Any shared pointer in the tree may be null.
//
// Freeing a tree uses a fixed amount of stack, however deep it nests. Records may be read from any
// thread; a tree is freed on the thread that drops its last pointer.
#pragma once

#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace ast {

enum class ExprKind {
    Literal = 0,    // number, string, character, or the constant Pi
    Identifier = 1, // a name
    Unary = 2,      // '!', '-' or '+' before an operand
    Binary = 3,     // an operator between two operands
    Call = 4,       // a call
    Index = 5,      // a subscript
    Member = 6,     // a dot access
    IncDec = 7,     // "++" or "--" inside an expression
    Raw = 8,        // text that could not be parsed
};

// One record for all expressions: each kind uses its own fields and leaves the rest alone.
struct ExprNode {
    ExprNode() = default;
    ExprNode(const ExprNode &) = default;
    ExprNode(ExprNode &&) = default;
    ExprNode &operator=(const ExprNode &) = default;
    ExprNode &operator=(ExprNode &&) = default;
    ~ExprNode();

    ExprKind kind = ExprKind::Raw;
    // Under an Expression these count from the start of Expression::text.
    qint32 line = 1;
    qint32 column = 1;
    // Raw.
    QString rawText;
    // Literal: the token's text, quotes included; true for strings and characters alike.
    QString literalText;
    bool literalIsString = false;
    // Identifier.
    QString identifierName;
    // Unary and Binary.
    QString op;
    std::shared_ptr<ExprNode> operand;
    std::shared_ptr<ExprNode> left;
    std::shared_ptr<ExprNode> right;
    // Call: the called name as text, not a node. An argument may be null.
    QString callee;
    std::vector<std::shared_ptr<ExprNode>> args;
    // Index.
    std::shared_ptr<ExprNode> indexBase;
    std::shared_ptr<ExprNode> indexValue;
    // Member: what stands before the dot as text, not a node.
    QString memberBase;
    QString memberName;
    // IncDec.
    std::shared_ptr<ExprNode> incDecOperand;
    bool isIncrement = true;
    bool isPrefix = true;
};

// What a statement holds in place of a bare node: the source text beside its parse.
struct Expression {
    // Trimmed, tokens joined by single blanks.
    QString text;
    // Position in the script of the first token of the text.
    qint32 line = 1;
    qint32 column = 1;
    // Null if the text is empty.
    std::shared_ptr<ExprNode> root;
};

// The one polymorphic base.
struct Stmt {
    Stmt() = default;
    Stmt(const Stmt &) = default;
    Stmt(Stmt &&) = default;
    Stmt &operator=(const Stmt &) = default;
    Stmt &operator=(Stmt &&) = default;
    virtual ~Stmt();

    qint32 line = 1;
    qint32 column = 1;
};

struct Block {
    Block() = default;
    Block(const Block &) = default;
    Block(Block &&) = default;
    Block &operator=(const Block &) = default;
    Block &operator=(Block &&) = default;
    ~Block();

    // In source order. A body without braces may hold a null entry.
    std::vector<std::shared_ptr<Stmt>> statements;
    qint32 line = 1;
    qint32 column = 1;
};

struct IncludeStmt : Stmt {
    QString path;
};

struct ImportStmt : Stmt {
    QString path;
};

struct FunctionDeclStmt : Stmt {
    QString name;
    // Of the same length.
    QStringList paramTypes;
    QStringList paramNames;
    std::shared_ptr<Block> body;
};

struct ReturnStmt : Stmt {
    bool hasValue = false;
    Expression value;
};

// Its position is that of the type, not of "static" or "global".
struct VarDeclStmt : Stmt {
    QString typeName;
    bool isStatic = false;
    bool isGlobal = false;
    QString name;
    Expression arraySize;
    bool isArray = false;
    bool hasInit = false;
    Expression init;
};

struct AssignStmt : Stmt {
    // The tokens left of the '=', joined by single blanks.
    QString target;
    Expression value;
};

struct IncDecStmt : Stmt {
    QString name;
    bool isIncrement = true;
    bool isPrefix = true;
};

struct ExprStmt : Stmt {
    Expression expr;
};

struct ElseIfClause {
    Expression condition;
    std::shared_ptr<Block> body;
};

struct IfStmt : Stmt {
    Expression condition;
    std::shared_ptr<Block> thenBlock;
    std::vector<ElseIfClause> elseIfs;
    // Null if there is no else.
    std::shared_ptr<Block> elseBlock;
};

// `init` and the nodes below it have the positions of the init clause's own text.
struct ForStmt : Stmt {
    std::shared_ptr<Stmt> init;
    Expression condition;
    std::shared_ptr<Stmt> update;
    std::shared_ptr<Block> body;
};

struct WhileStmt : Stmt {
    Expression condition;
    std::shared_ptr<Block> body;
};

struct SwitchCase {
    bool isDefault = false;
    // Empty for a "default" arm.
    Expression value;
    std::shared_ptr<Block> body;
    // Of the "case" or "default" keyword; the block has the same.
    qint32 line = 1;
    qint32 column = 1;
};

struct SwitchStmt : Stmt {
    Expression value;
    std::vector<SwitchCase> cases;
};

struct BreakStmt : Stmt {};

struct ContinueStmt : Stmt {};

// The root. The order between a function and another statement is not kept.
struct Program {
    std::vector<std::shared_ptr<FunctionDeclStmt>> functions;
    std::vector<std::shared_ptr<Stmt>> statements;
    // Stays empty: the parser does not know the file.
    QString sourcePath;
};

} // namespace ast
