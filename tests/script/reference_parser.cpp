#include "reference_parser.h"

#include "library/function_library.h"

#include <QMap>

namespace reference {

using namespace ast;

namespace {

void report(QString *error, const QString &message, int line, int column) {
    if (error != nullptr)
        *error = message + " (at " + QString::number(line) + ":" + QString::number(column) + ")";
}

void report(QString *error, const QString &message, const Token &at) {
    report(error, message, at.line, at.column);
}

const QMap<QString, int> &operators() {
    static const QMap<QString, int> kinds{
        {"==", EqualEqual}, {"!=", NotEqual}, {"<=", LessEqual}, {">=", GreaterEqual},
        {"&&", AndAnd},     {"||", OrOr},     {"++", PlusPlus},  {"--", MinusMinus},
        {"!", Not},         {"%", Percent},   {"(", LParen},     {")", RParen},
        {"*", Star},        {"+", Plus},      {",", Comma},      {"-", Minus},
        {".", Dot},         {"/", Slash},     {":", Colon},      {";", Semicolon},
        {"<", Less},        {"=", Assign},    {">", Greater},    {"[", LBracket},
        {"]", RBracket},    {"{", LBrace},    {"}", RBrace}};
    return kinds;
}

} // namespace

std::vector<Token> tokenize(const QString &source, QString *error) {
    std::vector<Token> tokens;
    int pos = 0;
    int line = 1;
    int column = 1;
    const auto atEnd = [&] { return pos >= source.size(); };
    const auto here = [&] { return source.at(pos); };
    const auto next = [&] { return pos + 1 < source.size() ? source.at(pos + 1) : QChar(); };
    const auto consume = [&] {
        const QChar character = source.at(pos++);
        if (character == '\n') {
            ++line;
            column = 1;
        } else {
            ++column;
        }
        return character;
    };
    for (;;) {
        while (!atEnd() && (here() == ' ' || here() == '\t' || here() == '\r'))
            consume();
        if (atEnd())
            break;
        const int startLine = line;
        const int startColumn = column;
        const auto append = [&](int kind, const QString &text) {
            tokens.push_back({kind, text, startLine, startColumn});
        };
        if (here() == '\n') {
            consume();
            append(Newline, "\n");
            continue;
        }
        if (here() == '/' && next() == '/') {
            while (!atEnd() && here() != '\n')
                consume();
            continue;
        }
        QString text;
        if (here().isLetter() || here() == '_') {
            while (!atEnd() && (here().isLetterOrNumber() || here() == '_'))
                text += consume();
            const auto keyword = FunctionLibrary::instance().tokenKindOf(text);
            append(keyword.first ? keyword.second : int(Identifier), text);
            continue;
        }
        if (here().isDigit()) {
            bool dot = false;
            while (!atEnd() && (here().isDigit() || (here() == '.' && !dot))) {
                dot = dot || here() == '.';
                text += consume();
            }
            append(dot ? FloatLiteral : IntLiteral, text);
            continue;
        }
        if (here() == '"') {
            text += consume();
            while (!atEnd()) {
                const QChar character = consume();
                text += character;
                if (character == '"')
                    break;
                if (character == '\\' && !atEnd())
                    text += consume();
            }
            append(StringLiteral, text);
            continue;
        }
        if (here() == '\'') {
            text += consume();
            while (!atEnd()) {
                const QChar character = consume();
                text += character;
                if (character == '\'')
                    break;
            }
            append(CharLiteral, text);
            continue;
        }
        if (here() == '#') {
            consume();
            append(Hash, "#");
            continue;
        }
        const QString two = QString(here()) + next();
        if (pos + 1 < source.size() && operators().contains(two)) {
            consume();
            consume();
            append(operators().value(two), two);
            continue;
        }
        const QString one(consume());
        if (!operators().contains(one)) {
            if (error != nullptr)
                *error = "Unknown character '" + one + "' at " + QString::number(startLine) + ":" +
                         QString::number(startColumn);
            return {};
        }
        append(operators().value(one), one);
    }
    tokens.push_back({Eof, "", line, column});
    return tokens;
}

namespace {

using Expr = std::shared_ptr<ExprNode>;

class ExprParser {
public:
    explicit ExprParser(const std::vector<Token> &list)
        : tokens(list) {}

