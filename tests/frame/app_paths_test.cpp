// Where a program takes its folders to be, in each layout it can lie in, and what the first start
// makes: a copied probe tells its own paths from made-up machines.
#include "frame/app_paths.h"

#include "support/platform.h"
#include "support/staged_main.h"

#include <QDirIterator>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStorageInfo>
#include <QTemporaryDir>

namespace {

// A made-up machine. All paths are relative to its top, which lies deeper below the real root than
// the search for a root folder ever climbs.
class Machine {
public:
    Machine() { make({"data/"}); }

    QString path(const QString &relative) const {
        return QDir(dir.path()).filePath("1/2/3/4/5/6/" + relative);
    }

    QString relative(const QString &path) const {
        return QDir(this->path("")).relativeFilePath(path);
    }

    // A name with a slash at its end is a folder, any other a file with its own name in it.
    void make(const QStringList &names) const {
        for (const QString &name : names) {
            const QString target = path(name);
            QDir().mkpath(name.endsWith('/') ? target : QFileInfo(target).path());
            if (name.endsWith('/'))
                continue;
            QFile file(target);
            if (!file.open(QIODevice::WriteOnly) || file.write(name.toUtf8()) < 0)
                qFatal("cannot write %s", qPrintable(target));
        }
    }

    // What a program in `folder` prints.
    QByteArray run(const QString &folder, const QStringList &arguments) const {
        make({folder + "/"});
        const QString program = path(folder + "/frame_probe");
        if (!QFile::exists(program) && !QFile::copy(FRAME_PROBE, program))
            qFatal("cannot copy the probe to %s", qPrintable(program));
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("XDG_DATA_HOME", path("data"));
        QProcess process;
        process.setProcessEnvironment(environment);
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(program, arguments);
        if (!process.waitForFinished(60000) || process.exitCode() != 0)
            qFatal("the probe failed");
        return process.readAllStandardOutput().trimmed();
    }

    QVariantMap paths(const QString &folder) const { return parsed(folder, {"paths"}); }

    // The paths that a program in `folder` prints, from the machine's top.
    QVariantMap parsed(const QString &folder, const QStringList &arguments) const {
        return parsed(run(folder, arguments));
    }

    QVariantMap parsed(const QByteArray &line) const {
        QVariantMap paths = QJsonDocument::fromJson(line).object().toVariantMap();
        for (QVariant &value : paths) {
            if (value.type() == QVariant::String)
                value = relative(value.toString());
        }
        return paths;
    }

    QString content(const QString &name) const {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : "(none)";
    }

    bool has(const QString &name) const { return QFileInfo::exists(path(name)); }

    // Everything in a folder, hidden entries too, with the time of its last change.
    QStringList listing(const QString &folder) const {
        QStringList entries;
        QDirIterator all(path(folder), QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
        while (all.hasNext()) {
            const QString entry = all.next();
            entries.append(relative(entry) + ' ' +
                           QString::number(all.fileInfo().lastModified().toMSecsSinceEpoch()));
        }
        entries.sort();
        return entries << QFileInfo(path(folder)).lastModified().toString(Qt::ISODateWithMs);
    }

private:
    QTemporaryDir dir;
};

QString inData(const QString &name) {
    return QDir(support::stageRoot()).filePath("data/Quorvane" + name);
}

} // namespace

class AppPathsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void dataPathsFollowTheDataFolder();
    void dataPathsFollowADataFolderThatMoves();
    void findsTheRoot_data();
    void findsTheRoot();
    void onlyTwoOperationsInitialise_data();
    void onlyTwoOperationsInitialise();
    void findsFoldersInEachLayout_data();
    void findsFoldersInEachLayout();
    void everyAnswerIsBuiltAfresh_data();
    void everyAnswerIsBuiltAfresh();
    void initialisingMakesAllFolders();
    void foldersThatCannotBeMadeDoNotStopIt();
    void movedInstallationFindsItsNewPlace();
    void projectsFolderExistsWhenItIsAskedFor();
    void demoIsSeeded();
    void demoIsSeededOnce();
    void demoThatIsThereIsLeftAlone();
    void fileInTheDemosPlaceIsNotOverwritten();
    void installationWithoutExamplesIsMarkedAndNeverTriesAgain();
    void anotherInstallationIsOnlyLookedAt_data();
    void anotherInstallationIsOnlyLookedAt();
    void inspectedInstallationOfWindowsHasItsLauncher();
    void stickWithTheManifestIsFound_data();
    void stickWithTheManifestIsFound();
    void volumeWithoutARootIsNotTheCurrentFolder();
    void mountedVolumesAreWalkedInTheirOrder();
};

