// The update check: a manifest is found, proved genuine, and weighed for this project and this
// installation. No failure of it stops the launch.
#include "launcher/offer/stick_search.h"
#include "launcher/offer/stick_walk.h"
#include "launcher/offer/update_component.h"
#include "launcher/offer/update_context.h"

#include "frame/launch_log.h"
#include "project/project_file.h"
#include "update/default_manifest_url.h"
#include "update/files/failure.h"
#include "update/http_fetch.h"
#include "update/manifest_keys.h"
#include "update/manifest_signature.h"
#include "update/package_address.h"

#include <QDir>
#include <QFileInfo>
#include <QUrl>

#include <algorithm>

namespace {

constexpr int manifestTimeoutMs = 3000; // a hop
constexpr int manifestRedirects = 8;

bool logRefusal(const QString &why, QString *summary) {
    appendLaunchLog(why);
    return fail(why, summary);
}

QString folderNameOf(const QString &projectPath) {
    return projectPath.isEmpty() ? QString() : QFileInfo(projectPath).absoluteDir().dirName();
}

// The first record that matches is the only one considered; empty if none does.
QJsonObject recordOf(const QJsonArray &projects, const QString &projectName,
                     const QString &folderName) {
    const auto matches = [&](const QJsonValue &record) {
        return UpdateContext::projectRecordMatches(
            record.toObject().value(manifest_keys::name).toString(), projectName, folderName);
    };
    const auto found = std::find_if(projects.begin(), projects.end(), matches);
    return found == projects.end() ? QJsonObject() : (*found).toObject();
}

} // namespace

bool UpdateContext::runUpdateCheck(QString *summary) {
    return runUpdateCheck(searchStick(findStickManifest, stickLimitMs, cancelRef), summary);
}

bool UpdateContext::runUpdateCheck(const QString &stickManifest, QString *summary,
                                   OfferWeighing *weighed) {
    return runUpdateCheck({readStickManifest(stickManifest), false}, summary, weighed);
}

bool UpdateContext::runUpdateCheck(const StickSearch &stick, QString *summary,
                                   OfferWeighing *weighed) {
    snapshot = UpdateSnapshot();
    if (stick.outOfTime)
        appendLaunchLog(QStringLiteral("No answer from the mounted volumes within %1 ms: the check "
                                       "goes on without a stick")
                            .arg(stickLimitMs));
    QString text = takeStickManifest(stick.manifest);
    if (text.isEmpty()) {
        QString error;
        text = fetchOnlineManifest(&error);
        if (!error.isEmpty())
            return logRefusal(UpdateContext::tr("在线更新不可用（%1）。可使用 U 盘更新："
                                                "QuorvanerUpdate/manifest.json。")
                                  .arg(error),
                              summary);
    }
    return weighManifest(text, summary, weighed);
}

bool UpdateContext::weighOnlineManifest(const QUrl &url, const QByteArray &body, QString *summary,
                                        OfferWeighing *weighed) {
    snapshot = UpdateSnapshot();
    return weighManifest(takeOnlineManifest(url, body), summary, weighed);
}

bool UpdateContext::weighManifest(const QString &text, QString *summary, OfferWeighing *weighed) {
    if (text.isEmpty()) {
        *summary = UpdateContext::tr("未找到更新 manifest，将继续使用当前版本。");
        return false;
    }
    // A stick that carries a manifest which proves false does not lead to the network.
    const ManifestProof proof = proveManifest(text);
    if (!proof.result.ok)
        return logRefusal(UpdateContext::tr("更新被拒绝：%1（source=%2）。将继续使用当前版本。")
                              .arg(proof.result.message, snapshot.source),
                          summary);
    if (!proof.manifest) { // a guard: what has been proved has been parsed
        *summary = UpdateContext::tr("更新 manifest 解析失败，将继续使用当前版本。");
        return false;
    }
    snapshot.manifestText = text;
    return evaluateManifest(*proof.manifest, summary, weighed);
}

