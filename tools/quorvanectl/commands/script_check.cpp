// quorvanectl script: the front end of the script language, file by file.
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/project/script_report.h"
#include "quorvanectl/shell/installation.h"
#include "quorvanectl/shell/json_output.h"
#include "quorvanectl/shell/progress.h"
#include "script/lexer.h"
#include "script/printed_form.h"
#include "update/files/memory_guard.h"

#include <QJsonDocument>

#include <functional>
#include <memory>

namespace ctl {
namespace {

QStringList formats() {
    return {QStringLiteral("text"), QStringLiteral("json")};
}

void declareScript(QCommandLineParser &parser) {
    declareLibrary(parser);
    declareFormat(parser, formats());
}

// What all commands of this family begin with: a script's text, with its library loaded.
struct Script {
    QString path;
    QString text;
    bool asJson = false;
};

bool readScript(const QCommandLineParser &parser, Script *script, QString *error) {
    script->path = parser.positionalArguments().constFirst();
    const QString format = chosenFormat(parser, formats(), error);
    if (format.isEmpty() || !loadLibrary(parser, error))
        return false;
    script->asJson = format == QLatin1String("json");
    script->text = readText(script->path, error);
    return !script->text.isNull();
}

int checkScriptFile(const QCommandLineParser &parser, Console &console) {
    Script script;
    ScriptReport report;
    QString error;
    const auto check = [&] { return checkText(script.path, script.text, &report, &error); };
    if (!readScript(parser, &script, &error) ||
        !whileTelling(console, QStringLiteral("checking %1").arg(script.path), check))
        return refuse(console, error);
    if (script.asJson)
        printJson(console, QJsonDocument(reportJson(report)));
    else if (report.result.passed)
        printLine(console,
                  QStringLiteral("%1: %2").arg(spelledOut(script.path),
                                               inked(console, Ink::Good, QStringLiteral("clean"))));
    else
        printFindings(console, report);
    return report.result.passed ? Clean : Findings;
}

// --- printing -----------------------------------------------------------------------------------

using Print = std::function<bool(const ast::TextSink &sink, QString *error)>;

// Prints piece by piece, since what is printed is far longer than the script. `print` gives nothing
// to the sink where it fails.
int printScript(const Script &script, Console &console, const Print &print) {
    QString error = QStringLiteral("%1: memory does not suffice for it").arg(script.path);
    auto progress =
        std::make_unique<Progress>(console, QStringLiteral("reading %1").arg(script.path));
    const ast::TextSink sink = [&](const QString &piece) {
        if (isTerminal(1)) // where the two would stand in each other's way
            progress.reset();
        ctl::print(console, script.asJson ? piece : harmless(piece));
    };
    const bool printed = unlessOutOfMemory([&] { return print(sink, &error); }, false);
    progress.reset();
    if (!printed)
        return refuse(console, error);
    if (script.asJson)
        printLine(console);
    return Clean;
}

// The line for a script that the command can do nothing with.
QString faultLine(const Script &script, const ast::ScriptDiagnostic &fault) {
    return QStringLiteral("%1:%2:%3: %4 %5")
        .arg(script.path, QString::number(fault.line), QString::number(fault.column), fault.code,
             fault.message);
}

int printTokens(const QCommandLineParser &parser, Console &console) {
    Script script;
    QString refusal;
    if (!readScript(parser, &script, &refusal))
        return refuse(console, refusal);
    return printScript(script, console, [&](const ast::TextSink &sink, QString *error) {
        QString lexicalError;
        const std::vector<ast::Token> tokens = ast::Lexer(script.text).tokenize(&lexicalError);
        if (!lexicalError.isEmpty()) {
            ast::ScriptDiagnostic fault;
            ast::extractPosition(lexicalError, &fault.line, &fault.column);
            fault.code = QStringLiteral("YS100");
            fault.message = ast::friendlyMessage(lexicalError);
            *error = faultLine(script, fault);
            return false;
        }
        script.asJson ? ast::tokensToJson(tokens, sink) : ast::tokensToText(tokens, sink);
        return true;
    });
}

int printTree(const QCommandLineParser &parser, Console &console) {
    Script script;
    QString refusal;
    if (!readScript(parser, &script, &refusal))
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

std::vector<Command> scriptCommands() {
    const QString family = QStringLiteral("script");
    const QString file = QStringLiteral("FILE.ys");
    return {
        {family, QStringLiteral("check"), file,
         QStringLiteral("Shows the syntax error of a script, with its line."),
         QStringLiteral("quorvanectl script check main.ys"), declareScript, checkScriptFile},
        {family, QStringLiteral("tokens"), file,
         QStringLiteral("Prints the tokens of a script, in JSON as [kind, text, line, column]."),
         QStringLiteral("quorvanectl script tokens main.ys --format json"), declareScript,
         printTokens},
        {family, QStringLiteral("tree"), file,
         QStringLiteral("Prints the syntax tree of a script, in JSON with every field of a node."),
         QStringLiteral("quorvanectl script tree main.ys --format json"), declareScript, printTree},
    };
}

} // namespace ctl
