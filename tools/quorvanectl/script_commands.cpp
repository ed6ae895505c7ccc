// quorvanectl script: the front end of the script language, file by file.
#include "quorvanectl/commands.h"
#include "quorvanectl/file_access.h"
#include "quorvanectl/installation.h"
#include "quorvanectl/json_output.h"
#include "quorvanectl/script_report.h"

#include <QJsonDocument>

namespace ctl {
namespace {

QStringList formats() {
    return {QStringLiteral("text"), QStringLiteral("json")};
}

void declareScript(QCommandLineParser &parser) {
    declareLibrary(parser);
    declareFormat(parser, formats());
}

int checkOne(const QCommandLineParser &parser, Console &console) {
    const QString path = parser.positionalArguments().constFirst();
    QString error;
    const QString format = chosenFormat(parser, formats(), &error);
    if (format.isEmpty() || !loadLibrary(parser, &error))
        return refuse(console, error);
    const QString text = readText(path, &error);
    ScriptReport report;
    if (text.isNull() || !checkText(path, text, &report, &error))
        return refuse(console, error);
    if (format == QLatin1String("json"))
        printJson(console, QJsonDocument(reportJson(report)));
    else if (report.result.passed)
        printLine(console,
                  QStringLiteral("%1: %2").arg(spelledOut(path),
                                               inked(console, Ink::Good, QStringLiteral("clean"))));
    else
        printFindings(console, report);
    return report.result.passed ? Clean : Findings;
}

} // namespace

std::vector<Command> scriptCommands() {
    const QString family = QStringLiteral("script");
    const QString file = QStringLiteral("FILE.ys");
    return {
        {family, QStringLiteral("check"), file,
         QStringLiteral("Shows the syntax error of a script, with its line."),
         QStringLiteral("quorvanectl script check main.ys"), declareScript, checkOne},
    };
}

} // namespace ctl
