#include "quorvanectl/files/windows_names.h"

#include <QRegularExpression>

// "Naming Files, Paths, and Namespaces" of the Windows documentation. What follows a device's name behind a
// point, with blanks before it, changes nothing.
QString ctl::windowsNameFault(const QString &name) {
    static const QRegularExpression reserved(
        QStringLiteral(R"(^(con|prn|aux|nul|com[1-9¹²³]|lpt[1-9¹²³]) *(\.|$))"),
        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression forbidden(QStringLiteral(R"([<>:"|?*\\])"));
    if (name.contains(forbidden))
        return QStringLiteral("Windows allows none of < > : \" | ? * \\ in a name");
    if (name.endsWith(QLatin1Char('.')) || name.endsWith(QLatin1Char(' ')))
        return QStringLiteral("Windows drops a point or blank at a name's end");
    if (name.contains(reserved))
        return QStringLiteral("Windows keeps this name for a device");
    return QString();
}
