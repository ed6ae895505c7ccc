// What a manifest offers beyond what is installed.
#include "launcher/offer/update_component.h"
#include "launcher/offer/update_context.h"

#include "frame/launch_log.h"
#include "project/project_file.h"
#include "update/files/version_text.h"

#include <QDir>
#include <QFileInfo>

namespace {

QString text(const QJsonObject &record, const char *key) {
    return record.value(QLatin1String(key)).toString();
}

bool answer(bool eligible, const QString &why, QString *reason) {
    if (reason)
        *reason = why;
    return eligible;
}

// A folder of that name is no package.
bool packageMissing(const QString &path) {
    return !QFileInfo(path).isFile();
}

} // namespace

QString UpdateContext::targetComponentVersion(const QJsonObject &record) {
    const QString version = extractVersion(text(record, "version").trimmed());
    return version.isEmpty() ? extractVersion(text(record, "setupUrl")) : version;
}

bool UpdateContext::isComponentEligible(const QString &key, const QString &label,
                                        const QJsonObject &record, bool fromUsb,
                                        const QString &baseLocation, QString *reason) {
    const QString setupUrl = text(record, "setupUrl");
    if (setupUrl.trimmed().isEmpty())
        return answer(false, UpdateContext::tr("%1 未提供 setupUrl。").arg(label), reason);
    const QString package = QDir(baseLocation).filePath(setupUrl);
    if (fromUsb && packageMissing(package))
        return answer(false, UpdateContext::tr("%1 安装包缺失：%2").arg(label, package), reason);

    const QString current = currentComponentVersion(key);
    const QString target = targetComponentVersion(record);
    if (target.isEmpty())
        return answer(
            false,
            UpdateContext::tr(
                "%1 缺少可识别的目标版本（manifest 未提供 version 且 setupUrl 无版本号）。")
                .arg(label),
            reason);
    if (!current.isEmpty() && compareVersions(current, target) >= 0)
        return answer(false,
                      UpdateContext::tr("目标版本 %1 不高于当前版本 %2。").arg(target, current),
                      reason);
    const QString minimum = text(record, "minVersion");
    if (!minimum.trimmed().isEmpty() && !current.isEmpty() && compareVersions(current, minimum) < 0)
        return answer(
            false,
            UpdateContext::tr("当前版本 %1 低于该更新包最小可更新版本 %2。").arg(current, minimum),
            reason);
    const QString from = current.isEmpty() ? UpdateContext::tr("未知版本") : current;
    return answer(true, UpdateContext::tr("可从 %1 更新到 %2。").arg(from, target), reason);
}

bool UpdateContext::isProjectEligible(QString *reason) const {
    const QJsonObject &entry = snapshot.projectEntry;
    if (entry.isEmpty())
        return answer(false, UpdateContext::tr("manifest 未提供可更新的项目记录。"), reason);
    const QString remote = normalizeVersion(text(entry, "version"));
    const QString local = normalizeVersion(installedProjectVersion(projectPath));
    if (!remote.isEmpty() && local.isEmpty()) {
        appendLaunchLog(QStringLiteral("Project version check: local version unreadable, path=%1")
                            .arg(projectPath));
    } else if (!remote.isEmpty()) {
        const int compared = compareVersions(local, remote);
        appendLaunchLog(
            QStringLiteral("Project version check: local=%1 remote=%2 compare=%3 path=%4")
                .arg(local, remote, QString::number(compared), projectPath));
        if (compared >= 0)
            return answer(
                false,
                UpdateContext::tr("当前项目版本 %1 已不低于更新版本 %2。").arg(local, remote),
                reason);
    }
    const QString zipUrl = text(entry, "zipUrl");
    if (zipUrl.trimmed().isEmpty())
        return answer(false, UpdateContext::tr("项目记录缺少 zipUrl。"), reason);
    if (text(entry, "zipSha256").trimmed().isEmpty())
        return answer(false, UpdateContext::tr("项目记录缺少 zipSha256。"), reason);
    const QString package = QDir(snapshot.baseLocation).filePath(zipUrl);
    if (snapshot.fromUsb && packageMissing(package))
        return answer(false, UpdateContext::tr("项目更新包缺失：%1").arg(package), reason);
    return answer(true,
                  UpdateContext::tr("可更新到 %1。")
                      .arg(remote.isEmpty() ? UpdateContext::tr("新版本") : remote),
                  reason);
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

QString UpdateContext::onlineUpdateFingerprint() const {
    QStringList offered;
    const QJsonObject &project = snapshot.projectEntry;
    if (isProjectEligible() && !project.isEmpty())
        offered
            << QStringLiteral("project:%1:%2").arg(text(project, "name"), text(project, "version"));
    for (const UpdateComponent *component : updateComponents) {
        if (component->eligible(snapshot))
            offered << component->keyText() + QLatin1Char(':') +
                           targetComponentVersion(snapshot.*(component->record));
    }
    offered.sort(Qt::CaseInsensitive);
    return offered.join(QLatin1Char('|'));
}

QString UpdateContext::onlineUpdateItems() const {
    QStringList offered;
    const QJsonObject &project = snapshot.projectEntry;
    if (isProjectEligible() && !project.isEmpty())
        offered << QStringLiteral("project:%1").arg(text(project, "version"));
    // Another order than the fingerprint's: this one is for readers of the log.
    for (const UpdateComponent *component :
         {&runtimeComponent, &editorComponent, &launcherComponent, &pythonToolsComponent}) {
        if (component->eligible(snapshot))
            offered << component->keyText() + QLatin1Char(':') +
                           targetComponentVersion(snapshot.*(component->record));
    }
    return offered.join(QStringLiteral(", "));
}

UpdateChoices UpdateContext::choices() const {
    UpdateChoices choices;
    choices.project.available = isProjectEligible(&choices.project.reason);
    for (const UpdateComponent *component : updateComponents) {
        UpdateChoice &choice = choices.*(component->choice);
        choice.available = component->eligible(snapshot, &choice.reason);
    }
    return choices;
}
