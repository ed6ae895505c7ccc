#include "frame/app_paths.h"

#include "frame/data_folder.h"
#include "frame/program_names.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QStorageInfo>

namespace {

// The program's own folder and five ancestors.
constexpr int searchedFolders = 6;

QString root;      // written by initialize() and inspect() alone
QString inspected; // the program's folder of another installation; usually empty

bool folderExists(const QString &path) {
    return QFileInfo(path).isDir();
}

// Either sign makes a root. An installation below a folder that happens to hold a folder src takes
// that one: meant, and the reason why isRepositoryLayout() asks for the project file alone.
bool isRoot(const QDir &folder) {
    return QFileInfo::exists(folder.filePath(QStringLiteral("Quorvane.pro"))) ||
           folderExists(folder.filePath(QStringLiteral("src")));
}

// Empty if no folder is one.
QString searchRoot(const QString &start) {
    QDir folder(start);
    for (int tested = 1; !isRoot(folder); ++tested) {
        if (tested == searchedFolders || !folder.cdUp())
            return QString();
    }
    return folder.absolutePath();
}

DataFolder dataFolder() {
    return DataFolder::below(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation));
}

void makeFolder(const QString &path) {
    // A folder that cannot be made shows up later, when it is used.
    if (inspected.isEmpty())
        (void)QDir().mkpath(path);
}

void makeFolders() {
    const DataFolder data = dataFolder();
    const QString user = AppPaths::userDirectory();
    makeFolder(data.path);
    makeFolder(AppPaths::pluginsDirectory());
    makeFolder(data.dumps());
    makeFolder(data.updateTemp());
    makeFolder(data.updateBackup());
    makeFolder(data.updateCache());
    makeFolder(user);
    makeFolder(user + QStringLiteral("/config"));
}

// Hidden entries are left out, nothing is overwritten, failures are ignored.
void copyMissingFiles(const QString &source, const QString &target) {
    const QDir from(source);
    if (!from.exists())
        return;
    makeFolder(target);
    const QDir to(target);
    const auto entries = from.entryInfoList(QDir::Dirs | QDir::Files | QDir::NoDotAndDotDot);
    for (const QFileInfo &entry : entries) {
        const QString copy = to.filePath(entry.fileName());
        if (entry.isDir())
            copyMissingFiles(entry.filePath(), copy);
        else if (!QFileInfo::exists(copy))
            (void)QFile::copy(entry.filePath(), copy);
    }
}

// Once for each user folder: the marker is written whether or not there was a demo to copy, so
// deleting the demo does not bring it back.
void seedDemoProject() {
    const QString projects = AppPaths::userDirectory() + QStringLiteral("/projects");
    makeFolder(projects);
    QFile marker(projects + QStringLiteral("/.demo_seed_done"));
    if (marker.exists())
        return;
    const QString target = projects + QStringLiteral("/demo");
    const QString source = root + QStringLiteral("/examples/projects/demo");
    if (!folderExists(target) && folderExists(source))
        copyMissingFiles(source, target);
    if (marker.open(QIODevice::WriteOnly))
        (void)marker.write("1", 1);
}

QString configFile(const QString &name) {
    const QString path = AppPaths::configDirectory() + QLatin1Char('/') + name;
    if (QFileInfo::exists(path))
        return path;
    return root + QStringLiteral("/resources/config/") + name;
}

} // namespace

void AppPaths::initialize() {
    const QString found = searchRoot(applicationDirectory());
    if (!found.isEmpty())
        root = found;
    if (root.isEmpty())
        root = applicationDirectory(); // the usual case of an installation
    if (!inspected.isEmpty())
        return;
    makeFolders();
    seedDemoProject();
}

void AppPaths::inspect(const QString &applicationDirectory) {
    inspected = QDir(applicationDirectory).absolutePath();
    root.clear();
    initialize();
}

QString AppPaths::applicationDirectory() {
    return inspected.isEmpty() ? QCoreApplication::applicationDirPath() : inspected;
}

QString AppPaths::applicationFile() {
    if (inspected.isEmpty())
        return QCoreApplication::applicationFilePath();
    // An installation that came from a line PC may lie on any system.
    const QString windows = besideLauncher(QLatin1String(program_names::launcherOnWindows));
    return QFileInfo::exists(windows) ? windows
                                      : besideLauncher(QLatin1String(program_names::launcher));
}