void AppPathsTest::dataPathsFollowTheDataFolder() {
    QCOMPARE(AppPaths::dataDirectory(), inData(""));
    QCOMPARE(AppPaths::databasePath(), inData("/Quorvane.db"));
    QCOMPARE(AppPaths::launchLogPath(), inData("/launcher.log"));
    QCOMPARE(AppPaths::dumpsDirectory(), inData("/dumps"));
    QCOMPARE(AppPaths::launchNoncePath(4711), inData("/launch_nonce_4711.txt"));
    QCOMPARE(AppPaths::updateTempPath("a.zip"), inData("/update/temp/a.zip"));
    QCOMPARE(AppPaths::updateTempPath("/abs/a.zip"),
             support::rootedBeside(inData(""), "/abs/a.zip"));
    QCOMPARE(AppPaths::updateBackupDirectory(), inData("/update/backup"));
    QCOMPARE(AppPaths::updateCacheDirectory(), inData("/update/cache"));
}

void AppPathsTest::dataPathsFollowADataFolderThatMoves() {
    if (support::onWindows)
        QSKIP("the system's folder is not told by the environment there");
    const auto paths = [] {
        return QStringList{AppPaths::dataDirectory(),         AppPaths::databasePath(),
                           AppPaths::launchLogPath(),         AppPaths::dumpsDirectory(),
                           AppPaths::launchNoncePath(1),      AppPaths::updateTempPath("a"),
                           AppPaths::updateBackupDirectory(), AppPaths::updateCacheDirectory()};
    };
    const QStringList before = paths();
    const QByteArray folder = qgetenv("XDG_DATA_HOME");
    const QTemporaryDir other;
    qputenv("XDG_DATA_HOME", other.path().toLocal8Bit());
    const QStringList after = paths();
    qputenv("XDG_DATA_HOME", folder);
    QStringList expected = before;
    expected.replaceInStrings(support::stageRoot() + "/data", other.path());
    QVERIFY(expected != before);
    QCOMPARE(after, expected);
    QCOMPARE(paths(), before);
}

void AppPathsTest::findsTheRoot_data() {
    QTest::addColumn<QStringList>("present");
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("root");
    QTest::addColumn<bool>("repository");
    const auto row = [](const char *name, const QStringList &present, const QString &folder,
                        const QString &root, bool repository) {
        QTest::newRow(name) << present << folder << root << repository;
    };
    row("an installation is its own root", {}, "app/bin", "app/bin", false);
    row("the project file in the program's folder", {"app/Quorvane.pro"}, "app", "app", true);
    row("a folder src in the program's folder", {"app/src/"}, "app", "app", false);
    row("the project file above", {"tree/Quorvane.pro"}, "tree/build/dev/bin", "tree", true);
    row("a folder src above hijacks an installation", {"home/src/"}, "home/apps/app/bin", "home",
        false);
    row("a file src is no sign", {"app/src"}, "app/bin", "app/bin", false);
    row("a folder with the project file's name is a sign", {"app/Quorvane.pro/"}, "app/bin", "app",
        true);
    row("the nearest sign wins", {"tree/Quorvane.pro", "tree/build/src/"}, "tree/build/dev/bin",
        "tree/build", false);
    row("five levels above is within reach", {"tree/src/"}, "tree/1/2/3/4/5", "tree", false);
    row("six levels above is out of reach", {"tree/src/", "tree/Quorvane.pro"}, "tree/1/2/3/4/5/6",
        "tree/1/2/3/4/5/6", false);
    row("a path with blanks and Chinese characters", {"产线 一/Quorvane.pro"}, "产线 一/build/bin",
        "产线 一", true);
}

