// quorvanectl script tree: what the parser makes of a script.
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/commands/script_input.h"
#include "quorvanectl/commands/script_printing.h"
#include "script/printed_form.h"
#include "script/script_diagnostics.h"

#include <memory>

namespace ctl {
namespace {

int run(const QCommandLineParser &parser, Console &console) {
    Script script;
    QString refusal;
    if (!readScript(parser, console, &script, &refusal))
        return refuse(console, refusal);
    return printScript(script, console, [&](const ast::TextSink &sink, QString *error) {
        ast::ScriptCheckContext context = ast::makeCheckContext(script.text);
        std::shared_ptr<ast::Program> program;
        if (!ast::checkScript(context, &program)) {
            *error = faultLine(script, context.result.diagnostics.front());
            return false;
        }
        script.asJson ? ast::programToJson(*program, sink) : ast::programToText(*program, sink);
        return true;
    });
}

} // namespace

Command scriptTree() {
    return {
        QStringLiteral("script"),
        QStringLiteral("tree"),
        QStringLiteral("FILE.ys"),
        QStringLiteral("Prints the syntax tree of a script, in JSON with every field of a node."),
        QStringLiteral("quorvanectl script tree main.ys --format json"),
        declareScript,
        run};
}

} // namespace ctl
