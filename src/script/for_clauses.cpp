// The init and update clauses of "for", which are statements inside a text.
#include "script/parser.h"
#include "script/stop_tests.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace ast {
namespace {

// A plain prefix of the text decides, without a word boundary: "internal = 0" counts as a
// declaration, and fails as one.
bool looksLikeDeclaration(const Clause &clause) {
    if (clause.first == clause.last)
        return false;
    // No prefix holds a blank, so the first token tells what the whole text would.
    const QString &text = clause.first->text;
    static const QLatin1String prefixes[] = {QLatin1String("int"),   QLatin1String("bool"),
                                             QLatin1String("float"), QLatin1String("string"),
                                             QLatin1String("char"),  QLatin1String("static"),
                                             QLatin1String("global")};
    return std::any_of(std::begin(prefixes), std::end(prefixes),
                       [&text](QLatin1String prefix) { return text.startsWith(prefix); });
}

} // namespace

// Reads the clause and the ';' behind it. What is reported inside it has positions of its own text.
std::shared_ptr<Stmt> Parser::parseForInit(QString *error) {
    const Position at = here();
    const Clause clause = collectClause(isSemicolon);
    const bool isDeclaration = looksLikeDeclaration(clause);
    std::vector<Token> ownTokens = tokensOf(clause, QString::fromLatin1(isDeclaration ? "" : ";"));
    if (!expect(Semicolon, QStringLiteral("expected ';' after for init"), error))
        return nullptr;
    std::shared_ptr<Stmt> init;
    Parser parser(std::move(ownTokens), *this);
    if (isDeclaration) {
        init = parser.parseInitDeclaration(error);
        if (init == nullptr && error != nullptr && error->contains(QLatin1String("(at 1:")))
            report(QStringLiteral("for init: expected variable name"), at, error);
    } else {
        // An empty clause meets "empty statement" here, at 1:1.
        init = parser.parseSimpleStatement(error);
    }
    if (init == nullptr && error != nullptr && error->isEmpty())
        report(QStringLiteral("for init parse failed"), at, error);
    return init;
}

// The token behind "static" or "global" is taken for the type, whatever it is.
std::shared_ptr<Stmt> Parser::parseInitDeclaration(QString *error) {
    const bool isStatic = check(KwStatic);
    const bool isGlobal = check(KwGlobal);
    if (isStatic || isGlobal)
        advance();
    const Token &type = peek();
    advance();
    return parseVarDecl(type, isStatic, isGlobal, error);
}

// An empty clause is an expression statement of empty text.
std::shared_ptr<Stmt> Parser::parseForUpdate() {
    const Position at = here();
    return parseSimpleClause(collectStatement(isCloseParen), at);
}

} // namespace ast
