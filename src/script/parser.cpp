// The parser's primitives, and the top of a script: functions, "#include" and "import".
#include "script/parser.h"

#include "script/stop_tests.h"

#include <utility>

namespace ast {
namespace {

// What collectText remembers of the characters it has walked over.
struct BracketWalk {
    int parentheses = 0;
    int brackets = 0;
    int braces = 0;
    bool inString = false;
    QChar quote;

    // A count below zero does not stop either: a stray ')' runs on until something balances it.
    bool mayStop() const { return !parentheses && !brackets && !braces && !inString; }

    void stepOver(const Token &token) {
        if (token.kind == StringLiteral || token.kind == CharLiteral)
            walk(token.text);
        else if (token.kind >= LParen && token.kind <= RBracket && !inString)
            count(token.kind);
    }

    // Tokens of other kinds hold no quote, and a bracket is a token of its own.
    void count(qint32 kind) {
        parentheses += int(kind == LParen) - int(kind == RParen);
        brackets += int(kind == LBracket) - int(kind == RBracket);
        braces += int(kind == LBrace) - int(kind == RBrace);
    }

    // Looks at one character before a quote only, so a literal that ends in an escaped backslash
    // leaves the string open for the tokens behind it. That is meant.
    void walk(const QString &text) {
        for (int i = 0; i < text.size(); ++i) {
            const QChar character = text.at(i);
            if (inString) {
                if (character == quote && (i == 0 || text.at(i - 1) != QLatin1Char('\\')))
                    inString = false;
            } else if (character == QLatin1Char('"') || character == QLatin1Char('\'')) {
                inString = true;
                quote = character;
            } else {
                countCharacter(character.unicode());
            }
        }
    }

