#include "quorvanectl/package/version_fault.h"

#include "update/files/version_text.h"

#include <QStringList>

#include <algorithm>

namespace ctl {
namespace {

bool isTooLarge(const QString &number) {
    bool fits = false;
    (void)number.toInt(&fits);
    return !fits;
}

} // namespace

QString versionFault(const QString &version) {
    const QString normal = normalizeVersion(version);
    const QStringList numbers = normal.split(QLatin1Char('.'));
    if (normal.isEmpty())
        return QString();
    if (extractVersion(normal) != normal) {
        return QStringLiteral("'%1' is not three or four numbers; the rest counts for nothing")
            .arg(version);
    }
    if (std::any_of(numbers.begin(), numbers.end(), isTooLarge)) {
        return QStringLiteral("'%1' holds a number above 2147483647, which counts as 0")
            .arg(version);
    }
    return QString();
}

} // namespace ctl
