// The text of one expression.

#include "script/expression_parser.h"
#include "script_language.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    fuzz::loadScriptLanguage();
    const QString text = QString::fromUtf8(fuzz::bytesOf(data, size));
    QString error;
    const std::shared_ptr<ast::ExprNode> root = ast::parseExpressionText(text, &error);
    fuzz::demand((root == nullptr) == text.trimmed().isEmpty());
    fuzz::demand(error.isEmpty() || root->kind == ast::ExprKind::Raw);

    // White space at the ends may hold what the lexer refuses: a form feed.
    const ast::Expression expression = ast::makeExpression(text, 3, 14);
    const std::shared_ptr<ast::ExprNode> trimmed = ast::parseExpressionText(text.trimmed());
    fuzz::demand(expression.text == text.trimmed());
    fuzz::demand((expression.root == nullptr) == (trimmed == nullptr));
    fuzz::demand(trimmed == nullptr || expression.root->kind == trimmed->kind);
    return 0;
}
