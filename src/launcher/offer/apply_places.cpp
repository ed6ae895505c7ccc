#include "launcher/offer/apply_places.h"

#include <QFileInfo>

namespace apply_places {
namespace {

QString stampFormat() {
    return QStringLiteral("yyyyMMdd_HHmmss");
}

} // namespace

QString stamp() {
    return QDateTime::currentDateTimeUtc().toString(stampFormat());
}

QDateTime stampOf(const QString &name) {
    return QDateTime::fromString(name.right(stampFormat().size()), stampFormat());
}

bool isStamped(const QString &name, const QString &prefix) {
    return name.size() == prefix.size() + stampFormat().size() && name.startsWith(prefix) &&
           stampOf(name).isValid();
}

QString stagingPrefix() {
    return QStringLiteral("apply_");
}

QString backupPrefix(const QString &projectFolder) {
    return QFileInfo(projectFolder).fileName() + QLatin1Char('_');
}

QString lockName() {
    return QStringLiteral("apply.lock");
}

QString keptFolder() {
    return QStringLiteral("logs");
}

} // namespace apply_places
