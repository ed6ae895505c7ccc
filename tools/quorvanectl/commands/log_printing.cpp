#include "quorvanectl/commands/log_printing.h"

namespace ctl {
namespace {

// Text of several lines stays so, each line behind the same margin.
void printBehind(const Console &console, const QString &first, const QString &margin,
                 const QString &text) {
    QString before = first;
    for (const QString &line : text.split(QLatin1Char('\n'))) {
        printLine(console, before + spelledOut(line));
        before = margin;
    }
}

void printLabelled(const Console &console, const QVector<Labelled> &lines, int indent) {
    const QString margin(indent, QLatin1Char(' '));
    for (const Labelled &line : lines)
        printLine(console, margin + line.label + QStringLiteral(": ") + spelledOut(line.text));
}

void printEntry(const Console &console, const LogEntry &entry, Language language) {
    const LineAdvice advice = adviceOn(entry, language);
    const QString time = timeText(entry.time).section(QLatin1Char(' '), 1);
    const QString margin(time.size() + 4, QLatin1Char(' '));
    printBehind(console, QStringLiteral("  %1  ").arg(time), margin, advice.line.told);
    printLabelled(console, linesOf(advice.line, advice.isLogLine, language), margin.size());
    for (const Advice &reason : advice.reasons) {
        printBehind(console, margin + QStringLiteral("- "), margin + QStringLiteral("  "),
                    reason.told);
        printLabelled(console, linesOf(reason, false, language), margin.size() + 2);
    }
}

} // namespace

void printStart(const Console &console, const LogStart &start, const StartVerdict &verdict,
                const LogPrinting &how) {
    const Ink ink = verdict.isFailure ? Ink::Error : Ink::Heading;
    printLine(console, inked(console, ink, timeText(verdict.begin)));
    printLabelled(console, linesOf(verdict, how.language), 2);
    for (const LogEntry &entry : start.entries) {
        if (how.allLines || levelOf(entry) != Level::Note)
            printEntry(console, entry, how.language);
    }
    printLine(console);
}

void printCount(const Console &console, const LogCount &count, bool lacksBeginning,
                Language language) {
    if (lacksBeginning)
        printLine(console, inLanguage(language, "The beginning of the log was left out.",
                                      "日志的开头部分已省略。"));
    printLine(console, inLanguage(language, "%1 starts in the log, %2 told, %3 of these failed.",
                                  "日志中有 %1 次启动，显示 %2 次，其中失败 %3 次。")
                           .arg(QString::number(count.all), QString::number(count.told),
                                QString::number(count.failed)));
}

} // namespace ctl
