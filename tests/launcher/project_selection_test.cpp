// Which project is picked at the start, and how a path is brought to one that exists.
#include "installation.h"
#include "launcher/launcher_service.h"
#include "signal_log.h"
#include "support/platform.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QSqlDatabase>
#include <QSqlQuery>

using State = LauncherService::State;
using Prompt = LauncherService::UpdatePromptMode;

namespace {

QString projects() {
    return AppPaths::projectsDirectory();
}

QString outside(const QString &name) {
    return support::stageRoot() + "/outside/" + name;
}

void addRecent(const QString &path, int opened) {
    QSqlQuery query(QSqlDatabase::database("quorvane"));
    query.prepare("INSERT OR REPLACE INTO recent_projects VALUES(?,?,?)");
    query.addBindValue(path);
    query.addBindValue("name");
    query.addBindValue(opened);
    QVERIFY(query.exec());
}

} // namespace

namespace {

// As much of the unusual as a name may hold.
QString oddName() {
    return support::onWindows ? QStringLiteral("产线 '3' it's") : QStringLiteral("产线 \"3\" it's");
}

} // namespace

class ProjectSelectionTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void normalizeProjectPath_data();
    void normalizeProjectPath();
    void aRelativePathIsTakenFromTheCurrentFolder();
    void aProjectHereIsFoundInAnotherCase();
    void initializePicks_data();
    void initializePicks();
    void aDefaultOfAnotherInstallationMovesHere();
    void aStaleRecentProjectStays();
    void aPathWithoutAFileStaysThroughInitialize();
    void initializeWorksInEveryState_data();
    void initializeWorksInEveryState();
    void initializeBringsUpFoldersAndDatabase();
    void selectProject_data();
    void selectProject();
    void anotherProjectForgetsWhatWasKnownOfUpdates();
    void theSameProjectKeepsWhatIsKnownOfUpdates();
    void aProjectOfAnotherLetterCaseIsAnother();
};

void ProjectSelectionTest::init() {
    installation::reset();
    QSqlQuery(QSqlDatabase::database("quorvane")).exec("DELETE FROM recent_projects");
}

void ProjectSelectionTest::normalizeProjectPath_data() {
    QTest::addColumn<QString>("path"); // %1: projects folder of this installation
    QTest::addColumn<QString>("expected");
    QTest::newRow("an empty path") << ""
                                   << "";
    QTest::newRow("a blank path") << " \t\n"
                                  << "";
    QTest::newRow("a project that is there") << "%1/line/demo.yslib"
                                             << "%1/line/demo.yslib";
    QTest::newRow("dots are resolved") << "%1/other/.././line//demo.yslib"
                                       << "%1/line/demo.yslib";
    QTest::newRow("a project that is not there") << "%1/none/demo.yslib"
                                                 << "";
    QTest::newRow("the projects folder itself") << "%1"
                                                << "%1";
    QTest::newRow("another installation's project moves here")
        << "/opt/old/USER/projects/line/demo.yslib"
        << "%1/line/demo.yslib";
    QTest::newRow("the mark is found in any case") << "/opt/old/User/PROJECTS/line/demo.yslib"
                                                   << "%1/line/demo.yslib";
    QTest::newRow("a path of another drive with backslashes moves here")
        << "D:\\Old\\USER\\projects\\line\\demo.yslib"
        << "%1/line/demo.yslib";
    QTest::newRow("another installation's project that is not here")
        << "/opt/old/USER/projects/none/demo.yslib"
        << "";
    QTest::newRow("the first of two marks counts")
        << "/a/USER/projects/deep/USER/projects/line/demo.yslib"
        << "%1/line/demo.yslib";
    QTest::newRow("a project outside of the user folder") << "%2"
                                                          << "%2";
    QTest::newRow("a copy elsewhere yields to the one here") << "%3"
                                                             << "%1/line/demo.yslib";
    QTest::newRow("a project elsewhere that is not here stays there") << "%4"
                                                                      << "%4";
    QTest::newRow("a folder counts as existing") << "%1/line"
                                                 << "%1/line";
    const QString odd = "%1/" + oddName() + "/demo.yslib";
    QTest::newRow("blanks, quotes and Chinese characters") << odd << odd;
}

void ProjectSelectionTest::normalizeProjectPath() {
    QFETCH(QString, path);
    QFETCH(QString, expected);
    QVERIFY(!installation::addProject("line").isEmpty());
    QVERIFY(!installation::addProject(oddName()).isEmpty());
    QVERIFY(path.contains("deep") == false || !installation::addProject("deep").isEmpty());
    const QString elsewhere = outside("demo.yslib");
    const QString copied = outside("USER/projects/line/demo.yslib");
    const QString alone = outside("USER/projects/alone/demo.yslib");
    for (const QString &file : {elsewhere, copied, alone})
        QVERIFY(installation::write(file, "{}"));
    if (path.contains("/deep/"))
        QVERIFY(installation::write(projects() + "/deep/USER/projects/line/demo.yslib", "{}"));
    for (QString *text : {&path, &expected})
        *text = text->replace("%1", projects())
                    .replace("%2", elsewhere)
                    .replace("%3", copied)
                    .replace("%4", alone);
    if (path.contains("/deep/"))
        expected = projects() + "/deep/USER/projects/line/demo.yslib";
    QCOMPARE(LauncherService::normalizeProjectPath(path), expected);
}

