#include "quorvanectl/commands/script_findings.h"

#include <QCommandLineParser>

namespace ctl {
namespace {

const QLatin1String strictOption("strict");

// A line may be as long as its file: this much of it is shown on either side of the caret.
constexpr int shownUnits = 60;

// Of the characters that fill two columns of a terminal: those of East Asia. Half of a surrogate
// pair counts as one, so that a pair counts as two.
bool isWide(QChar unit) {
    static const ushort ranges[][2] = {{0x1100, 0x115f}, {0x2e80, 0xa4cf}, {0xac00, 0xd7a3},
                                       {0xf900, 0xfaff}, {0xfe30, 0xfe6f}, {0xff00, 0xff60},
                                       {0xffe0, 0xffe6}};
    for (const auto &range : ranges) {
        if (unit.unicode() >= range[0] && unit.unicode() <= range[1])
            return true;
    }
    return false;
}

// Blanks as wide as the piece of source that stands above them.
QString indentUnder(const QString &source) {
    QString result;
    for (const QChar unit : source)
        result += unit == QLatin1Char('\t') ? QStringLiteral("\t")
                                            : QString(isWide(unit) ? 2 : 1, QLatin1Char(' '));
    return result;
}

bool splitsPair(const QString &line, int index) {
    return index > 0 && index < line.size() && line.at(index).isLowSurrogate() &&
           line.at(index - 1).isHighSurrogate();
}

void printSource(const Console &console, QString line, int column) {
    while (line.endsWith(QLatin1Char('\r')))
        line.chop(1);
    const int caret = qBound(0, column - 1, line.size());
    int from = qMax(0, caret - shownUnits);
    int to = qMin(line.size(), caret + shownUnits);
    from -= splitsPair(line, from) ? 1 : 0;
    to += splitsPair(line, to) ? 1 : 0;
    const QString margin = from > 0 ? QStringLiteral("    ...") : QStringLiteral("    ");
    const QString rest = to < line.size() ? QStringLiteral("...") : QString();
    const QString before = line.mid(from, caret - from);
    printLine(console, margin + harmless(line.mid(from, to - from)) + rest);
    printLine(console,
              indentUnder(margin + before) + inked(console, Ink::Caret, QStringLiteral("^")));
}

void printOne(const Console &console, const ScriptReport &report,
              const ast::ScriptDiagnostic &finding) {
    const QString place = QStringLiteral("%1:%2:%3")
                              .arg(spelledOut(report.shownPath), QString::number(finding.line),
                                   QString::number(finding.column));
    const QString code =
        inked(console, finding.severity == 0 ? Ink::Error : Ink::Warning, finding.code);
    printLine(console,
              QStringLiteral("%1: %2 %3").arg(place, code, spelledOut(wordsOf(finding))).trimmed());
    if (finding.line >= 1 && finding.line <= report.lines.size())
        printSource(console, report.lines.at(finding.line - 1), finding.column);
}

} // namespace

void printFindings(const Console &console, const ScriptReport &report) {
    for (const ast::ScriptDiagnostic &finding : report.result.diagnostics)
        printOne(console, report, finding);
}

void printWarningsHeading(const Console &console) {
    printLine(console, inked(console, Ink::Heading,
                             QStringLiteral("Left open in scripts. The launcher does not look for "
                                            "these, and only --strict counts them:")));
}

void printWarnings(const Console &console, const ScriptReport &report) {
    for (const ast::ScriptDiagnostic &warning : report.warnings)
        printOne(console, report, warning);
}

void declareStrict(QCommandLineParser &parser) {
    parser.addOption({strictOption, QStringLiteral("Counts what a script leaves open as an error, "
                                                   "in the exit status.")});
}

bool isStrict(const QCommandLineParser &parser) {
    return parser.isSet(strictOption);
}

} // namespace ctl
