// The text of a script, through lexer, parser and diagnostics.

#include "script/lexer.h"
#include "script/script_diagnostics.h"
#include "script_language.h"

#include <QStringList>

namespace {

// Token texts are source spellings: lexing them joined by blanks gives the same kinds again.
void relex(const std::vector<ast::Token> &tokens) {
    QStringList texts;
    for (const ast::Token &token : tokens)
        texts += token.text;
    QString error;
    const std::vector<ast::Token> again = ast::Lexer(texts.join(QLatin1Char(' '))).tokenize(&error);
    fuzz::demand(error.isEmpty() && again.size() == tokens.size());
    for (std::size_t i = 0; i < tokens.size(); ++i)
        fuzz::demand(again[i].kind == tokens[i].kind);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    fuzz::loadScriptLanguage();
    const QString text = QString::fromUtf8(fuzz::bytesOf(data, size));
    QString error;
    const std::vector<ast::Token> tokens = ast::Lexer(text).tokenize(&error);
    fuzz::demand(tokens.empty() != error.isEmpty());
    if (!tokens.empty())
        relex(tokens);

    ast::ScriptCheckContext context = ast::makeCheckContext(text);
    std::shared_ptr<ast::Program> program;
    const bool passed = ast::checkScript(context, &program);
    fuzz::demand(passed == (program != nullptr));
    fuzz::demand(passed == context.result.diagnostics.empty());
    for (const ast::ScriptDiagnostic &finding : context.result.diagnostics) {
        fuzz::demand(finding.line >= 1 && finding.line <= context.lines.size());
        fuzz::demand(finding.column >= 1 && finding.endColumn >= 0);
        fuzz::demand(!ast::diagnosticText(finding).isEmpty());
    }
    return 0;
}
