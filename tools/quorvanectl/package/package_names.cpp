#include "quorvanectl/package/package_names.h"

#include "update/files/zip_extract.h"
#include "update/files/zip_names.h"

#include <QHash>
#include <QRegularExpression>

namespace ctl {
namespace {

// "Naming Files, Paths, and Namespaces" of the Windows documentation.
QString segmentFault(const QString &segment) {
    static const QRegularExpression reserved(
        QStringLiteral(R"(^(con|prn|aux|nul|com[1-9]|lpt[1-9])(\.|$))"),
        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression forbidden(QStringLiteral(R"([<>:"|?*\\])"));
    if (segment.contains(forbidden))
        return QStringLiteral("Windows allows none of < > : \" | ? * \\ in a name");
    if (segment.endsWith(QLatin1Char('.')) || segment.endsWith(QLatin1Char(' ')))
        return QStringLiteral("Windows drops a point or blank at a name's end");
    if (segment.contains(reserved))
        return QStringLiteral("Windows keeps this name for a device");
    return QString();
}

} // namespace

QString nameFault(const QString &path) {
    if (path.isEmpty() || isUnsafeZipName(path))
        return QStringLiteral("it leads out of the package");
    if (hasControlCharacter(path))
        return QStringLiteral("it holds a control character");
    if (path.contains(QChar::ReplacementCharacter))
        return QStringLiteral("it is not readable as text");
    const QStringList segments = path.split(QLatin1Char('/'));
    for (const QString &segment : segments) {
        const QString fault = segmentFault(segment);
        if (!fault.isEmpty())
            return fault;
    }
    return QString();
}

QStringList sameNameFaults(const QStringList &paths) {
    QStringList faults;
    QHash<QString, QString> firstOf;
    for (const QString &path : paths) {
        const QString folded = path.toCaseFolded();
        const auto first = firstOf.constFind(folded);
        if (first == firstOf.constEnd())
            firstOf.insert(folded, path);
        else
            faults.append(QStringLiteral("%1: Windows takes it for %2").arg(path, *first));
    }
    return faults;
}

} // namespace ctl
