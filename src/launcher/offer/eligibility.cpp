#include "launcher/offer/eligibility.h"

#include "frame/launch_log.h"
#include "project/project_file.h"
#include "update/files/version_text.h"
#include "update/manifest_keys.h"

#include <QDir>
#include <QFileInfo>

namespace {

QString text(const QJsonObject &record, QLatin1String key) {
    return record.value(key).toString();
}

// A folder of that name is no package.
bool packageMissing(const QString &path) {
    return !QFileInfo(path).isFile();
}

bool answer(const WeighedItem &item, QString *reason) {
    if (reason != nullptr)
        *reason = item.reason;
    return item.available;
}

} // namespace

WeighedItem weighComponent(const QString &label, const QJsonObject &record, bool fromUsb,
                           const QString &baseLocation, const QString &installed) {
    const QString target = UpdateContext::targetComponentVersion(record);
    const auto weighed = [&](bool available, const QString &reason) {
        return WeighedItem{available, reason, target, installed};
    };
    const QString setupUrl = text(record, manifest_keys::setupUrl);
    if (setupUrl.trimmed().isEmpty())
        return weighed(false, UpdateContext::tr("%1 未提供 setupUrl。").arg(label));
    const QString package = QDir(baseLocation).filePath(setupUrl);
    if (fromUsb && packageMissing(package))
        return weighed(false, UpdateContext::tr("%1 安装包缺失：%2").arg(label, package));
    if (target.isEmpty())
        return weighed(
            false, UpdateContext::tr(
                       "%1 缺少可识别的目标版本（manifest 未提供 version 且 setupUrl 无版本号）。")
                       .arg(label));
    if (!installed.isEmpty() && compareVersions(installed, target) >= 0)
        return weighed(false,
                       UpdateContext::tr("目标版本 %1 不高于当前版本 %2。").arg(target, installed));
    const QString minimum = text(record, manifest_keys::minVersion);
    if (!minimum.trimmed().isEmpty() && !installed.isEmpty() &&
        compareVersions(installed, minimum) < 0)
        return weighed(false, UpdateContext::tr("当前版本 %1 低于该更新包最小可更新版本 %2。")
                                  .arg(installed, minimum));
    const QString from = installed.isEmpty() ? UpdateContext::tr("未知版本") : installed;
    return weighed(true, UpdateContext::tr("可从 %1 更新到 %2。").arg(from, target));
}

WeighedItem weighProject(const UpdateSnapshot &snapshot, const QString &installed) {
    const QJsonObject &entry = snapshot.projectEntry;
    const QString version = text(entry, manifest_keys::version);
    const auto weighed = [&](bool available, const QString &reason) {
        return WeighedItem{available, reason, version, installed};
    };
    if (entry.isEmpty())
        return weighed(false, UpdateContext::tr("manifest 未提供可更新的项目记录。"));
    const QString remote = normalizeVersion(version);
    const QString local = normalizeVersion(installed);
    if (!remote.isEmpty() && !local.isEmpty() && compareVersions(local, remote) >= 0)
        return weighed(
            false, UpdateContext::tr("当前项目版本 %1 已不低于更新版本 %2。").arg(local, remote));
    const QString zipUrl = text(entry, manifest_keys::zipUrl);
    if (zipUrl.trimmed().isEmpty())
        return weighed(false, UpdateContext::tr("项目记录缺少 zipUrl。"));
    if (text(entry, manifest_keys::zipSha256).trimmed().isEmpty())
        return weighed(false, UpdateContext::tr("项目记录缺少 zipSha256。"));
    const QString package = QDir(snapshot.baseLocation).filePath(zipUrl);
    if (snapshot.fromUsb && packageMissing(package))
        return weighed(false, UpdateContext::tr("项目更新包缺失：%1").arg(package));
    return weighed(true, UpdateContext::tr("可更新到 %1。")
                             .arg(remote.isEmpty() ? UpdateContext::tr("新版本") : remote));
}

void logComparison(const WeighedItem &project, const QString &projectPath) {
    const QString remote = normalizeVersion(project.told);
    const QString local = normalizeVersion(project.installed);
    if (remote.isEmpty())
        return;
    if (local.isEmpty()) {
        appendLaunchLog(QStringLiteral("Project version check: local version unreadable, path=%1")
                            .arg(projectPath));
        return;
    }
    const QString compared = QString::number(compareVersions(local, remote));
    appendLaunchLog(QStringLiteral("Project version check: local=%1 remote=%2 compare=%3 path=%4")
                        .arg(local, remote, compared, projectPath));
}

QString UpdateContext::targetComponentVersion(const QJsonObject &record) {
    const QString version = extractVersion(text(record, manifest_keys::version).trimmed());
    return version.isEmpty() ? extractVersion(text(record, manifest_keys::setupUrl)) : version;
}

bool UpdateContext::isComponentEligible(const QString &key, const QString &label,
                                        const QJsonObject &record, bool fromUsb,
                                        const QString &baseLocation, QString *reason) {
    return answer(
        weighComponent(label, record, fromUsb, baseLocation, currentComponentVersion(key)), reason);
}

bool UpdateContext::isProjectEligible(QString *reason) const {
    const WeighedItem project = weighProject(snapshot, offeredProjectVersion());
    logComparison(project, projectPath);
    return answer(project, reason);
}

QString UpdateContext::offeredProjectVersion() const {
    return snapshot.projectEntry.isEmpty() ? QString() : installedProjectVersion(projectPath);
}

bool UpdateContext::projectRecordMatches(const QString &recordName, const QString &projectName,
                                         const QString &folderName) {
    const auto same = [&recordName](const QString &name) {
        return recordName.compare(name, Qt::CaseInsensitive) == 0;
    };
    const QString demo = QStringLiteral("demo");
    if (recordName.isEmpty())
        return false;
    if (same(projectName))
        return true;
    return !folderName.isEmpty() &&
           (same(folderName) || (same(demo) && folderName.startsWith(demo, Qt::CaseInsensitive)));
}
