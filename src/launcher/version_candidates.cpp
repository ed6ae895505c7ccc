// Which versions are installed, and what a manifest offers beyond them.
#include "launcher/launcher_service.h"

QString LauncherService::currentLauncherVersion() const {
    return QString();
}

QString LauncherService::versionSummary() const {
    const QString unknown = tr("未知");
    return tr("版本：Launcher %1 / Runtime %2 / Editor %3").arg(unknown, unknown, unknown);
}

UpdateChoices LauncherService::updateChoices() const {
    const UpdateChoice refused{false, tr("当前没有可应用的已验证更新。")};
    return {refused, refused, refused, refused, refused};
}
