#include "quorvanectl/doctor/health.h"

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

void addError(Health *health, const char *kind, const QString &message, const QString &remedy) {
    health->findings.append({QLatin1String(kind), true, message, remedy});
}

void addWarning(Health *health, const char *kind, const QString &message, const QString &remedy) {
    health->findings.append({QLatin1String(kind), false, message, remedy});
}

} // namespace ctl