void AppPathsTest::findsTheRoot() {
    QFETCH(QStringList, present);
    QFETCH(QString, folder);
    const Machine machine;
    machine.make(present);
    const QVariantMap paths = machine.paths(folder);
    QTEST(paths["root"].toString(), "root");
    QTEST(paths["repository"].toBool(), "repository");
    QCOMPARE(paths["data"].toString(), QString("data/Quorvane"));
}

void AppPathsTest::onlyTwoOperationsInitialise_data() {
    QTest::addColumn<bool>("initialises");
    QTest::newRow("isRepositoryLayout") << true;
    QTest::newRow("installRoot") << true;
    QTest::newRow("repositoryRoot") << false;
    QTest::newRow("pluginsDirectory") << false;
    QTest::newRow("configDirectory") << false;
    QTest::newRow("userDirectory") << false;
}

void AppPathsTest::onlyTwoOperationsInitialise() {
    QFETCH(bool, initialises);
    const Machine machine;
    const QString root =
        QString::fromUtf8(machine.run("app/bin", {"first", QTest::currentDataTag()}));
    QCOMPARE(root, initialises ? machine.path("app/bin") : QString());
    QCOMPARE(machine.has("data/Quorvane"), initialises);
    QCOMPARE(machine.has("app/USER"), initialises);
}

void AppPathsTest::findsFoldersInEachLayout_data() {
    QTest::addColumn<QStringList>("present");
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QStringList &present, const QString &folder,
                        const QString &operation, const QString &expected) {
        QTest::newRow(name) << present << folder << operation << expected;
    };
    row("the user folder of an installation lies beside the program's folder", {}, "app/bin",
        "user", "app/USER");
    row("the user folder beside the program's folder wins over a source tree",
        {"tree/Quorvane.pro", "tree/examples/projects/", "tree/build/USER/"}, "tree/build/bin",
        "user", "tree/build/USER");
    row("the user folder of a source tree lies in its root",
        {"tree/Quorvane.pro", "tree/examples/projects/"}, "tree/build/dev/bin", "user",
        "tree/USER");
    row("a source tree without examples has its user folder beside the program's folder",
        {"tree/Quorvane.pro"}, "tree/build/bin", "user", "tree/build/USER");
    row("a file USER beside the program's folder does not count",
        {"tree/src/", "tree/examples/projects/", "tree/build/USER"}, "tree/build/bin", "user",
        "tree/USER");

    row("plug-ins lie beside the program when that folder exists",
        {"tree/src/", "tree/bin/plugins/"}, "tree/bin", "plugins", "tree/bin/plugins");
    row("plug-ins lie in the root otherwise", {"tree/src/"}, "tree/bin", "plugins", "tree/plugins");

    row("the configuration of an installation lies beside the program",
        {"app/bin/config/FunctionLib.ini"}, "app/bin", "config", "app/bin/config");
    row("the configuration of a source tree wins",
        {"tree/src/", "tree/resources/config/FunctionLib.ini", "tree/bin/config/FunctionLib.ini"},
        "tree/bin", "config", "tree/resources/config");
    row("a folder config without the library's file is passed over",
        {"tree/src/", "tree/resources/config/"}, "tree/bin", "config", "tree/bin/config");

    row("the function library of an installation", {"app/bin/config/FunctionLib.ini"}, "app/bin",
        "library", "app/bin/config/FunctionLib.ini");
    row("the function library falls back to the root", {}, "app/bin", "library",
        "app/bin/resources/config/FunctionLib.ini");
    row("the public key of an installation", {"app/bin/config/update.pub"}, "app/bin", "key",
        "app/bin/config/update.pub");
    row("the public key falls back to the root", {"app/bin/config/FunctionLib.ini"}, "app/bin",
        "key", "app/bin/resources/config/update.pub");

    row("a folder python above marks the install root", {"app/python/", "app/src/"}, "app/bin",
        "install", "app");
    row("a folder USER above marks the install root", {"app/USER/"}, "app/bin", "install", "app");
    row("a source tree's root is its install root",
        {"tree/Quorvane.pro", "tree/examples/projects/"}, "tree/build/dev/bin", "install", "tree");
    row("a folder src alone makes no install root", {"tree/src/", "tree/examples/projects/"},
        "tree/build/bin", "install", "tree/build");
}