    Expr parseOr() { return binary(0); }

private:
    const Token &current() const { return pos < tokens.size() ? tokens[pos] : tokens.back(); }
    bool check(int kind) const { return current().kind != Eof && current().kind == kind; }
    bool match(int kind) {
        if (!check(kind))
            return false;
        ++pos;
        return true;
    }
    const Token &previous() const { return tokens[pos - 1]; }

    static Expr node(ExprKind kind, int line = 1, int column = 1) {
        auto result = std::make_shared<ExprNode>();
        result->kind = kind;
        result->line = line;
        result->column = column;
        return result;
    }

    Expr binary(int level) {
        static const std::vector<std::vector<int>> levels{{OrOr},
                                                          {AndAnd},
                                                          {EqualEqual, NotEqual},
                                                          {Less, Greater, LessEqual, GreaterEqual},
                                                          {Plus, Minus},
                                                          {Star, Slash, Percent}};
        if (level == 6)
            return parseUnary();
        Expr tree = binary(level + 1);
        for (;;) {
            bool matched = false;
            for (const int kind : levels[size_t(level)])
                matched = matched || match(kind);
            if (!matched)
                return tree;
            Expr whole = node(ExprKind::Binary);
            whole->op = previous().text;
            whole->left = tree;
            whole->right = binary(level + 1);
            tree = whole;
        }
    }

    Expr parseUnary() {
        if (match(PlusPlus) || match(MinusMinus)) {
            Expr result = node(ExprKind::IncDec);
            result->isIncrement = previous().kind == PlusPlus;
            result->isPrefix = true;
            result->incDecOperand = parseUnary();
            result->line = previous().line;
            result->column = previous().column;
            return result;
        }
        if (match(Not) || match(Minus) || match(Plus)) {
            Expr result = node(ExprKind::Unary);
            result->op = previous().text;
            result->operand = parseUnary();
            return result;
        }
        return parsePostfix();
    }

    static QString simpleName(const Expr &tree) {
        return tree->kind == ExprKind::Identifier ? tree->identifierName : tree->rawText;
    }

    Expr parsePostfix() {
        Expr tree = parsePrimary();
        if (!tree)
            return nullptr;
        for (;;) {
            if (match(LBracket)) {
                Expr result = node(ExprKind::Index, tree->line, tree->column);
                result->indexBase = tree;
                result->indexValue = parseOr();
                match(RBracket);
                tree = result;
            } else if (match(Dot)) {
                if (!check(Identifier))
                    return tree;
                match(Identifier);
                Expr result = node(ExprKind::Member, tree->line, tree->column);
                result->memberName = previous().text;
                result->memberBase = simpleName(tree);
                if (tree->kind == ExprKind::Index && tree->indexBase &&
                    tree->indexBase->kind == ExprKind::Identifier) {
                    const bool raw = tree->indexValue && tree->indexValue->kind == ExprKind::Raw;
                    result->memberBase = tree->indexBase->identifierName + "[" +
                                         (raw ? tree->indexValue->rawText : QString()) + "]";
                }
                tree = result;
            } else if (match(LParen)) {
                Expr result = node(ExprKind::Call, tree->line, tree->column);
                result->callee = simpleName(tree);
                if (!check(RParen)) {
                    do {
                        result->args.push_back(parseOr());
                    } while (match(Comma));
                }
                match(RParen);
                tree = result;
            } else if (match(PlusPlus) || match(MinusMinus)) {
                Expr result = node(ExprKind::IncDec, tree->line, tree->column);
                result->isIncrement = previous().kind == PlusPlus;
                result->isPrefix = false;
                result->incDecOperand = tree;
                tree = result;
            } else {
                return tree;
            }
        }
    }

