// Parses the text of an expression.
//
// The parser is forgiving on purpose: it never fails. What it cannot read at all becomes a Raw
// node, a missing operand stays a null pointer, a missing ')' or ']' is passed over, and tokens
// left over after a complete expression are dropped. Syntax errors of a script are found by the
// lexer and the statement parser only.
//
//   or             = and { "||" and }
//   and            = equality { "&&" equality }
//   equality       = comparison { ( "==" | "!=" ) comparison }
//   comparison     = additive { ( "<" | ">" | "<=" | ">=" ) additive }
//   additive       = multiplicative { ( "+" | "-" ) multiplicative }
//   multiplicative = unary { ( "*" | "/" | "%" ) unary }
//   unary          = ( "++" | "--" | "!" | "-" | "+" ) unary | postfix
//   postfix        = primary { "[" or "]" | "." name | "(" [ or { "," or } ] ")" | "++" | "--" }
//   primary        = number | string | character | name | "(" or ")"
//
// Depth is data: parsing uses a fixed amount of the thread's stack.
#pragma once

#include "script/clause.h"
#include "script/node_pool.h"
#include "script/syntax_tree.h"
#include "script/token.h"

#include <QString>
#include <QVarLengthArray>

#include <memory>

namespace ast {

// Null only for blank text. A lexical error gives a Raw node of the trimmed text, with the
// message in `error`.
[[nodiscard]] std::shared_ptr<ExprNode> parseExpressionText(const QString &text,
                                                            QString *error = nullptr);

// The trimmed text, the position it has in the script, and its parse. A lexical error of the text
// reaches nobody.
[[nodiscard]] Expression makeExpression(const QString &text, qint32 line, qint32 column);

// The same for a stretch of tokens, with the same result as for its joined text.
[[nodiscard]] Expression makeExpression(const Clause &clause, qint32 line, qint32 column,
                                        NodePool &nodes);

// Reads one expression from the tokens of a clause, which outlive the parser. The nodes get the
// positions of the tokens, their texts, which the tokens lose, and their memory from the pool. Used once.
class ExprParser {
public:
    ExprParser(const Clause &clause, NodePool &nodes);

    ExprParser(const ExprParser &) = delete;
    ExprParser &operator=(const ExprParser &) = delete;

    // True if the current token has this kind; false at the end, whatever the kind.
    [[nodiscard]] bool check(qint32 kind) const { return next != end && next->kind == kind; }

    // `check`, and consumes the token if so.
    bool match(qint32 kind);

    // An expression from the current token on; null if none can start there.
    [[nodiscard]] std::shared_ptr<ExprNode> parseOr();

private:
    // What stands open around the operand that is being read.
    struct Frame {
        enum class Kind { Binary, Unary, Prefix, Paren, Index, Call };
        Kind kind;
        // Of a Binary: its level, 1 binds loosest.
        int level;
        // The node that waits for its operand; null for Paren.
        std::shared_ptr<ExprNode> node;
        // Of a Call: where its arguments begin among those that are collected.
        int firstArgument;
    };
    // What comes next: an operand with its prefixes, what may follow a primary, what may follow an
    // operand.
    enum class Step { Operand, Postfix, Operator, Done };

    qint32 currentKind() const { return next != end ? next->kind : qint32(Eof); }
    Token &advance() { return *next++; }
    std::shared_ptr<ExprNode> newNode(ExprKind kind);
    template<typename Position>
    std::shared_ptr<ExprNode> newNodeAt(ExprKind kind, const Position &position);
    void push(Frame::Kind kind, std::shared_ptr<ExprNode> node, int level = 0);
    std::shared_ptr<ExprNode> pop();

    Step readOperand();
    Step readPrimary();
    Step readPostfix();
    Step readMember();
    Step beginCall();
    Step readOperator();
    void closePrefixes();
    void closeBinaries(int level);
    Step closeBracket();
    Step closeArgument();

    Token *next;
    Token *end;
    // The operand read last.
    std::shared_ptr<ExprNode> value;
    QVarLengthArray<Frame, 16> frames;
    // Of all calls that stand open, the innermost call's last.
    QVarLengthArray<std::shared_ptr<ExprNode>, 16> arguments;
    NodePool &pool;
};

} // namespace ast
