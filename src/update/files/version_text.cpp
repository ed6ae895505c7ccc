#include "update/files/version_text.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>

namespace {

QStringList partsOf(const QString &version) {
    return version.split(QLatin1Char('.'));
}

int partAt(const QStringList &parts, int index) {
    return parts.value(index).toInt();
}

} // namespace

QString normalizeVersion(const QString &text) {
    const QString version = text.trimmed();
    if (version.startsWith(QLatin1Char('v'), Qt::CaseInsensitive))
        return version.mid(1).trimmed();
    return version;
}

int compareVersions(const QString &a, const QString &b) {
    const QStringList left = partsOf(normalizeVersion(a));
    const QStringList right = partsOf(normalizeVersion(b));
    const int count = qMax(left.size(), right.size());
    for (int i = 0; i < count; ++i) {
        const int leftPart = partAt(left, i);
        const int rightPart = partAt(right, i);
        if (leftPart != rightPart)
            return leftPart < rightPart ? -1 : 1;
    }
    return 0;
}

QString extractVersion(const QString &text) {
    static const QRegularExpression version(QStringLiteral("(\\d+\\.\\d+\\.\\d+(?:\\.\\d+)?)"));
    return version.match(text).captured(1);
}

bool isPlaceholderVersion(const QString &text) {
    const QStringList parts = partsOf(text.trimmed());
    return std::all_of(parts.cbegin(), parts.cend(),
                       [](const QString &part) { return part.toInt() == 0; });
}
