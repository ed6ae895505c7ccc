#include "quorvanectl/support/path_spellings.h"

#include <QVector>

namespace ctl {

QRegularExpression everySpellingOf(const QString &folder) {
    QVector<QStringList> names; // of each step
    for (const QString &spelling : QStringList(folder) + otherSpellings(folder)) {
        const QStringList steps = spelling.split(QLatin1Char('/'));
        if (names.isEmpty())
            names.resize(steps.size());
        for (int i = 0; steps.size() == names.size() && i < steps.size(); ++i)
            names[i].append(QRegularExpression::escape(steps.at(i)));
    }
    QStringList pattern;
    for (const QStringList &step : qAsConst(names))
        pattern.append(QStringLiteral("(?:%1)").arg(step.join(QLatin1Char('|'))));
    // Without a drive only the last slash before it is its own: there are three in "file:///root".
    const QString begin = pattern.takeFirst() + QStringLiteral("[/\\\\]") +
                          (folder.startsWith(QLatin1Char('/')) ? QString() : QStringLiteral("+"));
    const QString rest = pattern.join(QStringLiteral("[/\\\\]+"));
    return QRegularExpression(begin + rest + QStringLiteral("(?![\\w.-])"), pathsAreRead);
}

} // namespace ctl
