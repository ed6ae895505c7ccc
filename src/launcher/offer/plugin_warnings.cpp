// Plug-ins that a manifest expects. What is wrong with them only warns.
#include "launcher/offer/update_context.h"

#include "frame/app_paths.h"
#include "update/files/file_version.h"
#include "update/files/version_text.h"
#include "update/manifest_keys.h"

#include <QDir>
#include <QFileInfo>

namespace {

// A manifest means the same on every system, so a backslash separates on each.
QString withoutLeadingDot(QString path) {
    path.replace(QLatin1Char('\\'), QLatin1Char('/'));
    while (path.startsWith(QLatin1String("./")))
        path.remove(0, 2);
    return path;
}

// Where a plug-in may lie, the likeliest place first. A path that begins with bin/ is meant from
// the folder above the program's.
QStringList places(const QString &path) {
    if (!QDir::isRelativePath(path))
        return {QDir::cleanPath(path)};
    QStringList found;
    if (path.startsWith(QLatin1String("bin/"), Qt::CaseInsensitive))
        found.append(
            QDir(QFileInfo(AppPaths::applicationDirectory()).absolutePath()).filePath(path));
    found.append(AppPaths::besideLauncher(path));
    return found;
}

QString warningAbout(const QString &id, const QString &minimum, const QStringList &places) {
    for (const QString &file : places) {
        if (!QFileInfo::exists(file))
            continue;
        const QString version = minimum.isEmpty() ? QString() : fileVersionText(file);
        if (version.isEmpty() || compareVersions(version, minimum) >= 0)
            return QString();
        return UpdateContext::tr("插件 %1 版本 %2 低于 manifest 要求 %3（仅警告，不拦截）。")
            .arg(id, version, minimum);
    }
    return UpdateContext::tr("插件 %1 缺失：%2（仅警告，不拦截）。").arg(id, places.first());
}

} // namespace

QStringList UpdateContext::collectPluginWarnings(const QJsonArray &plugins) {
    QStringList warnings;
    for (const QJsonValue &element : plugins) {
        const QJsonObject plugin = element.toObject();
        const QString path = plugin.value(manifest_keys::path).toString().trimmed();
        if (path.isEmpty())
            continue;
        const QString warning = warningAbout(plugin.value(manifest_keys::id).toString(),
                                             plugin.value(manifest_keys::minVersion).toString(),
                                             places(withoutLeadingDot(path)));
        if (!warning.isEmpty())
            warnings.append(warning);
    }
    return warnings;
}
