#include "launcher/offer/installed_versions.h"

#include "launcher/offer/update_component.h"

#include "frame/app_paths.h"
#include "frame/program_names.h"
#include "update/files/file_version.h"
#include "update/files/text_file.h"
#include "update/files/version_text.h"

#include <QDir>
#include <QJsonDocument>

namespace {

// An object without keys for everything that cannot be read as one.
QJsonObject readJsonObject(const QString &path) {
    return QJsonDocument::fromJson(readTextFile(path).toUtf8()).object();
}

QString bundledPythonVersion() {
    const QString manifest = QDir(AppPaths::installRoot())
                                 .filePath(QStringLiteral("python/.quorvane_python_manifest.json"));
    return readJsonObject(manifest).value(QLatin1String("bundledPythonVersion")).toString();
}

QString programVersion(const QString &path) {
    const QString version = fileVersionText(path);
    return isPlaceholderVersion(version) ? QString() : version;
}

// Where a component's version stands when the release file does not tell it.
QString versionInFiles(const QString &key) {
    if (key == runtimeComponent.key)
        return programVersion(AppPaths::besideLauncher(QLatin1String(program_names::runtime)));
    if (key == launcherComponent.key)
        return programVersion(AppPaths::applicationFile());
    if (key == editorComponent.key)
        return programVersion(AppPaths::besideLauncher(QLatin1String(program_names::editor)));
    return bundledPythonVersion();
}

QString orUnknown(const QString &version) {
    return version.isEmpty() ? UpdateContext::tr("未知") : version;
}

} // namespace

QJsonObject readReleaseVersions() {
    return readJsonObject(AppPaths::besideLauncher(QStringLiteral("config/release_version.json")));
}

QString installedVersion(const UpdateComponent &component, const QJsonObject &release) {
    const QString key = component.keyText();
    for (const char *suffix : {"PackageVersion", "MinVersion"}) {
        const QString version = release.value(key + QLatin1String(suffix)).toString();
        if (!version.isEmpty())
            return version;
    }
    return versionInFiles(key);
}

QString UpdateContext::releaseVersionValue(const QString &key) {
    return readReleaseVersions().value(key).toString();
}

QString UpdateContext::currentComponentVersion(const QString &key) {
    for (const UpdateComponent *component : updateComponents) {
        if (component->keyText().compare(key, Qt::CaseInsensitive) == 0)
            return installedVersion(*component, readReleaseVersions());
    }
    return QString();
}

QString UpdateContext::currentLauncherVersion() {
    return currentComponentVersion(launcherComponent.keyText());
}

QString UpdateContext::versionSummary() {
    const QJsonObject release = readReleaseVersions();
    return UpdateContext::tr("版本：Launcher %1 / Runtime %2 / Editor %3")
        .arg(orUnknown(installedVersion(launcherComponent, release)),
             orUnknown(installedVersion(runtimeComponent, release)),
             orUnknown(installedVersion(editorComponent, release)));
}