    Expr parsePrimary() {
        if (match(IntLiteral) || match(FloatLiteral) || match(StringLiteral) ||
            match(CharLiteral)) {
            const Token &token = previous();
            Expr result = node(ExprKind::Literal, token.line, token.column);
            result->literalText = token.text;
            result->literalIsString = token.kind == StringLiteral || token.kind == CharLiteral;
            return result;
        }
        if (match(Identifier)) {
            const Token &token = previous();
            if (token.text == "Pi") {
                Expr result = node(ExprKind::Literal, token.line, token.column);
                result->literalText = "3.1415926";
                return result;
            }
            Expr result = node(ExprKind::Identifier, token.line, token.column);
            result->identifierName = token.text;
            return result;
        }
        if (match(LParen)) {
            Expr inner = parseOr();
            match(RParen);
            return inner;
        }
        return nullptr;
    }

    std::vector<Token> tokens;
    size_t pos = 0;
};

Expr raw(const QString &text) {
    auto result = std::make_shared<ExprNode>();
    result->rawText = text;
    return result;
}

} // namespace

Expr parseExpressionText(const QString &text, QString *error) {
    if (text.trimmed().isEmpty())
        return nullptr;
    QString lexError;
    const auto tokens = tokenize(text, &lexError);
    if (!lexError.isEmpty()) {
        if (error != nullptr)
            *error = lexError;
        return raw(text.trimmed());
    }
    Expr result = ExprParser(tokens).parseOr();
    return result ? result : raw(text.trimmed());
}

Expression makeExpression(const QString &text, int line, int column) {
    Expression result;
    result.text = text.trimmed();
    result.line = line;
    result.column = column;
    QString ignored;
    result.root = parseExpressionText(result.text, &ignored);
    return result;
}

Parser::Parser(std::vector<Token> list)
    : tokens(std::move(list)) {
    if (tokens.empty())
        tokens.emplace_back();
}

const Token &Parser::peek(int offset) const {
    const size_t index = pos + size_t(offset);
    return index < tokens.size() ? tokens[index] : tokens.back();
}

bool Parser::atEnd() const {
    return peek().kind == Eof;
}

bool Parser::check(int kind) const {
    return !atEnd() && peek().kind == kind;
}

Token Parser::advance() {
    if (!atEnd())
        ++pos;
    return tokens[pos > 0 ? pos - 1 : 0];
}

bool Parser::match(int kind) {
    if (!check(kind))
        return false;
    advance();
    return true;
}

bool Parser::expect(int kind, const QString &message, QString *error) {
    if (match(kind))
        return true;
    report(error, message, peek());
    return false;
}

void Parser::skipNewlines() {
    while (check(Newline))
        advance();
}

QString Parser::collectText(const Stop &stop) {
    QString text;
    int parentheses = 0;
    int brackets = 0;
    int braces = 0;
    bool inString = false;
    QChar quote;
    while (!atEnd()) {
        if (parentheses == 0 && brackets == 0 && braces == 0 && !inString && stop(peek()))
            break;
        const QString token = peek().text;
        for (int i = 0; i < token.size(); ++i) {
            const QChar c = token.at(i);
            if (inString) {
                if (c == quote && (i == 0 || token.at(i - 1) != '\\'))
                    inString = false;
                continue;
            }
            if (c == '"' || c == '\'') {
                inString = true;
                quote = c;
            }
            if (c == '(')
                ++parentheses;
            if (c == '[')
                ++brackets;
            if (c == '{')
                ++braces;
            if (c == ')')
                --parentheses;
            if (c == ']')
                --brackets;
            if (c == '}')
                --braces;
        }
        if (!text.isEmpty())
            text += ' ';
        text += token;
        advance();
    }
    return text.trimmed();
}

namespace {

bool statementEnd(const Token &token) {
    return token.kind == Newline || token.kind == RBrace || token.kind == Semicolon;
}
std::function<bool(const Token &)> is(int kind) {
    return [kind](const Token &token) { return token.kind == kind; };
}
bool isType(int kind) {
    return kind == KwInt || kind == KwBool || kind == KwFloat || kind == KwString || kind == KwChar;
}

template<typename T>
std::shared_ptr<T> make(const Token &at) {
    auto result = std::make_shared<T>();
    result->line = at.line;
    result->column = at.column;
    return result;
}

} // namespace

std::shared_ptr<Stmt> Parser::parseStatement(QString *error) {
    skipNewlines();
    if (atEnd() || check(RBrace))
        return nullptr;
    if (check(Hash))
        return parseIncludeDirective(error);
    if (check(KwImport))
        return parseImportStatement(error);
    if (check(KwIf))
        return parseIf(error);
    if (check(KwFor))
        return parseFor(error);
    if (check(KwWhile))
        return parseWhile(error);
    if (check(KwSwitch))
        return parseSwitch(error);
    if (check(KwBreak)) {
        auto result = make<BreakStmt>(advance());
        match(Semicolon);
        return result;
    }
    if (check(KwContinue)) {
        auto result = make<ContinueStmt>(advance());
        match(Semicolon);
        return result;
    }
    if (check(KwReturn)) {
        auto result = make<ReturnStmt>(advance());
        if (!check(Semicolon) && !check(RBrace) && !check(Newline)) {
            result->hasValue = true;
            const Token at = peek();
            result->value = makeExpression(collectText(statementEnd), at.line, at.column);
        }
        match(Semicolon);
        return result;
    }
    if (check(KwElse)) {
        report(error, "dangling else", peek());
        return nullptr;
    }
    if (match(KwStatic)) {
        if (!isType(peek().kind)) {
            report(error, "expected type after static", peek());
            return nullptr;
        }
        const Token type = advance();
        return parseVarDecl(type, true, false, error);
    }
    if (match(KwGlobal)) {
        if (!isType(peek().kind)) {
            report(error, "expected type after global", peek());
            return nullptr;
        }
        const Token type = advance();
        return parseVarDecl(type, false, true, error);
    }
    if (isType(peek().kind)) {
        const Token type = advance();
        return parseVarDecl(type, false, false, error);
    }
    return parseSimpleStatement(error);
}

std::shared_ptr<Block> Parser::parseBlock(QString *error) {
    auto block = make<Block>(peek());
    if (!expect(LBrace, "expected '{'", error))
        return nullptr;
    skipNewlines();
    if (!check(RBrace)) {
        for (;;) {
            if (atEnd())
                break;
            auto statement = parseStatement(error);
            if (!statement)
                return nullptr;
            block->statements.push_back(statement);
            skipNewlines();
            if (check(RBrace))
                break;
        }
    }
    if (!expect(RBrace, "expected '}'", error))
        return nullptr;
    return block;
}

std::shared_ptr<Stmt> Parser::parseIf(QString *error) {
    auto result = make<IfStmt>(advance());
    if (!expect(LParen, "expected '(' after if", error))
        return nullptr;
    const Token at = peek();
    result->condition = makeExpression(collectText(is(RParen)), at.line, at.column);
    if (!expect(RParen, "expected ')' after if condition", error))
        return nullptr;
    skipNewlines();
    if (check(LBrace)) {
        result->thenBlock = parseBlock(error);
    } else {
        auto block = make<Block>(peek());
        auto statement = parseSimpleStatement(error);
        if (!statement)
            return nullptr;
        block->statements.push_back(statement);
        result->thenBlock = block;
    }
    skipNewlines();
    if (!check(KwElse))
        return result;
    for (;;) {
        advance();
        skipNewlines();
        if (!check(KwIf)) {
            if (check(LBrace)) {
                result->elseBlock = parseBlock(error);
            } else {
                auto block = std::make_shared<Block>();
                block->statements.push_back(parseSimpleStatement(error));
                result->elseBlock = block;
            }
            return result;
        }
        advance();
        if (!expect(LParen, "expected '(' after else if", error))
            return nullptr;
        ElseIfClause clause;
        const Token clauseAt = peek();
        clause.condition = makeExpression(collectText(is(RParen)), clauseAt.line, clauseAt.column);
        if (!expect(RParen, "expected ')' after else if condition", error))
            return nullptr;
        if (check(LBrace)) {
            clause.body = parseBlock(error);
        } else {
            clause.body = std::make_shared<Block>();
            clause.body->statements.push_back(parseSimpleStatement(error));
        }
        result->elseIfs.push_back(clause);
        skipNewlines();
        if (!check(KwElse))
            return result;
    }
}

std::shared_ptr<Stmt> Parser::parseWhile(QString *error) {
    auto result = make<WhileStmt>(advance());
    if (!expect(LParen, "expected '(' after while", error))
        return nullptr;
    const Token at = peek();
    result->condition = makeExpression(collectText(is(RParen)), at.line, at.column);
    if (!expect(RParen, "expected ')' after while condition", error))
        return nullptr;
    skipNewlines();
    if (check(LBrace)) {
        result->body = parseBlock(error);
    } else {
        result->body = std::make_shared<Block>();
        result->body->statements.push_back(parseSimpleStatement(error));
    }
    return result;
}

std::shared_ptr<Stmt> Parser::parseFor(QString *error) {
    auto result = make<ForStmt>(advance());
    if (!expect(LParen, "expected '(' after for", error))
        return nullptr;
    const Token initAt = peek();
    const QString initText = collectText(is(Semicolon));
    if (!expect(Semicolon, "expected ';' after for init", error))
        return nullptr;
    bool hasPrefix = false;
    for (const char *prefix : {"int", "bool", "float", "string", "char", "static", "global"})
        hasPrefix = hasPrefix || initText.startsWith(prefix, Qt::CaseSensitive);
    if (!hasPrefix) {
        Parser parser(tokenize(initText + ";"));
        result->init = parser.parseSimpleStatement(error);
    } else {
        QString lexError;
        const auto list = tokenize(initText, &lexError);
        if (!lexError.isEmpty()) {
            if (error != nullptr)
                *error = lexError;
            return nullptr;
        }
        Parser parser(list);
        const bool isStatic = parser.check(KwStatic);
        const bool isGlobal = parser.check(KwGlobal);
        if (isStatic || isGlobal)
            parser.advance();
        const Token type = parser.peek();
        parser.advance();
        result->init = parser.parseVarDecl(type, isStatic, isGlobal, error);
        if (!result->init && error != nullptr && error->contains("(at 1:"))
            report(error, "for init: expected variable name", initAt);
    }
    if (!result->init) {
        if (error != nullptr && error->isEmpty())
            report(error, "for init parse failed", initAt);
        return nullptr;
    }
    const Token conditionAt = peek();
    result->condition =
        makeExpression(collectText(is(Semicolon)), conditionAt.line, conditionAt.column);
    if (!expect(Semicolon, "expected ';' after for condition", error))
        return nullptr;
    const Token updateAt = peek();
    const QString updateText = collectText(is(RParen));
    result->update = parseSimpleText(updateText, updateAt.line, updateAt.column, error);
    if (!result->update) {
        if (error != nullptr && error->isEmpty())
            report(error, "for update parse failed", updateAt);
        return nullptr;
    }
    if (!expect(RParen, "expected ')' after for update", error))
        return nullptr;
    skipNewlines();
    if (check(LBrace)) {
        result->body = parseBlock(error);
    } else {
        result->body = std::make_shared<Block>();
        result->body->statements.push_back(parseSimpleStatement(error));
    }
    return result;
}

std::shared_ptr<Stmt> Parser::parseSwitch(QString *error) {
    auto result = make<SwitchStmt>(advance());
    if (!expect(LParen, "expected '(' after switch", error))
        return nullptr;
    const Token at = peek();
    result->value = makeExpression(collectText(is(RParen)), at.line, at.column);
    if (!expect(RParen, "expected ')' after switch expression", error))
        return nullptr;
    if (!expect(LBrace, "expected '{' after switch", error))
        return nullptr;
    skipNewlines();
    while (!check(RBrace) && !atEnd()) {
        skipNewlines();
        if (check(RBrace))
            break;
        SwitchCase arm;
        arm.line = peek().line;
        arm.column = peek().column;
        if (match(KwCase)) {
            const Token valueAt = peek();
            arm.value = makeExpression(collectText(is(Colon)), valueAt.line, valueAt.column);
            if (!expect(Colon, "expected ':' after case", error))
                return nullptr;
        } else if (match(KwDefault)) {
            arm.isDefault = true;
            if (!expect(Colon, "expected ':' after default", error))
                return nullptr;
        } else {
            report(error, "expected case or default in switch", peek());
            return nullptr;
        }
        arm.body = std::make_shared<Block>();
        arm.body->line = arm.line;
        arm.body->column = arm.column;
        for (;;) {
            if (check(RBrace) || check(KwCase) || check(KwDefault) || atEnd())
                break;
            skipNewlines();
            if (check(RBrace) || check(KwCase) || check(KwDefault))
                break;
            auto statement = parseStatement(error);
            if (!statement)
                return nullptr;
            arm.body->statements.push_back(statement);
            skipNewlines();
            if (check(RBrace))
                break;
        }
        result->cases.push_back(arm);
    }
    if (!expect(RBrace, "expected '}' after switch", error))
        return nullptr;
    return result;
}

std::shared_ptr<Stmt> Parser::parseVarDecl(const Token &type, bool isStatic, bool isGlobal,
                                           QString *error) {
    auto result = make<VarDeclStmt>(type);
    result->typeName = type.text;
    result->isStatic = isStatic;
    result->isGlobal = isGlobal;
    if (!check(Identifier)) {
        report(error, "expected variable name", peek());
        return nullptr;
    }
    result->name = advance().text;
    if (match(LBracket)) {
        result->isArray = true;
        const Token at = peek();
        result->arraySize = makeExpression(collectText(is(RBracket)), at.line, at.column);
        if (!expect(RBracket, "expected ']'", error))
            return nullptr;
    }
    if (match(Assign)) {
        result->hasInit = true;
        const Token at = peek();
        result->init = makeExpression(collectText(statementEnd), at.line, at.column);
    }
    match(Semicolon);
    return result;
}

std::shared_ptr<Stmt> Parser::parseSimpleStatement(QString *error) {
    const Token at = peek();
    const QString text = collectText(statementEnd);
    if (text.isEmpty()) {
        report(error, "empty statement", at);
        return nullptr;
    }
    auto result = parseSimpleText(text, at.line, at.column, error);
    if (!result)
        return nullptr;
    match(Semicolon);
    return result;
}

std::shared_ptr<Stmt> Parser::parseSimpleText(const QString &text, int line, int column,
                                              QString *error) {
    QString lexError;
    const auto list = tokenize(text, &lexError);
    if (!lexError.isEmpty()) {
        if (error != nullptr)
            *error = lexError;
        return nullptr;
    }
    bool plain = list.size() >= 2;
    for (const Token &token : list) {
        for (const int kind : {StringLiteral, CharLiteral, LParen, RParen, LBrace, RBrace, LBracket,
                               RBracket, Comma})
            plain = plain && token.kind != kind;
    }
    const auto incDec = [&](const QString &name, bool isIncrement, bool isPrefix) {
        auto result = std::make_shared<IncDecStmt>();
        result->line = line;
        result->column = column;
        result->name = name;
        result->isIncrement = isIncrement;
        result->isPrefix = isPrefix;
        return result;
    };
    if (plain) {
        if (list[0].kind == PlusPlus && list[1].kind == Identifier)
            return incDec(list[1].text, true, true);
        if (list[0].kind == MinusMinus && list[1].kind == Identifier)
            return incDec(list[1].text, false, true);
        for (size_t i = 0; i + 1 < list.size(); ++i) {
            if (list[i].kind != Identifier)
                continue;
            if (list[i + 1].kind == PlusPlus)
                return incDec(list[i].text, true, false);
            if (list[i + 1].kind == MinusMinus)
                return incDec(list[i].text, false, false);
        }
    }
    int depth = 0;
    for (size_t i = 0; i < list.size() && list[i].kind != Eof; ++i) {
        if (list[i].kind == LParen || list[i].kind == LBracket)
            ++depth;
        if (list[i].kind == RParen || list[i].kind == RBracket)
            depth = depth > 0 ? depth - 1 : 0;
        if (list[i].kind != Assign || depth > 0)
            continue;
        if (i == 0)
            break;
        const auto join = [&list](size_t from, size_t to) {
            QString joined;
            for (size_t k = from; k < to; ++k) {
                if (!joined.isEmpty())
                    joined += ' ';
                joined += list[k].text;
            }
            return joined.trimmed();
        };
        auto result = std::make_shared<AssignStmt>();
        result->line = line;
        result->column = column;
        result->target = join(0, i);
        result->value = makeExpression(join(i + 1, list.size() - 1), line, column);
        return result;
    }
    auto result = std::make_shared<ExprStmt>();
    result->line = line;
    result->column = column;
    result->expr = makeExpression(text, line, column);
    return result;
}

std::shared_ptr<Program> Parser::parseProgram(QString *error) {
    auto program = std::make_shared<Program>();
    skipNewlines();
    if (atEnd())
        return program;
    for (;;) {
        skipNewlines();
        if (atEnd())
            return program;
        if (check(KwFunction)) {
            auto function = parseFunctionDecl(error);
            if (!function)
                return nullptr;
            program->functions.push_back(function);
        } else {
            auto statement = parseStatement(error);
            if (!statement)
                return atEnd() ? program : nullptr;
            program->statements.push_back(statement);
            skipNewlines();
        }
        if (atEnd())
            return program;
    }
}

std::shared_ptr<FunctionDeclStmt> Parser::parseFunctionDecl(QString *error) {
    auto result = make<FunctionDeclStmt>(advance());
    if (!check(Identifier)) {
        report(error, "expected function name", peek());
        return nullptr;
    }
    result->name = advance().text;
    if (!expect(LParen, "expected '(' after function name", error))
        return nullptr;
    if (!check(RParen)) {
        for (;;) {
            QString type = "int";
            if (isType(peek().kind))
                type = advance().text;
            if (!check(Identifier)) {
                report(error, "expected parameter name", peek());
                return nullptr;
            }
            result->paramTypes.append(type);
            result->paramNames.append(advance().text);
            if (!match(Comma))
                break;
        }
    }
    if (!expect(RParen, "expected ')' after function params", error))
        return nullptr;
    skipNewlines();
    if (check(LBrace)) {
        result->body = parseBlock(error);
        if (!result->body)
            return nullptr;
    } else {
        auto block = make<Block>(peek());
        auto statement = parseSimpleStatement(error);
        if (!statement)
            return nullptr;
        block->statements.push_back(statement);
        result->body = block;
    }
    return result;
}

std::shared_ptr<Stmt> Parser::parseIncludeDirective(QString *error) {
    advance();
    if (!expect(KwInclude, "expected include", error))
        return nullptr;
    auto result = make<IncludeStmt>(peek());
    if (match(Less)) {
        result->path = collectText(is(Greater));
        expect(Greater, "expected '>' after include path", error);
        return result;
    }
    if (check(StringLiteral)) {
        result->path = advance().text;
        if (result->path.size() >= 2 && result->path.startsWith('"') && result->path.endsWith('"'))
            result->path = result->path.mid(1, result->path.size() - 2);
        return result;
    }
    report(error, "invalid include syntax", peek());
    return nullptr;
}

std::shared_ptr<Stmt> Parser::parseImportStatement(QString *error) {
    advance();
    auto result = make<ImportStmt>(peek());
    if (!check(StringLiteral)) {
        report(error, "import requires string path", peek());
        return nullptr;
    }
    result->path = advance().text;
    if (result->path.size() >= 2 && result->path.startsWith('"') && result->path.endsWith('"'))
        result->path = result->path.mid(1, result->path.size() - 2);
    if (!expect(Semicolon, "expected ';' after import", error))
        return nullptr;
    return result;
}

} // namespace reference
