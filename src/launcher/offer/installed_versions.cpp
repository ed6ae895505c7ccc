// Which versions are installed: what the release file tells, else what the files themselves carry.
#include "launcher/offer/update_component.h"
#include "launcher/offer/update_context.h"

#include "frame/app_paths.h"
#include "update/files/file_version.h"
#include "update/files/text_file.h"
#include "update/files/version_text.h"

#include <QDir>
#include <QJsonDocument>

namespace {

QString besideLauncher(const QString &name) {
    return QDir(AppPaths::applicationDirectory()).filePath(name);
}

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
    if (key == QLatin1String("runtime"))
        return programVersion(besideLauncher(QStringLiteral("LineRunner.exe")));
    if (key == QLatin1String("launcher"))
        return programVersion(AppPaths::applicationFile());
    if (key == QLatin1String("editor"))
        return programVersion(besideLauncher(QStringLiteral("LineStudio.exe")));
    return bundledPythonVersion();
}

QString orUnknown(const QString &version) {
    return version.isEmpty() ? UpdateContext::tr("未知") : version;
}

} // namespace

QString UpdateContext::releaseVersionValue(const QString &key) {
    const QString file = besideLauncher(QStringLiteral("config/release_version.json"));
    return readJsonObject(file).value(key).toString();
}

QString UpdateContext::currentComponentVersion(const QString &key) {
    for (const UpdateComponent *component : updateComponents) {
        const QString known = component->keyText();
        if (known.compare(key, Qt::CaseInsensitive) != 0)
            continue;
        for (const char *suffix : {"PackageVersion", "MinVersion"}) {
            const QString version = releaseVersionValue(known + QLatin1String(suffix));
            if (!version.isEmpty())
                return version;
        }
        return versionInFiles(known);
    }
    return QString();
}

QString UpdateContext::currentLauncherVersion() {
    return currentComponentVersion(launcherComponent.keyText());
}

QString UpdateContext::versionSummary() {
    return UpdateContext::tr("版本：Launcher %1 / Runtime %2 / Editor %3")
        .arg(orUnknown(currentLauncherVersion()),
             orUnknown(currentComponentVersion(runtimeComponent.keyText())),
             orUnknown(currentComponentVersion(editorComponent.keyText())));
}
