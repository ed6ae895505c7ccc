// quorvanectl script check: the syntax error of a script, with its line, and what it leaves open.
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/commands/script_findings.h"
#include "quorvanectl/commands/script_input.h"
#include "quorvanectl/project/script_report.h"
#include "quorvanectl/shell/json_output.h"
#include "quorvanectl/shell/progress.h"

#include <QJsonDocument>

namespace ctl {
namespace {

void declare(QCommandLineParser &parser) {
    declareScript(parser);
    declareStrict(parser);
}

void printText(const Console &console, const ScriptReport &report) {
    printFindings(console, report);
    if (report.warnings.empty())
        return;
    if (!report.result.passed)
        printLine(console);
    printWarningsHeading(console);
    printWarnings(console, report);
}

int run(const QCommandLineParser &parser, Console &console) {
    Script script;
    ScriptReport report;
    QString error;
    const auto check = [&] { return checkText(script.path, script.text, &report, &error); };
    if (!readScript(parser, console, &script, &error) ||
        !whileTelling(console, QStringLiteral("checking %1").arg(script.path), check))
        return refuse(console, error);
    if (script.asJson)
        printJson(console, QJsonDocument(reportJson(report)));
    else if (report.result.passed && report.warnings.empty())
        printClean(console, script.path);
    else
        printText(console, report);
    const bool counts = !report.result.passed || (isStrict(parser) && !report.warnings.empty());
    return counts ? Findings : Clean;
}

} // namespace

Command scriptCheck() {
    return {QStringLiteral("script"),
            QStringLiteral("check"),
            QStringLiteral("FILE.ys"),
            QStringLiteral("Shows the syntax error of a script, with its line."),
            QStringLiteral("quorvanectl script check main.ys"),
            declare,
            run};
}

} // namespace ctl