void AppPathsTest::findsFoldersInEachLayout() {
    QFETCH(QStringList, present);
    QFETCH(QString, folder);
    QFETCH(QString, operation);
    const Machine machine;
    machine.make(present);
    QTEST(machine.paths(folder)[operation].toString(), "expected");
}

void AppPathsTest::everyAnswerIsBuiltAfresh_data() {
    QTest::addColumn<QStringList>("present");
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("comes"); // while the program runs
    QTest::addColumn<QString>("then");
    const auto row = [](const char *name, const QStringList &present, const QString &folder,
                        const QString &operation, const QString &first, const QString &comes,
                        const QString &then) {
        QTest::newRow(name) << present << folder << operation << first << comes << then;
    };
    const QStringList tree{"tree/Quorvane.pro", "tree/examples/projects/"};
    row("the user folder", tree, "tree/build/bin", "user", "tree/USER", "tree/build/USER/",
        "tree/build/USER");
    row("the projects follow it", tree, "tree/build/bin", "projects", "tree/USER/projects",
        "tree/build/USER/", "tree/build/USER/projects");
    row("the install root", tree, "tree/build/dev/bin", "install", "tree", "tree/build/dev/python/",
        "tree/build/dev");
    row("the layout", {"tree/src/"}, "tree/bin", "repository", "false", "tree/Quorvane.pro",
        "true");
    row("the plug-ins", {"tree/src/"}, "tree/bin", "plugins", "tree/plugins", "tree/bin/plugins/",
        "tree/bin/plugins");
    row("the configuration", {"tree/src/"}, "tree/bin", "config", "tree/bin/config",
        "tree/resources/config/FunctionLib.ini", "tree/resources/config");
    row("the function library", {}, "app/bin", "library",
        "app/bin/resources/config/FunctionLib.ini", "app/bin/config/FunctionLib.ini",
        "app/bin/config/FunctionLib.ini");
    row("the public key", {}, "app/bin", "key", "app/bin/resources/config/update.pub",
        "app/bin/config/update.pub", "app/bin/config/update.pub");
}

void AppPathsTest::everyAnswerIsBuiltAfresh() {
    QFETCH(QStringList, present);
    QFETCH(QString, folder);
    QFETCH(QString, operation);
    QFETCH(QString, comes);
    const Machine machine;
    machine.make(present);
    const QList<QByteArray> lines =
        machine.run(folder, {"changes", machine.path(comes)}).split('\n');
    QCOMPARE(lines.size(), 2);
    QTEST(machine.parsed(lines.first())[operation].toString(), "first");
    QTEST(machine.parsed(lines.last())[operation].toString(), "then");
}

void AppPathsTest::initialisingMakesAllFolders() {
    const Machine machine;
    machine.paths("app/bin");
    for (const QString folder :
         {"data/Quorvane", "data/Quorvane/dumps", "data/Quorvane/update/temp",
          "data/Quorvane/update/backup", "data/Quorvane/update/cache", "app/bin/plugins",
          "app/USER", "app/USER/config", "app/USER/projects"})
        QVERIFY2(QFileInfo(machine.path(folder)).isDir(), qPrintable(folder));
}

void AppPathsTest::foldersThatCannotBeMadeDoNotStopIt() {
    const Machine machine;
    machine.make({"data/Quorvane", "app/USER", "app/bin/plugins"}); // files in their way
    QCOMPARE(machine.paths("app/bin")["user"].toString(), QString("app/USER"));
}

