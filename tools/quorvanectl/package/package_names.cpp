#include "quorvanectl/package/package_names.h"

#include "quorvanectl/files/windows_names.h"
#include "update/files/zip_extract.h"
#include "update/files/zip_names.h"

#include <QHash>

namespace ctl {

QString nameFault(const QString &path) {
    if (path.isEmpty() || isUnsafeZipName(path))
        return QStringLiteral("it leads out of the package");
    if (hasControlCharacter(path))
        return QStringLiteral("it holds a control character");
    if (path.contains(QChar::ReplacementCharacter))
        return QStringLiteral("it is not readable as text");
    const QStringList segments = path.split(QLatin1Char('/'));
    for (const QString &segment : segments) {
        const QString fault = windowsNameFault(segment);
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