void ProjectSelectionTest::aRelativePathIsTakenFromTheCurrentFolder() {
    QVERIFY(!installation::addProject("line").isEmpty());
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(projects()));
    const QString found = LauncherService::normalizeProjectPath("line/demo.yslib");
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(found, projects() + "/line/demo.yslib");
}

void ProjectSelectionTest::aProjectHereIsFoundInAnotherCase() {
    if (support::onWindows)
        QSKIP("Windows takes one case for the other");
    // Only a file system that tells cases apart can hold both names.
    const QString here = installation::addProject("line");
    QString shouted = here;
    shouted.replace("/projects/line/", "/PROJECTS/line/");
    QVERIFY(installation::write(shouted, "{}"));
    QCOMPARE(LauncherService::normalizeProjectPath(shouted), shouted);
    QVERIFY(QFile::remove(here));
    QCOMPARE(LauncherService::normalizeProjectPath(shouted), shouted);
}

void ProjectSelectionTest::initializePicks_data() {
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("recent");
    QTest::addColumn<bool>("demo");
    QTest::addColumn<QString>("expected");
    QTest::newRow("nothing when nothing is known") << ""
                                                   << "" << false << "";
    QTest::newRow("the demo when nothing else is known") << ""
                                                         << "" << true << "demo";
    QTest::newRow("the stored default before all others") << "line"
                                                          << "recent" << true << "line";
    QTest::newRow("the newest recent project without a default") << ""
                                                                 << "recent" << true << "recent";
    QTest::newRow("the recent project for a default that is gone") << "none"
                                                                   << "recent" << true << "recent";
    QTest::newRow("the demo for a default that is gone") << "none"
                                                         << "" << true << "demo";
    QTest::newRow("nothing for a default that is gone and no demo") << "none"
                                                                    << "" << false << "";
}

void ProjectSelectionTest::initializePicks() {
    QFETCH(QString, stored);
    QFETCH(QString, recent);
    QFETCH(bool, demo);
    QFETCH(QString, expected);
    const auto file = [](const QString &folder) {
        return projects() + '/' + folder + "/demo.yslib";
    };
    QVERIFY(!installation::addProject("line").isEmpty());
    if (demo)
        QVERIFY(!installation::addProject("demo").isEmpty());
    if (!stored.isEmpty())
        SettingsStore::instance().setDefaultProject(file(stored));
    if (!recent.isEmpty()) {
        addRecent(installation::addProject(recent), 2);
        addRecent(installation::addProject("older"), 1);
    }
    LauncherService service;
    SignalLog log(service);
    service.initialize();
    QCOMPARE(service.projectPath, expected.isEmpty() ? QString() : file(expected));
    QCOMPARE(service.state, State::Idle);
    QCOMPARE(log.take(),
             QStringList(expected.isEmpty() ? "status 未选择项目。按 F8 进入修复模式。"
                                            : "status 就绪，即将启动：" + file(expected)));
}

void ProjectSelectionTest::aDefaultOfAnotherInstallationMovesHere() {
    const QString here = installation::addProject("line");
    const QString old = outside("USER/projects/line/demo.yslib");
    QVERIFY(installation::write(old, "{}"));
    SettingsStore::instance().setDefaultProject(old);
    LauncherService service;
    service.initialize();
    QCOMPARE(service.projectPath, here);
}

// A row beyond the newest 100 is not pruned, and the recent project is not tested for its file:
// the precheck says in its own words that it is gone.
void ProjectSelectionTest::aStaleRecentProjectStays() {
    QVERIFY(!installation::addProject("demo").isEmpty());
    const auto gone = [](int opened) {
        return support::rooted(QString("/gone/%1.yslib").arg(opened));
    };
    QSqlDatabase database = QSqlDatabase::database("quorvane");
    QVERIFY(database.transaction());
    for (int opened = 1; opened <= 101; ++opened)
        addRecent(gone(opened), opened);
    QVERIFY(database.commit());
    LauncherService service;
    SignalLog log(service);
    service.initialize();
    QCOMPARE(service.projectPath, gone(1));
    QCOMPARE(log.take(), QStringList("status 就绪，即将启动：" + gone(1)));
    service.updatesHandled = true;
    service.runStartFlow();
    QVERIFY(service.statusText.startsWith("Project file not found: " + gone(1)));
}

void ProjectSelectionTest::aPathWithoutAFileStaysThroughInitialize() {
    QVERIFY(!installation::addProject("demo").isEmpty());
    LauncherService service;
    service.projectPath = "/gone/before.yslib";
    service.initialize();
    QCOMPARE(service.projectPath, QString("/gone/before.yslib"));
}

void ProjectSelectionTest::initializeWorksInEveryState_data() {
    QTest::addColumn<State>("from");
    for (int i = 0; i <= int(State::Failed); ++i) {
        const State from = static_cast<State>(i);
        QTest::addRow("from %s", qPrintable(SignalLog::name(from))) << from;
    }
}

