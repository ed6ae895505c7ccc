#include "quorvanectl/manifest/update_explain.h"

#include "frame/app_paths.h"
#include "frame/launch_log.h"
#include "launcher/offer/update_component.h"
#include "project/project_file.h"
#include "update/files/text_file.h"
#include "update/manifest_keys.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>

namespace ctl {
namespace {

// While one lives, log lines go to a list.
class LogKeeper {
public:
    explicit LogKeeper(QStringList *lines) {
        redirectLaunchLog([lines](const QString &line) { lines->append(line); });
    }
    ~LogKeeper() { redirectLaunchLog(nullptr); }
    LogKeeper(const LogKeeper &) = delete;
    LogKeeper &operator=(const LogKeeper &) = delete;
};

// A stick's manifest may have any encoding, the network's is UTF-8.
QByteArray bytesOf(const QString &manifest) {
    QFile file(manifest);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool check(UpdateContext *context, const QString &manifest, const QString &url,
           Explanation *explanation) {
    QString *const summary = &explanation->summary;
    OfferWeighing *const offer = &explanation->offer;
    return url.isEmpty()
               ? context->runUpdateCheck(QFileInfo(manifest).absoluteFilePath(), summary, offer)
               : context->weighOnlineManifest(QUrl(url), bytesOf(manifest), summary, offer);
}

QJsonObject toJson(const WeighedItem &item) {
    return {{QStringLiteral("available"), item.available}, {QStringLiteral("reason"), item.reason}};
}

} // namespace

Explanation explainUpdate(const QString &manifest, const QString &url, const QString &projectFile) {
    Explanation explanation;
    const QString text =
        url.isEmpty() ? readTextFile(manifest) : QString::fromUtf8(bytesOf(manifest));
    explanation.verify = verifyReport(text, AppPaths::updatePublicKeyPath());
    UpdateContext context;
    context.projectPath = projectFile;
    const LogKeeper keeper(&explanation.log);
    explanation.found = check(&context, manifest, url, &explanation);
    if (context.snapshot.manifestText.isEmpty()) // not verified: nothing was weighed
        explanation.offer =
            installedNow(projectFile.isEmpty() ? QString() : installedProjectVersion(projectFile));
    return explanation;
}

QJsonObject toJson(const Explanation &explanation) {
    const OfferWeighing &offer = explanation.offer;
    QJsonObject choices{{QStringLiteral("project"), toJson(offer.project)}};
    QJsonObject versions{{QStringLiteral("project"), offer.project.installed}};
    for (const UpdateComponent *component : updateComponents) {
        const WeighedItem &item = offer.*(component->item);
        choices.insert(component->keyText(), toJson(item));
        versions.insert(component->keyText(), item.installed);
    }
    return {{QStringLiteral("verify"), toJson(explanation.verify)},
            {QStringLiteral("found"), explanation.found},
            {QStringLiteral("summary"), explanation.summary},
            {QStringLiteral("choices"), choices},
            {QStringLiteral("fingerprint"), offerFingerprint(offer)},
            {QStringLiteral("items"), offerItems(offer)},
            {QStringLiteral("versions"), versions},
            {QStringLiteral("log"), QJsonArray::fromStringList(explanation.log)}};
}

} // namespace ctl
