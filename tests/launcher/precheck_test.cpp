// Whether a project may run: what the flow makes of the validator's findings and of the core
// plug-in.
#include "installation.h"
#include "launcher/launcher_service.h"
#include "signal_log.h"
#include "support/platform.h"
#include "support/staged_main.h"

#include <QCoreApplication>

using State = LauncherService::State;

namespace {

// Two errors and no warning.
constexpr char brokenProject[] = R"({"schemaVersion": 2,
"project": {"name": "line", "displayName": "Line", "createdAt": "x"},
"scripts": [{"id": "main", "path": "main.ys", "role": "chief"}],
"tasks": {"main": {"entryScriptId": "main"}}})";

constexpr char brokenErrors[] = "[Error] schemaVersion: 不支持的 schemaVersion；期望值为 1\n"
                                "[Error] scripts[0].role: script role 必须为 main、sub 或 module";

// Two warnings and no error.
constexpr char doubtfulProject[] = R"({"schemaVersion": 1,
"project": {"name": "line", "displayName": "Line", "createdAt": "x"},
"scripts": [{"id": "main", "path": "main.ys", "role": "main"}],
"tasks": {"main": {"entryScriptId": "main"},
          "subs": [{"entryScriptId": "main", "writesGlobals": ["width"]}]},
"processGroups": [{"aggregate": null}]})";

constexpr char doubtfulWarnings[] =
    "[Warning] tasks.subs[0].writesGlobals: writesGlobals 项 'width' 不符合 {camId}_{metric} 命名\n"
    "[Warning] processGroups[0]: 不支持 aggregate 字段 (T9:A)；请使用 main 任务脚本";

QString pluginPath() {
    return installation::appPath("plugins/CoreOperators.dll");
}

QString pluginMissing() {
    return "Core plugin missing: " + pluginPath();
}

QString refusal(const QString &errors) {
    return "项目预检失败：\n" + errors + "\n日志：" + AppPaths::launchLogPath();
}

QStringList refused(State from, const QString &text) {
    QStringList expected{"status 正在执行项目预检...", "state RepairMode", "status " + text,
                         "precheckFailed " + text};
    if (from != State::Precheck)
        expected.prepend("state Precheck");
    return expected;
}

// The log without what the launch adds.
QStringList precheckLines() {
    QStringList lines = installation::takeLog();
    const int launch = lines.indexOf(QRegularExpression("^LineRunner.exe not found.*"));
    return launch < 0 ? lines : lines.mid(0, launch);
}

} // namespace

class PrecheckTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void findings_data();
    void findings();
    void aProjectThatIsNotThere_data();
    void aProjectThatIsNotThere();
    void inAnotherLanguage();
    void aFolderOfThatNameIsTheValidatorsToRefuse();
    void aFailureLeadsToRepairModeFromEveryState_data();
    void aFailureLeadsToRepairModeFromEveryState();
    void skippingThePluginLasts();
    void aProjectMendedMeanwhilePassesTheNextTime();

private:
    QString projectFile;
};

void PrecheckTest::init() {
    installation::reset();
    projectFile = installation::addRunnableProject("line");
    (void)installation::takeLog();
}

void PrecheckTest::findings_data() {
    QTest::addColumn<QString>("text"); // of the project file; empty: as it is
    QTest::addColumn<bool>("plugin");
    QTest::addColumn<bool>("skip");
    QTest::addColumn<QString>("errors");
    QTest::addColumn<QString>("warnings");
    const QString clean;
    QTest::newRow("a clean project") << clean << true << false << ""
                                     << "";
    QTest::newRow("a missing plug-in alone") << clean << false << false << pluginMissing() << "";
    QTest::newRow("a missing plug-in that is skipped gives no word") << clean << false << true << ""
                                                                     << "";
    QTest::newRow("warnings alone pass, and stand in the log")
        << doubtfulProject << true << false << "" << doubtfulWarnings;
    QTest::newRow("warnings with a plug-in that is skipped")
        << doubtfulProject << false << true << "" << doubtfulWarnings;
    QTest::newRow("warnings are not told beside an error")
        << doubtfulProject << false << false << pluginMissing() << "";
    QTest::newRow("several errors stand in one text")
        << brokenProject << true << false << brokenErrors << "";
    QTest::newRow("the plug-in stands last")
        << brokenProject << false << false << QString(brokenErrors) + '\n' + pluginMissing() << "";
    QTest::newRow("a plug-in that is skipped saves no broken project")
        << brokenProject << false << true << brokenErrors << "";
}