    void countCharacter(char16_t character) {
        parentheses += int(character == '(') - int(character == ')');
        brackets += int(character == '[') - int(character == ']');
        braces += int(character == '{') - int(character == '}');
    }
};

QString withoutQuotes(const QString &text) {
    const QLatin1Char quote('"');
    return text.size() > 1 && text.startsWith(quote) && text.endsWith(quote)
               ? text.mid(1, text.size() - 2)
               : text;
}

QString parameterType(qint32 kind) {
    switch (kind) {
    case KwBool:
        return QStringLiteral("bool");
    case KwFloat:
        return QStringLiteral("float");
    case KwString:
        return QStringLiteral("string");
    case KwChar:
        return QStringLiteral("char");
    default:
        return QStringLiteral("int");
    }
}

} // namespace

Parser::Parser(std::vector<Token> script)
    : tokens(std::move(script)) {
    if (tokens.empty() || tokens.back().kind != Eof)
        tokens.emplace_back();
}

Parser::Parser(std::vector<Token> clause, const Parser &whole)
    : Parser(std::move(clause)) {
    detail = whole.detail;
    pool = whole.pool;
}

Parser::Parser(TokenScan &scan, Detail wanted)
    : source(&scan)
    , detail(wanted) {
    readOn(0);
}

const Token &Parser::peek(qint32 offset) const {
    const qint64 index = qint64(pos) + offset;
    return index < qint64(tokens.size()) ? tokens[size_t(index)] : tokens.back();
}

const Token &Parser::advance() {
    if (!atEnd())
        ++pos;
    if (size_t(pos) == tokens.size())
        readOn(size_t(pos) - 1);
    return tokens[size_t(pos > 0 ? pos - 1 : 0)];
}

bool Parser::match(qint32 kind) {
    if (!check(kind))
        return false;
    advance();
    return true;
}

bool Parser::expect(qint32 kind, const QString &message, QString *error) {
    if (match(kind))
        return true;
    report(message, here(), error);
    return false;
}

Parser::Position Parser::here() const {
    return {peek().line, peek().column};
}

// Writes the message as `expect` does.
void Parser::report(const QString &message, Position at, QString *error) {
    if (error != nullptr)
        *error = QStringLiteral("%1 (at %2:%3)")
                     .arg(message, QString::number(at.line), QString::number(at.column));
}

bool Parser::isType(const Token &token) {
    return token.kind >= KwInt && token.kind <= KwChar;
}

void Parser::skipNewlines() {
    while (check(Newline))
        advance();
}

// Does not consume them by advance(): while a clause is used, its tokens stay where they are.
Clause Parser::collectTokens(StopTest stop) {
    BracketWalk walk;
    qint32 length = 0;
    for (;; ++length) {
        if (size_t(pos) + size_t(length) == tokens.size())
            readOn(size_t(pos));
        const Token &token = tokens[size_t(pos) + size_t(length)];
        if (token.kind == Eof || (walk.mayStop() && stop(token)))
            break;
        walk.stepOver(token);
    }
    Token *first = &tokens[size_t(pos)];
    pos += length;
    return {first, first + length};
}

Clause Parser::collectClause(StopTest stop) {
    const Clause raw = collectTokens(stop);
    return makeClause(raw.first, raw.last);
}

// Of an outline's statement nobody looks at more than whether it is empty.
Clause Parser::collectStatement(StopTest stop) {
    return detail == Detail::Whole ? collectClause(stop) : withoutNewlines(collectTokens(stop));
}

QString Parser::collectText(StopTest stop) {
    return joinedText(collectClause(stop), pool->texts);
}

std::shared_ptr<Program> Parser::parseProgram(QString *error) {
    auto program = pool->make<Program>();
    for (;;) {
        skipNewlines();
        if (atEnd())
            return program;
        if (check(KwFunction)) {
            auto function = parseFunctionDecl(error);
            if (!function)
                return nullptr;
            program->functions.push_back(std::move(function));
            continue;
        }
        auto statement = parseStatement(error);
        // A statement that fails at the very end of the file is dropped, and the rest stands.
        if (!statement)
            return atEnd() ? program : nullptr;
        program->statements.push_back(std::move(statement));
    }
}

std::shared_ptr<FunctionDeclStmt> Parser::parseFunctionDecl(QString *error) {
    auto function = pool->make<FunctionDeclStmt>();
    function->line = peek().line;
    function->column = peek().column;
    advance();
    if (!check(Identifier)) {
        report(QStringLiteral("expected function name"), here(), error);
        return nullptr;
    }
    function->name = advance().text;
    if (!expect(LParen, QStringLiteral("expected '(' after function name"), error))
        return nullptr;
    if (!check(RParen) && !parseParameters(*function, error))
        return nullptr;
    if (!expect(RParen, QStringLiteral("expected ')' after function params"), error))
        return nullptr;
    skipNewlines();
    if (check(LBrace)) {
        function->body = parseBlock(error);
        return function->body ? function : nullptr;
    }
    auto body = pool->make<Block>();
    body->line = peek().line;
    body->column = peek().column;
    auto statement = parseSimpleStatement(error);
    if (!statement)
        return nullptr;
    body->statements.push_back(std::move(statement));
    function->body = std::move(body);
    return function;
}

// Newlines are not skipped in the list, and a trailing comma fails.
bool Parser::parseParameters(FunctionDeclStmt &function, QString *error) {
    do {
        const QString type = parameterType(peek().kind);
        if (isType(peek()))
            advance();
        if (!check(Identifier)) {
            report(QStringLiteral("expected parameter name"), here(), error);
            return false;
        }
        function.paramTypes.append(type);
        function.paramNames.append(advance().text);
    } while (match(Comma));
    return true;
}

std::shared_ptr<Stmt> Parser::parseIncludeDirective(QString *error) {
    advance();
    if (!expect(KwInclude, QStringLiteral("expected include"), error))
        return nullptr;
    auto statement = pool->make<IncludeStmt>();
    statement->line = peek().line;
    statement->column = peek().column;
    if (match(Less)) {
        statement->path = collectText(isGreater);
        // A missing '>' leaves its message behind and the statement stands.
        (void)expect(Greater, QStringLiteral("expected '>' after include path"), error);
        return statement;
    }
    if (check(StringLiteral)) {
        statement->path = withoutQuotes(advance().text);
        return statement;
    }
    report(QStringLiteral("invalid include syntax"), here(), error);
    return nullptr;
}

std::shared_ptr<Stmt> Parser::parseImportStatement(QString *error) {
    advance();
    auto statement = pool->make<ImportStmt>();
    statement->line = peek().line;
    statement->column = peek().column;
    if (!check(StringLiteral)) {
        report(QStringLiteral("import requires string path"), here(), error);
        return nullptr;
    }
    statement->path = withoutQuotes(advance().text);
    if (!expect(Semicolon, QStringLiteral("expected ';' after import"), error))
        return nullptr;
    return statement;
}

} // namespace ast