// Empty without a stick, and for one that could not be read: the network is tried then.
QString UpdateContext::takeStickManifest(const StickManifest &stick) {
    if (stick.path.isEmpty())
        return QString();
    if (stick.text.isEmpty()) {
        appendLaunchLog(UpdateContext::tr("U 盘 manifest 无法读取，尝试在线更新：%1 (%2)")
                            .arg(stick.path, stick.error));
        return QString();
    }
    snapshot.source = stick.path;
    snapshot.baseLocation = QFileInfo(stick.path).absolutePath();
    snapshot.fromUsb = true;
    appendLaunchLog(stick.hash.isEmpty()
                        ? UpdateContext::tr("已读取 U 盘 manifest：%1（文件 SHA256 计算失败：%2）")
                              .arg(stick.path, stick.error)
                        : UpdateContext::tr("已读取 U 盘 manifest：%1（file_sha256=%2）")
                              .arg(stick.path, stick.hash));
    return stick.text;
}

QString UpdateContext::fetchOnlineManifest(QString *error) {
    const QUrl url(defaultManifestUrl());
    if (cancelRequested()) {
        *error = cancelledText();
        return QString();
    }
    // Not given the flag: the hop ends by itself within seconds.
    const FetchResult fetched = fetchUrl(url, manifestTimeoutMs, manifestRedirects);
    if (!fetched.ok) {
        *error = fetched.error;
        return QString();
    }
    return takeOnlineManifest(url, fetched.body);
}

QString UpdateContext::takeOnlineManifest(const QUrl &url, const QByteArray &body) {
    snapshot.source = url.toString();
    snapshot.baseLocation = url.toString(QUrl::RemoveFilename);
    snapshot.fromUsb = false;
    appendLaunchLog(UpdateContext::tr("已读取在线 manifest：%1").arg(snapshot.source));
    return QString::fromUtf8(body.constData(), body.size());
}

bool UpdateContext::evaluateManifest(const QJsonObject &root, QString *summary,
                                     OfferWeighing *weighed) {
    for (const UpdateComponent *component : updateComponents)
        snapshot.*(component->record) = root.value(component->keyText()).toObject();
    snapshot.plugins = root.value(manifest_keys::plugins).toArray();
    const OfferWeighing offer = weighFor(root.value(manifest_keys::projects).toArray());
    if (weighed != nullptr)
        *weighed = offer;
    *summary = offerSummary(offer, snapshot, projectPath);
    const bool found = offersAnything(offer);
    if (found)
        appendLaunchLog(*summary);
    return found;
}

// The project is read once: its name finds its record, its version is weighed against that.
OfferWeighing UpdateContext::weighFor(const QJsonArray &projects) {
    const ProjectIdentity installed =
        projectPath.isEmpty() ? ProjectIdentity() : readProjectIdentity(projectPath);
    const QString folderName = folderNameOf(projectPath);
    const QString projectName = installed.name.isEmpty() ? folderName : installed.name;
    snapshot.projectEntry = recordOf(projects, projectName, folderName);
    OfferWeighing offer = weighOffer(snapshot, installed.version);
    logComparison(offer.project, projectPath);
    if (snapshot.projectEntry.isEmpty())
        offer.project.reason =
            UpdateContext::tr("未找到与当前项目匹配的项目记录（%1）。").arg(projectName);
    if (!offer.project.available)
        snapshot.projectEntry = QJsonObject();
    return offer;
}

QString UpdateContext::resolveManifestUrl(const UpdateSnapshot &snapshot, const QString &value) {
    if (value.isEmpty())
        return QString();
    if (isUrl(value))
        return value;
    // A plain join of paths, also for a base that is a URL.
    if (!snapshot.baseLocation.isEmpty())
        return QDir(snapshot.baseLocation).filePath(value);
    const QUrl source(snapshot.source);
    if (source.isValid() && !source.scheme().isEmpty())
        return source.resolved(QUrl(value)).toString();
    return value;
}

bool UpdateContext::isPackageName(const QString &name) {
    return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..");
}
