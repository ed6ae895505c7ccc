#include "quorvanectl/commands/package_printing.h"

namespace ctl {

void printIssues(const Console &console, const PackResult &result) {
    for (const ProjectIssue &issue : result.issues) {
        const Ink ink = isError(issue) ? Ink::Error : Ink::Warning;
        printLine(console, inked(console, ink, spelledOut(formatProjectIssues({issue}))));
    }
    for (const QString &warning : result.warnings)
        printLine(console, inked(console, Ink::Warning, spelledOut(warning)));
    for (const QString &finding : result.findings)
        printLine(console, inked(console, Ink::Error, spelledOut(finding)));
}

QString notFullVersion(const QString &version) {
    return QStringLiteral("--version %1: must be three or four numbers such as 1.2.0").arg(version);
}

} // namespace ctl
