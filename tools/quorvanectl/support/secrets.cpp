#include "quorvanectl/support/secrets.h"

#include "quorvanectl/support/path_spellings.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

namespace ctl {

QString withoutSecrets(QString text) {
    static const QRegularExpression nonce(
        QStringLiteral("(--nonce[= ]\"?)(?!\\(left out\\))[^\\s\"]+"));
    // Somebody typed a password with a sign in it that ends the host's part: what is no port behind the
    // colon, and an "@" after that sign. No part of such an address is sure to be none of the password.
    static const QRegularExpression oddPassword(QStringLiteral(
        "([A-Za-z][A-Za-z0-9+.-]*:(?:\\\\?/){2})[^\\s/\\\\\"<>?#@:\\[]*:"
        "(?!\\d*(?:[/\\\\?#\\s\"<>]|$))[^\\s/\\\\\"<>?#@]*[/\\\\?#][^\\s\"<>]*@[^\\s\"<>]*"));
    // A password may hold an "@" of its own, so the last one before the path counts.
    static const QRegularExpression user(
        QStringLiteral("([A-Za-z][A-Za-z0-9+.-]*:(?:\\\\?/){2})[^\\s/\\\\\"<>?#]*@"));
    static const QRegularExpression query(
        QStringLiteral("([A-Za-z][A-Za-z0-9+.-]*:(?:\\\\?/){2}[^\\s\"<>?#]*[?#])"
                       "(?!\\(left out\\))[^\\s\"<>]+"));
    // Without a scheme, as proxies and cameras are named, or with one slash, as a link's target is told.
    static const QRegularExpression bare(QStringLiteral("(?<![\\w.%+-])[\\w.%+-]+:[^\\s/@\"<>:]+@"),
                                         QRegularExpression::UseUnicodePropertiesOption);
    const QString leftOut = QStringLiteral("\\1(left out)");
    // The query first: what is left out of the user's place has a blank in it, at which an address ends.
    return text.replace(nonce, leftOut)
        .replace(oddPassword, leftOut)
        .replace(query, leftOut)
        .replace(user, leftOut + QLatin1Char('@'))
        .replace(bare, QStringLiteral("(left out)@"));
}

QString withoutHomePaths(QString text) {
    const QString home = QDir::homePath();
    for (const QString &folder : {home, QFileInfo(home).canonicalFilePath()}) {
        if (!folder.isEmpty() &&
            !QDir(folder).isRoot()) // as that of a program of the system may be
            text.replace(everySpellingOf(folder), QStringLiteral("~"));
    }
    // A folder's name ends with its separator; blanks may be in it only before one, and so may the sign
    // that stands between the folders of a search path.
    static const QRegularExpression elsewhere(
        QStringLiteral("(?:/home/|/Users/|[A-Za-z]:[/\\\\]+(?i:Users)[/\\\\]+)"
                       "(?:[^/\\\\\r\n\"<>|:*?]+(?=[/\\\\])|[^/\\\\\\s\"<>|:;*?]+)"));
    return text.replace(elsewhere, QStringLiteral("~"));
}

} // namespace ctl
