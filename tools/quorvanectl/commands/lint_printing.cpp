#include "quorvanectl/commands/lint_printing.h"

namespace ctl {

void printLint(const Console &console, const QString &path, const QVector<LintFinding> &findings) {
    for (const LintFinding &finding : findings) {
        const Ink ink = finding.severity == 0 ? Ink::Error : Ink::Warning;
        printLine(console,
                  QStringLiteral("%1: %2").arg(spelledOut(path),
                                               inked(console, ink, spelledOut(lintLine(finding)))));
    }
}

} // namespace ctl
