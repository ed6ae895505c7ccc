#include "launcher/offer/offer_weighing.h"

#include "launcher/offer/installed_versions.h"
#include "launcher/offer/update_component.h"
#include "update/manifest_keys.h"

OfferWeighing installedNow(const QString &projectVersion) {
    OfferWeighing offer;
    offer.project.installed = projectVersion;
    const QJsonObject release = readReleaseVersions();
    for (const UpdateComponent *component : updateComponents)
        (offer.*(component->item)).installed = installedVersion(*component, release);
    return offer;
}

OfferWeighing weighOffer(const UpdateSnapshot &snapshot, const QString &projectVersion) {
    OfferWeighing offer = installedNow(projectVersion);
    offer.projectName = snapshot.projectEntry.value(manifest_keys::name).toString();
    offer.project = weighProject(snapshot, projectVersion);
    for (const UpdateComponent *component : updateComponents) {
        WeighedItem &item = offer.*(component->item);
        item = weighComponent(component->labelText(), snapshot.*(component->record),
                              snapshot.fromUsb, snapshot.baseLocation, item.installed);
    }
    return offer;
}

bool offersAnything(const OfferWeighing &offer) {
    return offer.project.available || offer.runtime.available || offer.launcher.available ||
           offer.editor.available || offer.pythonTools.available;
}

QString offerFingerprint(const OfferWeighing &offer) {
    QStringList offered;
    if (offer.project.available)
        offered.append(QStringLiteral("project:%1:%2").arg(offer.projectName, offer.project.told));
    for (const UpdateComponent *component : updateComponents) {
        const WeighedItem &item = offer.*(component->item);
        if (item.available)
            offered.append(component->keyText() + QLatin1Char(':') + item.told);
    }
    offered.sort(Qt::CaseInsensitive);
    return offered.join(QLatin1Char('|'));
}

QString offerItems(const OfferWeighing &offer) {
    QStringList offered;
    if (offer.project.available)
        offered.append(QStringLiteral("project:%1").arg(offer.project.told));
    // Another order than the fingerprint's: this one is for readers of the log; see
    // theFingerprintIsSortedAndTheItemsAreNot.
    for (const UpdateComponent *component :
         {&runtimeComponent, &editorComponent, &launcherComponent, &pythonToolsComponent}) {
        const WeighedItem &item = offer.*(component->item);
        if (item.available)
            offered.append(component->keyText() + QLatin1Char(':') + item.told);
    }
    return offered.join(QStringLiteral(", "));
}

UpdateChoices offerChoices(const OfferWeighing &offer) {
    UpdateChoices choices;
    choices.project = {offer.project.available, offer.project.reason};
    for (const UpdateComponent *component : updateComponents) {
        const WeighedItem &item = offer.*(component->item);
        choices.*(component->choice) = {item.available, item.reason};
    }
    return choices;
}

OfferWeighing UpdateContext::weigh() const {
    const OfferWeighing offer = weighOffer(snapshot, offeredProjectVersion());
    logComparison(offer.project, projectPath);
    return offer;
}

QString UpdateContext::onlineUpdateFingerprint() const {
    return offerFingerprint(weigh());
}

QString UpdateContext::onlineUpdateItems() const {
    return offerItems(weigh());
}

UpdateChoices UpdateContext::choices() const {
    return offerChoices(weigh());
}