QString AppPaths::besideLauncher(const QString &name) {
    return QDir(applicationDirectory()).filePath(name);
}

QString AppPaths::repositoryRoot() {
    return root;
}

bool AppPaths::isRepositoryLayout() {
    if (root.isEmpty())
        initialize();
    return QFileInfo::exists(root + QStringLiteral("/Quorvane.pro"));
}

QString AppPaths::installRoot() {
    if (root.isEmpty())
        initialize();
    const QDir above(QDir(applicationDirectory() + QStringLiteral("/..")).absolutePath());
    if (folderExists(above.filePath(QStringLiteral("python"))) ||
        folderExists(above.filePath(QStringLiteral("USER"))))
        return above.path();
    return isRepositoryLayout() ? root : above.path();
}

QString AppPaths::dataDirectory() {
    return dataFolder().path;
}

QString AppPaths::databasePath() {
    return dataFolder().database();
}

QString AppPaths::launchLogPath() {
    return dataFolder().launchLog();
}

QString AppPaths::dumpsDirectory() {
    return dataFolder().dumps();
}

QString AppPaths::launchNoncePath(qint64 pid) {
    const QString name = QStringLiteral("launch_nonce_%1.txt").arg(pid);
    return dataDirectory() + QLatin1Char('/') + name;
}

QString AppPaths::updateTempPath(const QString &name) {
    return QDir(dataFolder().updateTemp()).filePath(name);
}

QString AppPaths::updateBackupDirectory() {
    return dataFolder().updateBackup();
}

QString AppPaths::updateCacheDirectory() {
    return dataFolder().updateCache();
}

QString AppPaths::userDirectory() {
    const QDir beside(QDir(applicationDirectory()).filePath(QStringLiteral("../USER")));
    if (beside.exists())
        return beside.absolutePath();
    const bool sourceTree = folderExists(root + QStringLiteral("/examples/projects"));
    if (!root.isEmpty() && sourceTree)
        return QDir(root).filePath(QStringLiteral("USER"));
    return beside.absolutePath(); // the first run of an installation
}

QString AppPaths::projectsDirectory() {
    const QString projects = userDirectory() + QStringLiteral("/projects");
    makeFolder(projects);
    return QDir(projects).absolutePath();
}

QString AppPaths::pluginsDirectory() {
    const QString beside = applicationDirectory() + QStringLiteral("/plugins");
    return folderExists(beside) ? beside : root + QStringLiteral("/plugins");
}

QString AppPaths::configDirectory() {
    const QString inRoot = root + QStringLiteral("/resources/config");
    if (QFileInfo::exists(inRoot + QStringLiteral("/FunctionLib.ini")))
        return inRoot;
    return applicationDirectory() + QStringLiteral("/config");
}

QString AppPaths::functionLibraryPath() {
    return configFile(QStringLiteral("FunctionLib.ini"));
}

QString AppPaths::updatePublicKeyPath() {
    return configFile(QLatin1String(updatePublicKeyName));
}

QStringList AppPaths::translationFiles() {
    const QString name = QStringLiteral("/translations/quorvane_en.qm");
    return {applicationDirectory() + name, root + QStringLiteral("/resources") + name,
            root + QStringLiteral("/bin") + name};
}

QString AppPaths::stickManifestPath(const QString &volumeRoot) {
    return QDir(volumeRoot).filePath(QStringLiteral("QuorvanerUpdate/manifest.json"));
}

QString AppPaths::findUsbManifest() {
    QStringList roots;
    const auto volumes = QStorageInfo::mountedVolumes();
    for (const QStorageInfo &volume : volumes) {
        if (volume.isValid() && volume.isReady())
            roots.append(volume.rootPath());
    }
    return findUsbManifest(roots);
}

QString AppPaths::findUsbManifest(const QStringList &volumeRoots) {
    for (const QString &volumeRoot : volumeRoots) {
        if (volumeRoot.isEmpty()) // would be taken for the current folder
            continue;
        const QFileInfo manifest(stickManifestPath(volumeRoot));
        if (manifest.exists())
            return manifest.absoluteFilePath();
    }
    return QString();
}
