// quorvanectl project check: what keeps the launcher from starting a project, and syntax errors.
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/commands/script_findings.h"
#include "quorvanectl/project/project_findings.h"
#include "quorvanectl/project/sarif.h"
#include "quorvanectl/shell/installation.h"
#include "quorvanectl/shell/json_output.h"
#include "quorvanectl/shell/progress.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace ctl {
namespace {

const QLatin1String pluginOption("core-plugin");

QStringList formats() {
    return {QStringLiteral("text"), QStringLiteral("json"), QStringLiteral("sarif")};
}

void declare(QCommandLineParser &parser) {
    declareFormat(parser, formats());
    declareLibrary(parser);
    declareStrict(parser);
    parser.addOption({pluginOption,
                      QStringLiteral("Looks for the core plug-in in this folder, as the launcher "
                                     "does beside itself."),
                      QStringLiteral("folder")});
}

void printIssues(const Console &console, const ProjectFindings &findings, qint32 severity,
                 Ink ink) {
    const QStringList lines = issueLines(findings, severity);
    for (const QString &line : lines)
        printLine(console, inked(console, ink, spelledOut(line)));
}

void printScripts(const Console &console, const ProjectFindings &findings) {
    if (findings.scriptErrorCount() == 0)
        return;
    if (!findings.allIssues().isEmpty())
        printLine(console);
    printLine(console, inked(console, Ink::Heading,
                             QStringLiteral("Syntax errors in scripts. The launcher does not look "
                                            "for these and would start such a project:")));
    for (const ScriptReport &script : findings.scripts)
        printFindings(console, script);
}

void printScriptWarnings(const Console &console, const ProjectFindings &findings) {
    if (findings.scriptWarningCount() == 0)
        return;
    if (!findings.allIssues().isEmpty() || findings.scriptErrorCount() > 0)
        printLine(console);
    printWarningsHeading(console);
    for (const ScriptReport &script : findings.scripts)
        printWarnings(console, script);
}

QString counted(int count, const char *what) {
    return QStringLiteral("%1 %2%3").arg(QString::number(count), QLatin1String(what),
                                         QLatin1String(count == 1 ? "" : "s"));
}

void printSummary(const Console &console, const ProjectFindings &findings) {
    const int leftOpen = findings.scriptWarningCount();
    if (findings.allIssues().isEmpty() && !findings.hasErrors() && leftOpen == 0)
        return printClean(console, findings.projectPath);
    QStringList counts{counted(findings.issueCount(0), "error"),
                       counted(findings.issueCount(1), "warning"),
                       counted(findings.scriptErrorCount(), "syntax error")};
    if (leftOpen > 0)
        counts.append(QStringLiteral("%1 left open").arg(leftOpen));
    printLine(console,
              QStringLiteral("\n%1: %2")
                  .arg(spelledOut(findings.projectPath), counts.join(QStringLiteral(", "))));
}

void printText(const Console &console, const ProjectFindings &findings) {
    printIssues(console, findings, 0, Ink::Error);
    printIssues(console, findings, 1, Ink::Warning);
    printScripts(console, findings);
    printScriptWarnings(console, findings);
    printSummary(console, findings);
}

// With the line and column of its value in the project file, where it lies there.
QJsonObject issueJson(const ProjectIssue &issue, const TextPlace &at) {
    QJsonObject json{{QStringLiteral("severity"), issue.severity},
                     {QStringLiteral("path"), issue.path},
                     {QStringLiteral("message"), issue.message}};
    if (at.line > 0) {
        json.insert(QStringLiteral("line"), at.line);
        json.insert(QStringLiteral("column"), at.column);
    }
    return json;
}

QJsonObject findingsJson(const ProjectFindings &findings) {
    const QVector<ProjectIssue> all = findings.allIssues();
    QJsonArray issues;
    for (int i = 0; i < all.size(); ++i)
        issues.append(issueJson(all.at(i), findings.places.value(i).at));
    QJsonArray scripts;
    for (const ScriptReport &script : findings.scripts)
        scripts.append(reportJson(script));
    return {{QStringLiteral("project"), findings.projectPath},
            {QStringLiteral("issues"), issues},
            {QStringLiteral("scripts"), scripts}};
}

bool findWithProgress(const QCommandLineParser &parser, const Console &console,
                      ProjectFindings *findings, QString *error) {
    const QString path = firstArgument(parser);
    const Progress progress(console, QStringLiteral("checking %1").arg(path));
    return findAll(path, parser.value(pluginOption), findings, error);
}

void printAll(const Console &console, const QString &format, const ProjectFindings &findings) {
    if (format == QLatin1String("json"))
        printJson(console, QJsonDocument(findingsJson(findings)));
    else if (format == QLatin1String("sarif"))
        printJson(console, QJsonDocument(sarifLog(findings)));
    else
        printText(console, findings);
}

int run(const QCommandLineParser &parser, Console &console) {
    QString error;
    const QString format = chosenFormat(parser, formats(), &error);
    ProjectFindings findings;
    if (format.isEmpty() || !loadLibrary(parser, console, &error))
        return refuse(console, error);
    if (!findWithProgress(parser, console, &findings, &error)) {
        // A build server shows where a file ceases to be a project file; it reads no error stream.
        if (format == QLatin1String("sarif") && !findings.issues.isEmpty())
            printJson(console, QJsonDocument(sarifLog(findings)));
        return refuse(console, error);
    }
    printAll(console, format, findings);
    const bool counts =
        findings.hasErrors() || (isStrict(parser) && findings.scriptWarningCount() > 0);
    return counts ? Findings : Clean;
}

} // namespace

Command projectCheck() {
    return {QStringLiteral("project"),
            QStringLiteral("check"),
            QStringLiteral("FILE.yslib"),
            QStringLiteral("Shows what keeps the launcher from starting a project, and the syntax "
                           "errors of its scripts."),
            QStringLiteral("quorvanectl project check demo/demo.yslib --format json"),
            declare,
            run};
}

} // namespace ctl