// Nothing is stored, so the folder can be moved.
void AppPathsTest::movedInstallationFindsItsNewPlace() {
    const Machine machine;
    machine.make({"app/bin/config/FunctionLib.ini"});
    machine.paths("app/bin");
    QVERIFY(QDir().rename(machine.path("app"), machine.path("moved")));
    const QVariantMap paths = machine.paths("moved/bin");
    QCOMPARE(paths["root"].toString(), QString("moved/bin"));
    QCOMPARE(paths["user"].toString(), QString("moved/USER"));
    QCOMPARE(paths["library"].toString(), QString("moved/bin/config/FunctionLib.ini"));
}

void AppPathsTest::projectsFolderExistsWhenItIsAskedFor() {
    const QString user = AppPaths::userDirectory();
    QVERIFY(!QFileInfo::exists(user));
    QCOMPARE(AppPaths::projectsDirectory(), user + "/projects");
    QVERIFY(QFileInfo(user + "/projects").isDir());
    QVERIFY(!user.contains(".."));
}

void AppPathsTest::demoIsSeeded() {
    const Machine machine;
    const QString demo = "app/bin/examples/projects/demo/";
    machine.make({demo + "demo.yslib", demo + "scripts/main.ys", demo + ".hidden",
                  demo + ".hidden_folder/file"});
    machine.paths("app/bin");
    const QString copy = "app/bin/USER/projects/"; // the examples make it a source tree
    QCOMPARE(machine.content(copy + "demo/demo.yslib"), demo + "demo.yslib");
    QCOMPARE(machine.content(copy + "demo/scripts/main.ys"), demo + "scripts/main.ys");
    QVERIFY(!machine.has(copy + "demo/.hidden"));
    QVERIFY(!machine.has(copy + "demo/.hidden_folder"));
    QCOMPARE(machine.content(copy + ".demo_seed_done"), QString("1"));
}

void AppPathsTest::demoIsSeededOnce() {
    const Machine machine;
    const QString projects = "app/USER/projects/";
    machine.make({"app/USER/", "app/bin/examples/projects/demo/demo.yslib"});
    machine.paths("app/bin");
    QVERIFY(machine.has(projects + "demo/demo.yslib"));
    QVERIFY(QDir(machine.path(projects + "demo")).removeRecursively());
    machine.paths("app/bin");
    QVERIFY(!machine.has(projects + "demo"));
}

void AppPathsTest::demoThatIsThereIsLeftAlone() {
    const Machine machine;
    machine.make({"app/USER/projects/demo/mine.ys", "app/bin/examples/projects/demo/demo.yslib"});
    machine.paths("app/bin");
    QVERIFY(!machine.has("app/USER/projects/demo/demo.yslib"));
    QVERIFY(machine.has("app/USER/projects/.demo_seed_done"));
}

void AppPathsTest::fileInTheDemosPlaceIsNotOverwritten() {
    const Machine machine;
    machine.make({"app/USER/projects/demo", "app/bin/examples/projects/demo/demo.yslib"});
    machine.paths("app/bin");
    QCOMPARE(machine.content("app/USER/projects/demo"), QString("app/USER/projects/demo"));
}

void AppPathsTest::installationWithoutExamplesIsMarkedAndNeverTriesAgain() {
    const Machine machine;
    machine.paths("app/bin");
    QCOMPARE(machine.content("app/USER/projects/.demo_seed_done"), QString("1"));
    machine.make({"app/bin/examples/projects/demo/demo.yslib"});
    machine.paths("app/bin");
    QVERIFY(!machine.has("app/USER/projects/demo"));
}

void AppPathsTest::anotherInstallationIsOnlyLookedAt_data() {
    QTest::addColumn<QStringList>("present");
    QTest::newRow("an installation that ran")
        << QStringList{"app/USER/projects/demo/demo.yslib", "app/bin/plugins/",
                       "app/bin/config/update.pub", "app/bin/config/FunctionLib.ini"};
    QTest::newRow("one that never ran, with a demo to seed")
        << QStringList{"app/bin/examples/projects/demo/demo.yslib", "app/bin/config/update.pub",
                       "app/bin/config/FunctionLib.ini"};
}

