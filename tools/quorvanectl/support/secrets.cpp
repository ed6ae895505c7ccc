#include "quorvanectl/support/secrets.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStringList>

namespace ctl {

QString withoutSecrets(QString text) {
    static const QRegularExpression nonce(QStringLiteral("(--nonce[= ]\"?)[^\\s\"]+"));
    // A password may hold an "@" of its own, so the last one before the path counts.
    static const QRegularExpression user(
        QStringLiteral("([A-Za-z][A-Za-z0-9+.-]*:(?:\\\\?/){2})[^\\s/\\\\\"<>?#]*@"));
    static const QRegularExpression query(
        QStringLiteral("([A-Za-z][A-Za-z0-9+.-]*:(?:\\\\?/){2}[^\\s\"<>?#]*[?#])[^\\s\"<>]+"));
    const QString leftOut = QStringLiteral("\\1(left out)");
    // The query first: what is left out of the user's place has a blank in it, at which an address ends.
    return text.replace(nonce, leftOut)
        .replace(query, leftOut)
        .replace(user, leftOut + QLatin1Char('@'));
}

QString withoutHomePaths(QString text) {
    QStringList homes{QDir::homePath(), QFileInfo(QDir::homePath()).canonicalFilePath()};
    for (const QString &home : qAsConst(homes)) {
        if (home.size() > 1) // a program of the system may have "/" for its home
            text.replace(QRegularExpression(QRegularExpression::escape(home) +
                                            QStringLiteral("(?![\\w.-])")),
                         QStringLiteral("~"));
    }
    // A folder's name ends with its separator; blanks may be in it only before one.
    static const QRegularExpression elsewhere(
        QStringLiteral("(?:/home/|/Users/|[A-Za-z]:[/\\\\]+Users[/\\\\]+)"
                       "(?:[^/\\\\\r\n\"<>|:*?]+(?=[/\\\\])|[^/\\\\\\s\"<>|:*?]+)"));
    return text.replace(elsewhere, QStringLiteral("~"));
}

} // namespace ctl
