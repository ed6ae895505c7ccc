// Parses a script: recursive descent over its tokens, with one unusual trait. Clauses (a condition,
// an initialiser, a whole simple statement) are cut out of the tokens as texts, by `collectText`,
// which watches brackets and quotes alone, and are then read as texts of their own.
//
//   program   = { function | statement }
//   function  = "function" name "(" [ param { "," param } ] ")" body
//   param     = [ type ] name                                  without a type it is an int
//   statement = "#" "include" ( "<" text ">" | string )
//             | "import" string ";"
//             | "if" "(" text ")" body { "else" "if" "(" text ")" body } [ "else" body ]
//             | "for" "(" init ";" text ";" text ")" body
//             | "while" "(" text ")" body
//             | "switch" "(" text ")" "{" { arm } "}"
//             | ( "break" | "continue" ) [ ";" ]
//             | "return" [ text ] [ ";" ]
//             | [ "static" | "global" ] type name [ "[" text "]" ] [ "=" text ] [ ";" ]
//             | simple
//   arm       = ( "case" text | "default" ) ":" { statement }
//   simple    = ( "++" name | "--" name | name "++" | name "--" | text "=" text | text ) [ ";" ]
//   body      = "{" { statement } "}" | simple
//   type      = "int" | "bool" | "float" | "string" | "char"
//
// A body without braces is always a simple statement: "if (a) return 1;" holds an expression whose
// text could not be parsed. Newlines end simple statements and declarations.
//
// Failure: an operation returns null, with a message and its position in `error`, and parsing stops
// there, without recovery. The one exception: an `if`, `for` or `while` does not look at a failed
// block in braces. It keeps a null body and goes on at the offending token, and the message stays
// behind in `error`; a later message overwrites it, a later success does not clear it.
//
// Depth is data: parsing uses a fixed amount of the thread's stack, and time in proportion to the
// number of tokens.
#pragma once

#include "script/clause.h"
#include "script/node_pool.h"
#include "script/syntax_tree.h"
#include "script/token.h"

#include <QString>

#include <memory>
#include <vector>

namespace ast {

class TokenScan;
struct ParsedText;

// What a tree is read for. In an outline each Expression keeps its position alone, with no text and no
// root, and a simple statement is an ExprStmt whatever it says: no message depends on either.
enum class Detail { Whole, Outline };

// Used once. Any thread; FunctionLibrary must have been loaded.
class Parser {
public:
    // The tokens of one run of a lexer. A vector without Eof at its end, such as an empty one, is read
    // as if it stood there.
    explicit Parser(std::vector<Token> script);

    Parser(const Parser &) = delete;
    Parser &operator=(const Parser &) = delete;

    // The whole script. The result and `error` are separate facts: a program may come back with a
    // message in `error` (a failure that ends exactly at the end of the file drops its statement
    // only), and null may come back with `error` empty (a stray '}').
    [[nodiscard]] std::shared_ptr<Program> parseProgram(QString *error = nullptr);

    // The current token is "function", '#', "import".
    [[nodiscard]] std::shared_ptr<FunctionDeclStmt> parseFunctionDecl(QString *error = nullptr);
    [[nodiscard]] std::shared_ptr<Stmt> parseIncludeDirective(QString *error = nullptr);
    [[nodiscard]] std::shared_ptr<Stmt> parseImportStatement(QString *error = nullptr);

    // Null without a message at Eof and at '}'.
    [[nodiscard]] std::shared_ptr<Stmt> parseStatement(QString *error = nullptr);
    [[nodiscard]] std::shared_ptr<Block> parseBlock(QString *error = nullptr);
    [[nodiscard]] std::shared_ptr<Stmt> parseSimpleStatement(QString *error = nullptr);

    // Reads `text`, which stands at this position of the script, as an increment, a decrement, an
    // assignment or an expression. Fails on a lexical error only.
    [[nodiscard]] std::shared_ptr<Stmt> parseSimpleText(const QString &text, qint32 line,
                                                        qint32 column, QString *error = nullptr);

    // The type token is consumed already.
    [[nodiscard]] std::shared_ptr<Stmt> parseVarDecl(const Token &type, bool isStatic,
                                                     bool isGlobal, QString *error = nullptr);

    // The current token is the keyword.
    [[nodiscard]] std::shared_ptr<Stmt> parseIf(QString *error = nullptr);
    [[nodiscard]] std::shared_ptr<Stmt> parseFor(QString *error = nullptr);
    [[nodiscard]] std::shared_ptr<Stmt> parseWhile(QString *error = nullptr);
    [[nodiscard]] std::shared_ptr<Stmt> parseSwitch(QString *error = nullptr);

