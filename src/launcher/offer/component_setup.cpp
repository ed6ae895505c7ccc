// The component setup: the installer of each chosen component is fetched, checked and started.
//
// The launcher neither waits for an installer nor records its outcome: once it has finished, the
// installer itself writes its version to config/release_version.json.
#include "launcher/offer/shell_turn.h"
#include "launcher/offer/update_component.h"
#include "launcher/offer/update_context.h"

#include "frame/app_paths.h"
#include "frame/launch_log.h"
#include "update/files/failure.h"
#include "update/files/held_file.h"
#include "update/http_fetch.h"
#include "update/manifest_keys.h"
#include "update/manifest_signature.h"
#include "update/package_address.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QUrl>

#include <array>
#include <optional>

namespace {

// Not the manifest's order: the launcher's own installer goes last (theLauncherGoesLast).
constexpr std::array<const UpdateComponent *, 4> setupOrder{
    &pythonToolsComponent, &runtimeComponent, &editorComponent, &launcherComponent};

struct Installer {
    QString label;
    QString path;
    QUrl url; // invalid: it lies on a stick, or its address is unusable
    bool hasName = true;
};

Installer installerOf(const UpdateSnapshot &snapshot, const QString &label,
                      const QString &setupUrl) {
    if (snapshot.fromUsb)
        return {label, QDir(snapshot.baseLocation).filePath(setupUrl), QUrl()};
    const QString name = packageFileName(setupUrl);
    return {label, QDir(AppPaths::updateCacheDirectory()).filePath(name),
            QUrl(UpdateContext::resolveManifestUrl(snapshot, setupUrl)),
            UpdateContext::isPackageName(name)};
}

// An installer of that name in the cache is taken as it is; its hash, if one is given, tells. A
// folder is none, and without a name there is nothing to download to.
bool makePresent(const Installer &installer, bool fromUsb, const CancelFlag *cancelRef,
                 QString *why) {
    QString error;
    if (!fromUsb && installer.hasName && !QFileInfo::exists(installer.path) &&
        !downloadToFile(installer.url, installer.path, &error, cancelRef)) {
        *why = UpdateContext::tr("%1 安装包下载失败（%2），将继续使用当前版本。")
                   .arg(installer.label, error);
        return false;
    }
    if (QFileInfo(installer.path).isFile())
        return true;
    *why = UpdateContext::tr("%1 安装包不存在：%2，将继续使用当前版本。")
               .arg(installer.label, installer.path);
    return false;
}

// A file that does not match is downloaded once more, also one that was downloaded just now.
bool passesCheck(const Installer &installer, const QString &sha256, const CancelFlag *cancelRef,
                 QString *why) {
    VerifyResult check = verifyFileSha256(installer.path, sha256);
    if (check.ok)
        return true;
    if (installer.url.isValid()) {
        QString error;
        if (!downloadToFile(installer.url, installer.path, &error, cancelRef)) {
            *why = UpdateContext::tr("%1 安装包校验失败且重下失败（校验：%2；重下：%3），"
                                     "将继续使用当前版本。")
                       .arg(installer.label, check.message, error);
            return false;
        }
        check = verifyFileSha256(installer.path, sha256);
        if (check.ok) {
            appendLaunchLog(
                UpdateContext::tr("%1 安装包缓存命中但校验不一致，已自动重下并通过校验：%2")
                    .arg(installer.label, installer.path));
            return true;
        }
    }
    *why = UpdateContext::tr("%1 安装包校验失败（%2），将继续使用当前版本。")
               .arg(installer.label, check.message);
    return false;
}

// A download lacks the right to be run where the system asks for one. If it cannot be given, the start
// fails and says so.
void giveRightToRun(const Installer &installer) {
    const QFile::Permissions rights = QFile::permissions(installer.path);
    if (!(rights & QFile::ExeOwner))
        (void)QFile::setPermissions(installer.path, rights | QFile::ExeOwner);
}

// What lies on a stick can be exchanged between its proof and its start.
bool isStillProved(const Installer &installer, const HeldFile &proved, const QString &sha256,
                   QString *why) {
    return proved.isUnchanged() || passesCheck(installer, sha256, nullptr, why);
}

// As a process of its own that outlives the launcher.
bool startInstaller(const Installer &installer) {
    const ShellTurn turn; // for an installer that asks for an administrator
    return QProcess::startDetached(installer.path, {});
}

} // namespace

ComponentSetupResult UpdateContext::runComponentSetup() const {
    ComponentSetupResult result;
    result.success = true; // whatever comes: a component that fails is a warning
    if (cancelRequested()) {
        result.cancelled = true;
        return result;
    }
    QStringList notes;
    QStringList warnings;
    for (const UpdateComponent *component : setupOrder) {
        if (!(selection.*(component->selected)))
            continue;
        QString error;
        const QString note =
            setupComponent(snapshot.*(component->record), component->labelText(), true, &error);
        if (!note.isEmpty())
            notes.append(note);
        if (!error.isEmpty())
            warnings.append(error);
    }
    result.summary = notes.join(QLatin1Char('\n'));
    result.warnings = warnings.join(QLatin1Char('\n'));
    result.cancelled = cancelRequested();
    return result;
}

QString UpdateContext::setupComponent(const QJsonObject &record, const QString &label,
                                      bool autoStart, QString *error) const {
    const auto leaveOut = [error](const QString &why) {
        fail(why, error);
        return QString();
    };
    const auto report = [](const QString &line) {
        appendLaunchLog(line);
        return line;
    };
    if (cancelRequested())
        return leaveOut(cancelledText());
    const QString setupUrl = record.value(manifest_keys::setupUrl).toString();
    if (setupUrl.isEmpty())
        return QString();
    const Installer installer = installerOf(snapshot, label, setupUrl);
    const QString sha256 = record.value(manifest_keys::setupSha256).toString();
    QString why;
    std::optional<HeldFile> proved; // until the installer has been started
    if (snapshot.fromUsb && !sha256.isEmpty())
        proved.emplace(installer.path);
    // Without a hash the installer goes unchecked: the publisher's choice.
    if (!makePresent(installer, snapshot.fromUsb, cancelRef, &why) ||
        (!sha256.isEmpty() && !passesCheck(installer, sha256, cancelRef, &why)))
        return leaveOut(report(why));
    if (!autoStart) {
        return report(
            UpdateContext::tr("%1 安装包已就绪：%2（请在关闭 Launcher 后手动执行该安装包）")
                .arg(label, installer.path));
    }
    giveRightToRun(installer); // on a stick it is another file then, and proved again
    if (proved && !isStillProved(installer, *proved, sha256, &why))
        return leaveOut(report(why));
    if (!startInstaller(installer)) {
        return leaveOut(report(UpdateContext::tr("%1 安装包启动失败：%2，请稍后手动执行。")
                                   .arg(label, installer.path)));
    }
    return report(
        UpdateContext::tr("%1 安装包已自动启动：%2（组件版本将在安装程序完成后写入本地配置）")
            .arg(label, installer.path));
}