void PrecheckTest::findings() {
    QFETCH(QString, text);
    QFETCH(bool, plugin);
    QFETCH(bool, skip);
    QFETCH(QString, errors);
    QFETCH(QString, warnings);
    if (!text.isEmpty())
        QVERIFY(installation::write(projectFile, text));
    if (!plugin)
        QVERIFY(QFile::remove(pluginPath()));
    LauncherService service;
    service.projectPath = projectFile;
    service.updatesHandled = true;
    service.setSkipCorePluginPrecheck(skip);
    SignalLog log(service);
    service.runStartFlow();
    if (!errors.isEmpty()) {
        QCOMPARE(log.take(), refused(State::Idle, refusal(errors)));
        QCOMPARE(precheckLines(), refusal(errors).split('\n'));
        return;
    }
    QCOMPARE(log.take().mid(0, 3),
             QStringList({"state Precheck", "status 正在执行项目预检...", "state Launch"}));
    const QString warned = warnings.isEmpty() ? "" : "Precheck warnings:\n" + warnings + '\n';
    QCOMPARE(precheckLines(), (warned + "Precheck passed for " + projectFile).split('\n'));
}

void PrecheckTest::aProjectThatIsNotThere_data() {
    QTest::addColumn<QString>("path");
    QTest::newRow("a path to nowhere") << support::rooted("/no/where/line.yslib");
    QTest::newRow("placeholders in a path stay") << support::rooted("/no/%1%2/line.yslib");
}

void PrecheckTest::aProjectThatIsNotThere() {
    QFETCH(QString, path);
    QVERIFY(QFile::remove(pluginPath())); // not even looked for
    LauncherService service;
    service.projectPath = path;
    SignalLog log(service);
    service.runStartFlow();
    const QString text = "Project file not found: " + path + "\nLog: " + AppPaths::launchLogPath();
    QCOMPARE(log.take(), refused(State::Idle, text));
    QCOMPARE(installation::takeLog(), text.split('\n'));
}

// The frame of the text is translated; what the validator and the plug-in test say is not.
void PrecheckTest::inAnotherLanguage() {
    const installation::MarkingTranslator translator;
    QVERIFY(installation::write(projectFile, brokenProject));
    QVERIFY(QFile::remove(pluginPath()));
    LauncherService service;
    service.projectPath = projectFile;
    service.runStartFlow();
    QCOMPARE(service.statusText,
             "<" + refusal(QString(brokenErrors) + '\n' + pluginMissing()) + ">");
    service.projectPath = "/gone.yslib";
    service.runStartFlow();
    QVERIFY(service.statusText.startsWith("Project file not found: /gone.yslib\n"));
}

void PrecheckTest::aFolderOfThatNameIsTheValidatorsToRefuse() {
    LauncherService service;
    service.projectPath = QFileInfo(projectFile).absolutePath();
    service.runStartFlow();
    QVERIFY2(service.statusText.startsWith("项目预检失败：\n[Error] yslib: 无法读取 yslib："),
             qPrintable(service.statusText));
    QCOMPARE(service.state, State::RepairMode);
}

void PrecheckTest::aFailureLeadsToRepairModeFromEveryState_data() {
    QTest::addColumn<State>("from");
    for (int i = 0; i <= int(State::Failed); ++i) {
        const State from = static_cast<State>(i);
        QTest::addRow("from %s", qPrintable(SignalLog::name(from))) << from;
    }
}

void PrecheckTest::aFailureLeadsToRepairModeFromEveryState() {
    QFETCH(State, from);
    QVERIFY(QFile::remove(pluginPath()));
    LauncherService service;
    service.projectPath = projectFile;
    service.state = from;
    SignalLog log(service);
    service.runStartFlow();
    QCOMPARE(log.take(), refused(from, refusal(pluginMissing())));
    QVERIFY(!service.isUpdateTaskActive()); // no check after a failure
}

// The next automatic start goes by what the last manual start left.
void PrecheckTest::skippingThePluginLasts() {
    QVERIFY(QFile::remove(pluginPath()));
    LauncherService service;
    service.projectPath = projectFile;
    service.updatesHandled = true;
    service.setSkipCorePluginPrecheck(true);
    for (int i = 0; i < 2; ++i) {
        service.runStartFlow();
        QCOMPARE(service.state, State::Failed); // the launch, since there is no target
    }
}

void PrecheckTest::aProjectMendedMeanwhilePassesTheNextTime() {
    const QString good = readTextFile(projectFile);
    QVERIFY(installation::write(projectFile, brokenProject));
    LauncherService service;
    service.projectPath = projectFile;
    service.updatesHandled = true;
    service.runStartFlow();
    QCOMPARE(service.state, State::RepairMode);
    QVERIFY(installation::write(projectFile, good));
    service.runStartFlow();
    QCOMPARE(service.state, State::Failed);
}

QUORVANE_TEST_MAIN(QCoreApplication, PrecheckTest)
#include "precheck_test.moc"