    // The current token, or one `offset` tokens on; past the end it is the last token, Eof.
    [[nodiscard]] const Token &peek(qint32 offset = 0) const;
    [[nodiscard]] bool atEnd() const { return tokens[size_t(pos)].kind == Eof; }
    // False at Eof, whatever the kind.
    [[nodiscard]] bool check(qint32 kind) const {
        const qint32 current = tokens[size_t(pos)].kind;
        return current != Eof && current == kind;
    }
    // Moves to the next token and returns the one before it. Stays at Eof.
    const Token &advance();
    bool match(qint32 kind);
    // `match`; on failure "%1 (at %2:%3)" with `message` and the current position goes to `error`.
    bool expect(qint32 kind, const QString &message, QString *error = nullptr);
    void skipNewlines();

    // The tokens up to the first one that `stop` accepts outside of all brackets and quotes, joined
    // by single blanks and trimmed. The stopping token is not consumed.
    using StopTest = bool (*)(const Token &);
    [[nodiscard]] QString collectText(StopTest stop);

private:
    // What stands open around the statement or block that is being read.
    struct Frame {
        enum class Kind { Block, Then, ElseIf, Else, ForBody, WhileBody, Arm };
        Kind kind;
        // The statement that waits for its body or its arms; null for Block.
        std::shared_ptr<Stmt> statement;
        // Of a Block: the block that is being filled, and where its statements begin among those
        // that are collected.
        std::shared_ptr<Block> block;
        std::size_t firstStatement = 0;
    };
    // What comes next: a statement or a block to read, or a result to hand to what it stands in.
    enum class Step { Statement, Block, Finished };

    // A place in the script.
    struct Position {
        qint32 line;
        qint32 column;
    };

    friend ParsedText parseText(const QString &text, Detail detail);

    // Of a whole script, read as the parser comes to it. peek() then sees no token but the current one.
    Parser(TokenScan &scan, Detail detail);
    // Of a clause, as a part of the tree that `whole` reads.
    Parser(std::vector<Token> clause, const Parser &whole);

    // text_parser.cpp: drops the tokens before `from` and reads more behind the last one, which is not Eof.
    void readOn(std::size_t from);

    // parser.cpp: the primitives, and the top of a script.
    Position here() const;
    static void report(const QString &message, Position at, QString *error);
    static bool isType(const Token &token);
    Clause collectTokens(StopTest stop);
    Clause collectClause(StopTest stop);
    Clause collectStatement(StopTest stop);
    bool parseParameters(FunctionDeclStmt &function, QString *error);

    // simple_statements.cpp: what holds no other statement.
    Expression collectExpression(StopTest stop);
    std::shared_ptr<Stmt> parseSimpleClause(const Clause &clause, Position at);
    std::shared_ptr<Stmt> parseStoredDeclaration(QString *error);
    std::shared_ptr<Stmt> parseReturn();
    template<typename Statement>
    std::shared_ptr<Stmt> parseJump();

    // for_clauses.cpp: the statements inside the parentheses of "for".
    std::shared_ptr<Stmt> parseForInit(QString *error);
    std::shared_ptr<Stmt> parseInitDeclaration(QString *error);
    std::shared_ptr<Stmt> parseForUpdate();

    // nested_statements.cpp: what holds others. First the steps, then a step of each statement.
    void run(Step step, QString *error);
    std::shared_ptr<Stmt> runStatement(Step step, QString *error);
    Step finish(std::shared_ptr<Stmt> statement);
    Step fail();
    Step beginStatement(QString *error);
    Step beginBlock(QString *error);
    Step closeBlock(QString *error);
    Step resume(QString *error);
    Step resumeBlock(QString *error);
    Step resumeArm(QString *error);
    Step enterBody(Frame::Kind kind, std::shared_ptr<Stmt> statement);
    std::shared_ptr<Block> bareBody(QString *error);
    bool parseCondition(const QString &openMessage, const QString &closeMessage,
                        Expression &condition, QString *error);
    Step beginIf(QString *error);
    Step continueIf(const std::shared_ptr<IfStmt> &statement, QString *error);
    Step beginElse(const std::shared_ptr<IfStmt> &statement, QString *error);
    Step beginFor(QString *error);
    Step beginWhile(QString *error);
    Step beginSwitch(QString *error);
    Step readArms(QString *error);
    bool readArmLabel(SwitchStmt &statement, QString *error);
    bool startsArmStatement();

    std::vector<Token> tokens;
    qint32 pos = 0;
    std::vector<Frame> frames;
    // Of all blocks that stand open, the innermost block's last.
    std::vector<std::shared_ptr<Stmt>> collected;
    // The results of the step that finished last.
    std::shared_ptr<Stmt> readStatement;
    std::shared_ptr<Block> readBlock;
    // Null: all tokens are at hand.
    TokenScan *source = nullptr;
    bool metUnknown = false;
    Detail detail = Detail::Whole;
    NodePool ownPool;
    NodePool *pool = &ownPool;
};

} // namespace ast
