#include "quorvanectl/doctor/health.h"

#include "quorvanectl/files/file_access.h"

namespace ctl {

Health examine(const HealthPlaces &places) {
    Health health;
    examineInstallation(places, &health);
    examineClock(places, &health);
    examineNetwork(places, &health);
    examineDataFolder(places, &health);
    examineLeftOvers(places, &health);
    examineProject(places, &health);
    return health;
}

QString noFileAt(const QString &path) {
    QString error;
    (void)isUsableFile(path, &error); // the caller knows that it is none
    return error;
}

void addError(Health *health, const char *kind, const QString &message, const QString &remedy) {
    health->findings.append({QLatin1String(kind), true, message, remedy});
}

void addWarning(Health *health, const char *kind, const QString &message, const QString &remedy) {
    health->findings.append({QLatin1String(kind), false, message, remedy});
}

} // namespace ctl
