#include "placer/report_text.h"

#include <QTextCodec>

namespace placer {

QByteArray reportText(const Report &report) {
    QStringList lines;
    const auto add = [&lines](char letter, const QString &text) {
        lines.append(QStringLiteral("%1 %2\r\n").arg(QLatin1Char(letter)).arg(text));
    };
    if (!report.version.isEmpty())
        add('V', report.version);
    if (!report.run.isEmpty())
        add('U', report.run);
    for (const QString &name : report.laidBeside)
        add('N', name);
    if (!report.setAside.isEmpty())
        add('A', report.setAside);
    if (report.keepsOtherKey)
        add('K', QString());
    for (const QString &path : report.leftBehind)
        add('L', path);
    if (!report.reason.isEmpty())
        add('R', report.reason);
    // It begins with the mark by itself.
    return QTextCodec::codecForName("UTF-16LE")->fromUnicode(lines.join(QString()));
}

} // namespace placer