void AppPathsTest::anotherInstallationIsOnlyLookedAt() {
    QFETCH(QStringList, present);
    const Machine machine;
    machine.make(present);
    machine.make({"tool/"});
    const QStringList before = machine.listing("app");
    const QVariantMap paths =
        machine.parsed("tool", {"inspect", machine.path("app/bin")}); // initialises it, too
    QCOMPARE(machine.listing("app"), before);
    QVERIFY(!machine.has("data/Quorvane"));
    QVERIFY(!machine.has("USER"));
    QCOMPARE(paths["program"].toString(), QString("app/bin"));
    QCOMPARE(paths["launcher"].toString(), QString("app/bin/Quorvaner"));
    QCOMPARE(paths["root"].toString(), QString("app/bin"));
    QCOMPARE(paths["key"].toString(), QString("app/bin/config/update.pub"));
    QCOMPARE(paths["library"].toString(), QString("app/bin/config/FunctionLib.ini"));
    QCOMPARE(paths["data"].toString(), QString("data/Quorvane"));
    QCOMPARE(paths["projects"].toString(), paths["user"].toString() + "/projects");
}

void AppPathsTest::inspectedInstallationOfWindowsHasItsLauncher() {
    const Machine machine;
    machine.make({"app/bin/Quorvaner.exe"});
    const QVariantMap paths = machine.parsed("tool", {"inspect", machine.path("app/bin")});
    QCOMPARE(paths["launcher"].toString(), QString("app/bin/Quorvaner.exe"));
}

void AppPathsTest::stickWithTheManifestIsFound_data() {
    QTest::addColumn<QStringList>("present");
    QTest::addColumn<QStringList>("volumes");
    QTest::addColumn<QString>("expected");
    const QString one = "one/QuorvanerUpdate/manifest.json";
    const QString two = "two/QuorvanerUpdate/manifest.json";
    QTest::newRow("no volume") << QStringList() << QStringList() << "";
    QTest::newRow("a volume without it") << QStringList("one/") << QStringList("one") << "";
    QTest::newRow("the only one") << QStringList(one) << QStringList("one") << one;
    QTest::newRow("the second volume has it")
        << QStringList{"one/", two} << QStringList{"one", "two"} << two;
    QTest::newRow("both have it and the first wins")
        << QStringList{one, two} << QStringList{"one", "two"} << one;
    QTest::newRow("the order of the volumes decides")
        << QStringList{one, two} << QStringList{"two", "one"} << two;
    QTest::newRow("a folder of that name counts")
        << QStringList(one + "/") << QStringList("one") << one;
    QTest::newRow("a volume that is gone") << QStringList(two) << QStringList{"one", "two"} << two;
}

void AppPathsTest::stickWithTheManifestIsFound() {
    QFETCH(QStringList, present);
    QFETCH(QStringList, volumes);
    const Machine machine;
    machine.make(present);
    for (QString &volume : volumes)
        volume = machine.path(volume);
    const QString found = AppPaths::findUsbManifest(volumes);
    QTEST(found.isEmpty() ? found : machine.relative(found), "expected");
}

void AppPathsTest::volumeWithoutARootIsNotTheCurrentFolder() {
    const Machine machine;
    machine.make({"here/QuorvanerUpdate/manifest.json"});
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(machine.path("here")));
    const QString found = AppPaths::findUsbManifest(QStringList(""));
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(found, QString());
}

void AppPathsTest::mountedVolumesAreWalkedInTheirOrder() {
    QStringList ready;
    const auto volumes = QStorageInfo::mountedVolumes();
    for (const QStorageInfo &volume : volumes) {
        if (volume.isValid() && volume.isReady())
            ready.append(volume.rootPath());
    }
    QVERIFY(!ready.isEmpty());
    QCOMPARE(AppPaths::findUsbManifest(), AppPaths::findUsbManifest(ready));
}

QUORVANE_TEST_MAIN(QCoreApplication, AppPathsTest)
#include "app_paths_test.moc"
