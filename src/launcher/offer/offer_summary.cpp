// What the user is told of an offer.
#include "launcher/offer/offer_weighing.h"
#include "launcher/offer/update_component.h"

#include "update/files/version_text.h"
#include "update/manifest_keys.h"

namespace {

// The runtime has a lowest version of its own, besides the one that its update demands.
QStringList collectWarnings(const UpdateSnapshot &snapshot, const QString &runtime) {
    QStringList warnings;
    const QString minimum = snapshot.runtimeEntry.value(manifest_keys::minVersion).toString();
    if (!minimum.isEmpty() && !runtime.isEmpty() && compareVersions(runtime, minimum) < 0)
        warnings.append(
            UpdateContext::tr("Runtime 版本 %1 低于 manifest 要求 %2（仅警告，不拦截）。")
                .arg(runtime, minimum));
    return warnings + UpdateContext::collectPluginWarnings(snapshot.plugins);
}

QStringList offersOf(const OfferWeighing &offer) {
    QStringList offers;
    if (offer.project.available)
        offers.append(QStringLiteral("Project -> %1")
                          .arg(offer.project.told.isEmpty() ? UpdateContext::tr("新版本")
                                                            : offer.project.told));
    for (const UpdateComponent *component : updateComponents) {
        const WeighedItem &item = offer.*(component->item);
        if (item.available)
            offers.append(QStringLiteral("%1 -> %2").arg(component->labelText(), item.told));
    }
    return offers;
}

QStringList refusalsOf(const OfferWeighing &offer) {
    QStringList refusals{UpdateContext::tr("项目：%1").arg(offer.project.reason)};
    for (const UpdateComponent *component : updateComponents)
        refusals.append(UpdateContext::tr("%1：%2").arg(component->labelText(),
                                                        (offer.*(component->item)).reason));
    return refusals;
}

QStringList linesOfOffer(const OfferWeighing &offer, const UpdateSnapshot &snapshot,
                         const QString &projectPath, const QStringList &warnings) {
    QStringList lines{UpdateContext::tr("已验证的更新可用（来源：%1）。").arg(snapshot.source)};
    if (!offer.project.installed.isEmpty())
        lines.append(
            UpdateContext::tr("当前项目版本：%1（%2）").arg(offer.project.installed, projectPath));
    lines.append(UpdateContext::tr("可更新项：%1").arg(offersOf(offer).join(QStringLiteral(", "))));
    lines.append(warnings);
    lines.append(
        snapshot.fromUsb
            ? UpdateContext::tr("检测到离线更新包，可在主界面选择「立即更新」或继续启动。")
            : UpdateContext::tr(
                  "发现在线更新，可在主界面选择「立即更新」「稍后提醒」或「跳过此版本」。"));
    return lines;
}

} // namespace

QString offerSummary(const OfferWeighing &offer, const UpdateSnapshot &snapshot,
                     const QString &projectPath) {
    const QStringList warnings = collectWarnings(snapshot, offer.runtime.installed);
    const QStringList lines =
        offersAnything(offer) ? linesOfOffer(offer, snapshot, projectPath, warnings)
                              : QStringList(UpdateContext::tr("未检测到高于当前版本的可用更新。")) +
                                    refusalsOf(offer) + warnings;
    return lines.join(QLatin1Char('\n'));
}