void ProjectSelectionTest::initializeWorksInEveryState() {
    QFETCH(State, from);
    const QString demo = installation::addProject("demo");
    LauncherService service;
    service.state = from;
    SignalLog log(service);
    service.initialize();
    QStringList expected{"status 就绪，即将启动：" + demo};
    if (from != State::Idle)
        expected.prepend("state Idle");
    QCOMPARE(log.take(), expected);
}

void ProjectSelectionTest::initializeBringsUpFoldersAndDatabase() {
    if (support::onWindows)
        QSKIP("an open database cannot be taken away on Windows");
    QVERIFY(QDir(AppPaths::dataDirectory()).removeRecursively());
    LauncherService service;
    service.initialize();
    QVERIFY(QFileInfo::exists(AppPaths::databasePath()));
    QVERIFY(QFileInfo::exists(AppPaths::dumpsDirectory()));
}

void ProjectSelectionTest::selectProject_data() {
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("expected");
    QTest::newRow("a project that is there") << "%1/line/demo.yslib"
                                             << "%1/line/demo.yslib";
    QTest::newRow("a project of another installation") << "/opt/USER/projects/line/demo.yslib"
                                                       << "%1/line/demo.yslib";
    QTest::newRow("a file that is not there stays as typed") << "/no/such/place.yslib"
                                                             << "/no/such/place.yslib";
    QTest::newRow("a typed path is resolved") << "/no/such/../place.yslib"
                                              << "/no/place.yslib";
    QTest::newRow("a per cent sign is no placeholder") << "/no/%1%2/place.yslib"
                                                       << "/no/%1%2/place.yslib";
}

void ProjectSelectionTest::selectProject() {
    QFETCH(QString, typed);
    QFETCH(QString, expected);
    QVERIFY(!installation::addProject("line").isEmpty());
    for (QString *text : {&typed, &expected}) {
        if (text->startsWith("%1"))
            text->replace(0, 2, projects());
    }
    expected = support::rooted(expected);
    LauncherService service;
    SignalLog log(service);
    service.selectProject(typed);
    QCOMPARE(service.projectPath, expected);
    QCOMPARE(log.take(), QStringList({"prompt None", "status 已选项目：" + expected}));
    QCOMPARE(SettingsStore::instance().defaultProject(), QString());
}

void ProjectSelectionTest::anotherProjectForgetsWhatWasKnownOfUpdates() {
    LauncherService service;
    service.projectPath = "/old.yslib";
    service.updateAvailable = service.updateCheckDone = service.remindLater = true;
    service.countdownPaused = service.updatesHandled = service.reloadModelsOnLaunch = true;
    service.snapshot.manifestText = "{}";
    service.snapshot.fromUsb = true;
    service.promptMode = Prompt::UsbBanner;
    service.updateSummary = "x";
    service.lastCheckStartMs = 7;
    service.selection.project = false;
    service.taskId = "check_1";
    QStringList pathAtSignal;
    connect(&service, &LauncherService::updatePromptChanged, this,
            [&] { pathAtSignal << service.projectPath; });
    service.selectProject("/new.yslib");
    QCOMPARE(pathAtSignal, QStringList("/old.yslib"));
    QVERIFY(!service.updateAvailable && !service.updateCheckDone && !service.remindLater);
    QVERIFY(!service.countdownPaused);
    QVERIFY(service.snapshot.manifestText.isEmpty() && !service.snapshot.fromUsb);
    QCOMPARE(service.promptMode, Prompt::None);
    QCOMPARE(service.updateSummary, QString());
    // What is not about the project stays.
    QVERIFY(service.updatesHandled && service.reloadModelsOnLaunch);
    QCOMPARE(service.lastCheckStartMs, qint64(7));
    QVERIFY(!service.selection.project);
    QCOMPARE(service.taskId, QString("check_1"));
}

void ProjectSelectionTest::theSameProjectKeepsWhatIsKnownOfUpdates() {
    const QString here = installation::addProject("line");
    LauncherService service;
    service.projectPath = here;
    service.updateAvailable = true;
    SignalLog log(service);
    service.selectProject(projects() + "/line/./demo.yslib");
    QVERIFY(service.updateAvailable);
    QCOMPARE(log.take(), QStringList());
}

// On a system that tells cases apart these are two projects; elsewhere they are taken for two.
void ProjectSelectionTest::aProjectOfAnotherLetterCaseIsAnother() {
    const QString path = support::rooted("/no/such/line.yslib");
    const QString other = support::rooted("/no/such/LINE.yslib");
    LauncherService service;
    service.projectPath = path;
    service.updateAvailable = true;
    SignalLog log(service);
    service.selectProject(other);
    QCOMPARE(service.projectPath, other);
    QVERIFY(!service.updateAvailable);
    QCOMPARE(log.take(), QStringList({"prompt None", "status 已选项目：" + other}));
}

QUORVANE_TEST_MAIN(QCoreApplication, ProjectSelectionTest)
#include "project_selection_test.moc"
