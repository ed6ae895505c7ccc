// quorvanectl script tokens: what the lexer makes of a script.
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/commands/script_input.h"
#include "quorvanectl/commands/script_printing.h"
#include "script/lexer.h"
#include "script/printed_form.h"
#include "script/script_diagnostics.h"

namespace ctl {
namespace {

int run(const QCommandLineParser &parser, Console &console) {
    Script script;
    QString refusal;
    if (!readScript(parser, console, &script, &refusal))
        return refuse(console, refusal);
    return printScript(script, console, [&](const ast::TextSink &sink, QString *error) {
        QString lexicalError;
        const std::vector<ast::Token> tokens = ast::Lexer(script.text).tokenize(&lexicalError);
        if (!lexicalError.isEmpty()) {
            ast::ScriptDiagnostic fault;
            ast::extractPosition(lexicalError, &fault.line, &fault.column);
            fault.code = QLatin1String(ast::lexicalErrorCode);
            fault.message = ast::friendlyMessage(lexicalError);
            *error = faultLine(script, fault);
            return false;
        }
        script.asJson ? ast::tokensToJson(tokens, sink) : ast::tokensToText(tokens, sink);
        return true;
    });
}

} // namespace

Command scriptTokens() {
    return {QStringLiteral("script"),
            QStringLiteral("tokens"),
            QStringLiteral("FILE.ys"),
            QStringLiteral("Prints the tokens of a script, in JSON as [kind, text, line, column]."),
            QStringLiteral("quorvanectl script tokens main.ys --format json"),
            declareScript,
            run};
}

} // namespace ctl
