#include "quorvanectl/support/secrets.h"

#include "quorvanectl/support/path_spellings.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

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
    const QString home = QDir::homePath();
    for (const QString &folder : {home, QFileInfo(home).canonicalFilePath()}) {
        if (!folder.isEmpty() &&
            !QDir(folder).isRoot()) // as that of a program of the system may be
            text.replace(everySpellingOf(folder), QStringLiteral("~"));
    }
    // A folder's name ends with its separator; blanks may be in it only before one.
    static const QRegularExpression elsewhere(
        QStringLiteral("(?:/home/|/Users/|[A-Za-z]:[/\\\\]+(?i:Users)[/\\\\]+)"
                       "(?:[^/\\\\\r\n\"<>|:*?]+(?=[/\\\\])|[^/\\\\\\s\"<>|:*?]+)"));
    return text.replace(elsewhere, QStringLiteral("~"));
}

} // namespace ctl
