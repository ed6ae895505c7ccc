// The installation, the clock and the network.
#include "quorvanectl/doctor/health.h"

#include "frame/app_paths.h"
#include "frame/program_names.h"
#include "launcher/offer/update_component.h"
#include "project/core_plugin.h"
#include "quorvanectl/manifest/public_key.h"
#include "update/http_fetch.h"

#include <QDateTime>
#include <QFileInfo>
#include <QSslConfiguration>
#include <QSslSocket>

namespace ctl {
namespace {

constexpr int answerWaitMs = 3000; // as long as the launcher waits for its manifest
constexpr int mostRedirects = 8;
constexpr qint64 clockTolerance = 24 * qint64(3600); // seconds: another time zone is no fault

} // namespace

void examineInstallation(const HealthPlaces &places, Health *health) {
    QString error;
    if (!isPublicKey(AppPaths::updatePublicKeyPath(), &error))
        addError(health, "update-key", error,
                 QStringLiteral("Repair the installation: no update can be verified."));
    const QString runtime = AppPaths::besideLauncher(QLatin1String(program_names::runtime));
    if (!QFileInfo(runtime).isFile())
        addError(health, "runtime", noFileAt(runtime),
                 QStringLiteral("Run the installer of the Runtime."));
    if (!hasCorePlugin(AppPaths::pluginsDirectory(), &error))
        addError(health, "core-plugin", error,
                 QStringLiteral("Repair the runtime's installation."));
    if (!places.libraryError.isEmpty())
        addWarning(health, "function-library", places.libraryError,
                   QStringLiteral("Repair the installation: scripts are read without the words of "
                                  "their language."));
    for (const UpdateComponent *component : updateComponents) {
        const QString key = component->keyText();
        health->versions.insert(key, UpdateContext::currentComponentVersion(key));
    }
    if (health->versions.value(QStringLiteral("runtime")).isEmpty())
        addWarning(health, "version", QStringLiteral("the version of the runtime is not known"),
                   QStringLiteral("Run the installer of the Runtime: it records its version."));
}

// A clock that is behind what has been written already.
void examineClock(const HealthPlaces &places, Health *health) {
    const QDateTime now = QDateTime::currentDateTime();
    for (const QString &path :
         {places.data.launchLog(), places.data.database(), AppPaths::updatePublicKeyPath()}) {
        const QDateTime written = QFileInfo(path).lastModified();
        if (!written.isValid() || now.secsTo(written) <= clockTolerance)
            continue;
        return addError(health, "clock",
                        QStringLiteral("it is %1 by the clock, and %2 was written at %3")
                            .arg(now.toString(Qt::ISODate), path, written.toString(Qt::ISODate)),
                        QStringLiteral("Set the clock: with a wrong one certificates are refused, "
                                       "and the log is hard to read."));
    }
}

void examineNetwork(const HealthPlaces &places, Health *health) {
    if (!QSslSocket::supportsSsl() || QSslConfiguration::systemCaCertificates().isEmpty())
        addError(health, "certificates", QStringLiteral("no certificate authorities are known"),
                 QStringLiteral("Install the system's certificates: without them no update comes "
                                "from the network."));
    if (places.manifestUrl.isEmpty())
        return;
    const FetchResult fetched = fetchUrl(places.manifestUrl, answerWaitMs, mostRedirects);
    if (!fetched.ok)
        addWarning(health, "update-host",
                   QStringLiteral("%1: %2").arg(places.manifestUrl.toString(), fetched.error),
                   QStringLiteral("Check cable, proxy, firewall; update from a stick meanwhile."));
}

} // namespace ctl
