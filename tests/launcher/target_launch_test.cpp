// The start of the target, with a real child process, and the report of its end.
#include "launcher/target_launch.h"

#include "frame/locale_manager.h"
#include "installation.h"
#include "launcher/launcher_service.h"
#include "signal_log.h"
#include "support/platform.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QEventLoop>

using State = LauncherService::State;

namespace {

using installation::appPath;

QString pid() {
    return QString::number(QCoreApplication::applicationPid());
}

QString noncePath() {
    return AppPaths::launchNoncePath(QCoreApplication::applicationPid());
}

QString nonceOnDisk() {
    return readTextFile(noncePath()).section('\n', 0, 0).trimmed();
}

QString monitoring() {
    return "status 正在监护目标进程。日志：" + AppPaths::launchLogPath();
}

QStringList started() {
    return {"state Launch", "status 已启动 LineRunner.exe", "state Monitor", monitoring()};
}

QString report(int code, const QString &suffix) {
    return QString("目标进程已退出，代码 %1%2。\n日志：%3\nDump 目录：%4")
        .arg(QString::number(code), suffix, AppPaths::launchLogPath(), AppPaths::dumpsDirectory());
}

QStringList exited(int code, const QString &suffix) {
    const QString text = report(code, suffix);
    return {"state Failed", "status " + text, "exited " + QString::number(code) + ' ' + text};
}

QStringList launchLines() {
    QStringList lines;
    for (const QString &line : installation::takeLog()) {
        if (line.startsWith("Launching ") || line.startsWith("Target ") || line.startsWith("R1.5"))
            lines.append(line);
    }
    return lines;
}

// A service that goes straight to the target.
struct Launcher {
    LauncherService service;
    SignalLog log{service};

    explicit Launcher(const QString &project = "/p/demo.yslib") { service.projectPath = project; }
    void launch() { service.skipUpdateAndLaunch(); }
};

} // namespace

class TargetLaunchTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void isDevMode_data();
    void isDevMode();
    void isDevModeWithoutTheVariable();
    void resolveTargetExecutable_data();
    void resolveTargetExecutable();
    void missingTargetText_data();
    void missingTargetText();
    void noTargetFails_data();
    void noTargetFails();
    void theNonceIsHexadecimalAndNew();
    void theNonceFileHoldsNonceAndTime();
    void aNonceFileThatCannotBeWrittenIsPassedOver();
    void nonceFilesStay_data();
    void nonceFilesStay();
    void buildLaunchArguments_data();
    void buildLaunchArguments();
    void aStartedTargetIsMonitored();
    void theEnds_data();
    void theEnds();
    void theEndInAnotherLanguage();
    void englishFailuresAreNotTranslated();
    void aCrashWithCodeOneIsACrash();
    void theEndIsLoggedBeforeItIsTold();
    void aTargetThatEndsIsFailedFromEveryState_data();
    void aTargetThatEndsIsFailedFromEveryState();
    void aTargetThatEndsInFailedOnlyReports();
    void theExitOfTheTargetIsToldOnceWithABoxOpen();
    void aTargetThatCannotStart_data();
    void aTargetThatCannotStart();
    void reloadModelsIsToldOnce();
    void theEditorStandsInOnADevelopmentMachine();
    void aManualStartWhileTheTargetRuns();
    void whatTheTargetPrintsIsDiscarded();
    void theServiceEndsARunningTargetAndReportsIt();
    void theServiceEndsAtOnceWithoutATarget();
};

void TargetLaunchTest::init() {
    installation::reset();
    QFile::remove(noncePath());
}

void TargetLaunchTest::isDevMode_data() {
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<bool>("expected");
    QTest::newRow("1 is set") << QByteArray("1") << true;
    QTest::newRow("true is set") << QByteArray("true") << true;
    QTest::newRow("TRUE is set") << QByteArray("TRUE") << true;
    QTest::newRow("True is set") << QByteArray("True") << true;
    QTest::newRow("0 is not") << QByteArray("0") << false;
    QTest::newRow("an empty value is not") << QByteArray("") << false;
    QTest::newRow("a 1 with a blank behind it is not") << QByteArray("1 ") << false;
    QTest::newRow("a blank and true is not") << QByteArray(" true") << false;
    QTest::newRow("yes is not") << QByteArray("yes") << false;
    QTest::newRow("11 is not") << QByteArray("11") << false;
}

void TargetLaunchTest::isDevMode() {
    QFETCH(QByteArray, value);
    QFETCH(bool, expected);
    qputenv("QUORVANE_DEV", value);
    QCOMPARE(::isDevMode(), expected);
}

void TargetLaunchTest::isDevModeWithoutTheVariable() {
    QVERIFY(!::isDevMode());
}

void TargetLaunchTest::resolveTargetExecutable_data() {
    QTest::addColumn<bool>("runtime");
    QTest::addColumn<bool>("editor");
    QTest::addColumn<bool>("devMode");
    QTest::addColumn<bool>("sourceTree");
    QTest::addColumn<QString>("expected");
    for (int i = 0; i < 16; ++i) {
        const bool runtime = i & 1;
        const bool editor = i & 2;
        const bool devMode = i & 4;
        const bool sourceTree = i & 8;
        const QString expected = runtime                             ? "LineRunner.exe"
                                 : editor && (devMode || sourceTree) ? "LineStudio.exe"
                                                                     : "";
        QTest::addRow("%s runtime, %s editor, %s, %s", runtime ? "a" : "no", editor ? "an" : "no",
                      devMode ? "dev mode" : "production",
                      sourceTree ? "source tree" : "installation")
            << runtime << editor << devMode << sourceTree << expected;
    }
}

void TargetLaunchTest::resolveTargetExecutable() {
    QFETCH(bool, runtime);
    QFETCH(bool, editor);
    QFETCH(bool, devMode);
    QFETCH(bool, sourceTree);
    QFETCH(QString, expected);
    if (runtime)
        QVERIFY(installation::write(appPath("LineRunner.exe"), ""));
    if (editor)
        QVERIFY(installation::write(appPath("LineStudio.exe"), ""));
    if (devMode)
        qputenv("QUORVANE_DEV", "1");
    const QString sign = appPath("Quorvane.pro");
    if (sourceTree)
        QVERIFY(installation::write(sign, ""));
    AppPaths::initialize();
    const QString found = LauncherService::resolveTargetExecutable();
    QFile::remove(sign);
    QCOMPARE(found, expected.isEmpty() ? QString() : appPath(expected));
}

void TargetLaunchTest::missingTargetText_data() {
    QTest::addColumn<bool>("editorAllowed");
    QTest::addColumn<bool>("editorPresent");
    QTest::addColumn<QString>("expected");
    const QString production =
        "LineRunner.exe not found in /a%2b.\nProduction layout requires Runtime (R2). Install "
        "Runtime beside Launcher.";
    QTest::newRow("production") << false << false << production;
    QTest::newRow("production with the editor") << false << true << production;
    QTest::newRow("development with the editor")
        << true << true
        << "LineRunner.exe not found in /a%2b.\nSet QUORVANE_DEV=1 to allow Ops fallback, or "
           "build from repository layout (auto-fallback).";
    QTest::newRow("development without either")
        << true << false
        << "Neither LineRunner.exe nor LineStudio.exe was found in /a%2b.\nBuild the app "
           "target, then run scripts\\deploy_bin.ps1 before testing from bin\\.";
}

void TargetLaunchTest::missingTargetText() {
    QFETCH(bool, editorAllowed);
    QFETCH(bool, editorPresent);
    QFETCH(QString, expected);
    QCOMPARE(::missingTargetText("/a%2b", editorAllowed, editorPresent), expected);
}

void TargetLaunchTest::noTargetFails_data() {
    QTest::addColumn<bool>("devMode");
    QTest::addColumn<QString>("begin");
    QTest::newRow("production") << false << "LineRunner.exe not found in ";
    QTest::newRow("dev mode") << true << "Neither LineRunner.exe nor LineStudio.exe was found in ";
}

void TargetLaunchTest::noTargetFails() {
    QFETCH(bool, devMode);
    QFETCH(QString, begin);
    if (devMode)
        qputenv("QUORVANE_DEV", "1");
    Launcher launcher;
    launcher.launch();
    const QString text = launcher.service.statusText;
    QVERIFY2(text.startsWith(begin), qPrintable(text));
    QCOMPARE(launcher.log.take(), QStringList({"state Launch", "state Failed", "status " + text,
                                               "launchFailed " + text}));
    QCOMPARE(installation::takeLog(), text.split('\n'));
    QVERIFY(!QFileInfo::exists(noncePath()));
}

void TargetLaunchTest::theNonceIsHexadecimalAndNew() {
    const QString first = newLaunchNonce();
    QVERIFY(QRegularExpression("^[0-9a-f]{32}$").match(first).hasMatch());
    QVERIFY(first != newLaunchNonce());
}

void TargetLaunchTest::theNonceFileHoldsNonceAndTime() {
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    LauncherService::writeLaunchNonce(4711, "abc");
    const qint64 after = QDateTime::currentMSecsSinceEpoch();
    QFile file(AppPaths::dataDirectory() + "/launch_nonce_4711.txt");
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray text = support::linesOf(file.readAll());
    QVERIFY(file.remove());
    QVERIFY(text.startsWith("abc\n") && text.endsWith('\n'));
    QCOMPARE(text.count('\n'), 2);
    const qint64 moment = text.mid(4).trimmed().toLongLong();
    QVERIFY(moment >= before && moment <= after);
}

void TargetLaunchTest::aNonceFileThatCannotBeWrittenIsPassedOver() {
    QVERIFY(QDir().mkpath(noncePath()));
    QVERIFY(installation::addTarget("exit 0"));
    Launcher launcher;
    launcher.launch();
    QCOMPARE(launcher.log.take(), started());
    QTRY_COMPARE(launcher.service.state, State::Failed);
    QVERIFY(QDir(noncePath()).removeRecursively());
}

void TargetLaunchTest::nonceFilesStay_data() {
    QTest::addColumn<bool>("ends");
    QTest::newRow("when the target ends") << true;
    QTest::newRow("when the launcher ends it") << false;
}

// The launcher's own and that of an earlier run: it writes them and never takes one away.
void TargetLaunchTest::nonceFilesStay() {
    QFETCH(bool, ends);
    const QString earlier = AppPaths::dataDirectory() + "/launch_nonce_4711.txt";
    QVERIFY(installation::write(earlier, "earlier"));
    QVERIFY(installation::addTarget("wait exit 0"));
    QString written;
    {
        Launcher launcher;
        launcher.service.initialize();
        launcher.launch();
        written = readTextFile(noncePath());
        QCOMPARE(nonceOnDisk().size(), 32);
        if (ends) {
            installation::release();
            QTRY_COMPARE(launcher.service.state, State::Failed);
            QCOMPARE(readTextFile(noncePath()), written);
        }
    }
    QCOMPARE(readTextFile(noncePath()), written);
    QCOMPARE(readTextFile(earlier), QString("earlier"));
    QVERIFY(QFile::remove(earlier));
}

void TargetLaunchTest::buildLaunchArguments_data() {
    QTest::addColumn<QString>("project");
    QTest::addColumn<bool>("reload");
    QTest::newRow("a plain project") << "/p/demo.yslib" << false;
    QTest::newRow("a replaced project") << "/p/demo.yslib" << true;
    QTest::newRow("blanks and quotes are not quoted") << "/p q/\"it's\"=x.yslib" << false;
    QTest::newRow("placeholders in a path stay") << "/p%1%2/%20.yslib" << true;
    QTest::newRow("no project") << "" << false;
}

void TargetLaunchTest::buildLaunchArguments() {
    QFETCH(QString, project);
    QFETCH(bool, reload);
    LauncherService service;
    service.projectPath = project;
    service.reloadModelsOnLaunch = reload;
    QStringList expected{"--parent-pid=" + pid(), "--nonce=00ff", "--project=" + project,
                         "--locale=zh_CN"};
    if (reload)
        expected.append("--reload-models");
    QCOMPARE(service.buildLaunchArguments("00ff"), expected);
    QCOMPARE(service.reloadModelsOnLaunch, reload);
}

void TargetLaunchTest::aStartedTargetIsMonitored() {
    QVERIFY(installation::addTarget("wait exit 0"));
    const QString project = "/p q/产线 \"3\" %1/" + QString(300, 'x') + ".yslib";
    Launcher launcher(project);
    launcher.launch();
    QCOMPARE(launcher.log.take(), started());
    const QString nonce = nonceOnDisk();
    QCOMPARE(nonce.size(), 32);
    const QStringList arguments{"--parent-pid=" + pid(), "--nonce=" + nonce, "--project=" + project,
                                "--locale=zh_CN"};
    QCOMPARE(launchLines(),
             QStringList("Launching " + appPath("LineRunner.exe") + ' ' + arguments.join(' ')));
    QTRY_COMPARE(installation::targetSaw(),
                 arguments + QStringList(QCoreApplication::applicationDirPath()));
    installation::release();
    QTRY_COMPARE(launcher.service.state, State::Failed);
}

void TargetLaunchTest::theEnds_data() {
    QTest::addColumn<QString>("plan");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("suffix");
    QTest::newRow("exit code 0 is reported as any other") << "exit 0" << 0 << "";
    QTest::newRow("exit code 1 is taken for an outside end")
        << "exit 1" << 1 << "（可能被外部终止，如任务管理器）";
    QTest::newRow("exit code 7") << "exit 7" << 7 << "";
    // An abort is an ordinary end on Windows, with code 3. There a crash ends with the system's number for
    // it: this one is an access violation's.
    if (support::onWindows)
        QTest::newRow("a crash") << "exit -1073741819" << -1073741819 << "（进程崩溃）";
    else
        QTest::newRow("a crash") << "crash" << 6 << "（进程崩溃）";
}

void TargetLaunchTest::theEnds() {
    QFETCH(QString, plan);
    QFETCH(int, code);
    QFETCH(QString, suffix);
    QVERIFY(installation::addTarget(plan));
    Launcher launcher;
    launcher.launch();
    QTRY_COMPARE(launcher.service.state, State::Failed);
    QCOMPARE(launcher.log.take(), started() + exited(code, suffix));
    QCOMPARE(launcher.service.statusText, report(code, suffix));
    QCOMPARE(launchLines().mid(1),
             QStringList(QString("Target exited with code %1%2. Log: %3")
                             .arg(QString::number(code), suffix, AppPaths::launchLogPath())));
}

// The report is translated, its hint included; the log keeps the hint's source text.
void TargetLaunchTest::theEndInAnotherLanguage() {
    const installation::MarkingTranslator translator;
    QVERIFY(installation::addTarget("exit 1"));
    Launcher launcher;
    launcher.launch();
    QTRY_COMPARE(launcher.service.state, State::Failed);
    QCOMPARE(launcher.service.statusText,
             "<目标进程已退出，代码 1<（可能被外部终止，如任务管理器）>。\n日志：" +
                 AppPaths::launchLogPath() + "\n<Dump 目录：" + AppPaths::dumpsDirectory() + ">>");
    QCOMPARE(launchLines().last(),
             "Target exited with code 1（可能被外部终止，如任务管理器）. Log: " +
                 AppPaths::launchLogPath());
}

void TargetLaunchTest::englishFailuresAreNotTranslated() {
    const installation::MarkingTranslator translator;
    Launcher launcher;
    launcher.launch();
    QVERIFY(launcher.service.statusText.startsWith("LineRunner.exe not found in "));
    QVERIFY(installation::write(appPath("LineRunner.exe"), "no program"));
    launcher.launch();
    QVERIFY(launcher.service.statusText.startsWith("Failed to start "));
}

void TargetLaunchTest::aCrashWithCodeOneIsACrash() {
    QCOMPARE(QString::fromUtf8(exitSuffix(1, QProcess::CrashExit)), QString("（进程崩溃）"));
    QCOMPARE(QString::fromUtf8(exitSuffix(1, QProcess::NormalExit)),
             QString("（可能被外部终止，如任务管理器）"));
    QVERIFY(!exitSuffix(0, QProcess::NormalExit));
    QVERIFY(!exitSuffix(-1, QProcess::NormalExit));
}

void TargetLaunchTest::theEndIsLoggedBeforeItIsTold() {
    QVERIFY(installation::addTarget("exit 0"));
    Launcher launcher;
    QStringList logged;
    connect(&launcher.service, &LauncherService::stateChanged, this, [&](State state) {
        if (state == State::Failed)
            logged = launchLines();
    });
    launcher.launch();
    QTRY_COMPARE(launcher.service.state, State::Failed);
    QCOMPARE(logged.size(), 2);
}

void TargetLaunchTest::aTargetThatEndsIsFailedFromEveryState_data() {
    QTest::addColumn<State>("state");
    for (int i = 0; i < int(State::Failed); ++i) {
        const State state = static_cast<State>(i);
        QTest::addRow("from %s", qPrintable(SignalLog::name(state))) << state;
    }
}

void TargetLaunchTest::aTargetThatEndsIsFailedFromEveryState() {
    QFETCH(State, state);
    QVERIFY(installation::addTarget("wait exit 7"));
    Launcher launcher;
    launcher.launch();
    (void)launcher.log.take();
    launcher.service.state = state;
    installation::release();
    QTRY_COMPARE(launcher.service.state, State::Failed);
    QCOMPARE(launcher.log.take(), exited(7, ""));
}

void TargetLaunchTest::aTargetThatEndsInFailedOnlyReports() {
    QVERIFY(installation::addTarget("wait exit 7"));
    Launcher launcher;
    launcher.launch();
    (void)launcher.log.take();
    launcher.service.state = State::Failed;
    installation::release();
    QTRY_COMPARE(launcher.log.entries(), exited(7, "").mid(1));
}

void TargetLaunchTest::theExitOfTheTargetIsToldOnceWithABoxOpen() {
    QVERIFY(installation::addTarget("exit 7"));
    Launcher launcher;
    int boxes = 0;
    connect(&launcher.service, &LauncherService::targetExited, this, [&] {
        ++boxes;
        QEventLoop box;
        QTimer::singleShot(0, &box, [&] {
            launcher.service.enterRepairMode();
            box.quit();
        });
        box.exec();
    });
    launcher.launch();
    QTRY_COMPARE(launcher.service.state, State::RepairMode);
    QCOMPARE(boxes, 1);
    QCOMPARE(
        launcher.log.take(),
        started() + exited(7, "") +
            QStringList({"state RepairMode", "status 修复模式：选择 yslib、查看日志或手动启动。"}));
}

void TargetLaunchTest::aTargetThatCannotStart_data() {
    QTest::addColumn<bool>("folder");
    QTest::newRow("a file that is not executable") << false;
    QTest::newRow("a folder of that name") << true;
}

void TargetLaunchTest::aTargetThatCannotStart() {
    QFETCH(bool, folder);
    const QString target = appPath("LineRunner.exe");
    if (folder)
        QVERIFY(QDir().mkpath(target));
    else
        QVERIFY(installation::write(target, "no program"));
    Launcher launcher;
    launcher.service.reloadModelsOnLaunch = true;
    launcher.launch();
    const QString text =
        "Failed to start " + target + ": " + launcher.service.targetProcess.errorString();
    QVERIFY(!launcher.service.targetProcess.errorString().isEmpty());
    QCOMPARE(launcher.log.take(), QStringList({"state Launch", "state Failed", "status " + text,
                                               "launchFailed " + text}));
    QCOMPARE(installation::takeLog().last(), text);
    QVERIFY(launcher.service.reloadModelsOnLaunch); // the next start tries again with it
    QVERIFY(QFileInfo::exists(noncePath()));
    if (folder)
        QVERIFY(QDir(target).removeRecursively());
}

void TargetLaunchTest::reloadModelsIsToldOnce() {
    QVERIFY(installation::addTarget("exit 0"));
    Launcher launcher;
    launcher.service.reloadModelsOnLaunch = true;
    launcher.launch();
    QVERIFY(!launcher.service.reloadModelsOnLaunch);
    QTRY_COMPARE(launcher.service.state, State::Failed);
    QCOMPARE(installation::targetSaw().value(4), QString("--reload-models"));
    QVERIFY(QFile::remove(appPath("LineRunner.seen")));
    launcher.launch();
    QTRY_COMPARE(launcher.service.state, State::Failed);
    QVERIFY(!installation::targetSaw().contains("--reload-models"));
    QCOMPARE(installation::targetSaw().size(), 5);
}

void TargetLaunchTest::theEditorStandsInOnADevelopmentMachine() {
    qputenv("QUORVANE_DEV", "1");
    QVERIFY(installation::addTarget("exit 0", "LineStudio.exe"));
    Launcher launcher;
    launcher.launch();
    QTRY_COMPARE(launcher.service.state, State::Failed);
    QCOMPARE(launcher.log.take().value(1), QString("status 已启动 LineStudio.exe"));
    QCOMPARE(launchLines().first(),
             QString("R1.5 dev fallback: launching LineStudio.exe (Runtime not present)."));
}

// QProcess refuses the second start, since it is busy, and reports the running target.
void TargetLaunchTest::aManualStartWhileTheTargetRuns() {
    QVERIFY(installation::addTarget("wait exit 7"));
    Launcher launcher;
    launcher.launch();
    const QString firstNonce = nonceOnDisk();
    const qint64 target = launcher.service.targetProcess.processId();
    launcher.service.enterRepairMode();
    QCOMPARE(launcher.log.take(),
             started() + QStringList({"state RepairMode",
                                      "status 修复模式：选择 yslib、查看日志或手动启动。"}));
    QCOMPARE(launcher.service.targetProcess.state(), QProcess::Running);
    launcher.service.reloadModelsOnLaunch = true;
    // Once for the program and once for its arguments.
    QTest::ignoreMessage(QtWarningMsg, "QProcess::setProgram: Process is already running");
    QTest::ignoreMessage(QtWarningMsg, "QProcess::setProgram: Process is already running");
    QTest::ignoreMessage(QtWarningMsg, "QProcess::start: Process is already running");
    launcher.launch();
    QCOMPARE(launcher.log.take(), started());
    QVERIFY(nonceOnDisk() != firstNonce);
    QCOMPARE(launcher.service.targetProcess.processId(), target);
    // Spent by the list that was built, though the running target never got it.
    QVERIFY(!launcher.service.reloadModelsOnLaunch);
    installation::release();
    QTRY_COMPARE(launcher.service.state, State::Failed);
    QCOMPARE(launcher.log.take(), exited(7, ""));
}

void TargetLaunchTest::whatTheTargetPrintsIsDiscarded() {
    QVERIFY(installation::addTarget("print 5000000 exit 0"));
    Launcher launcher;
    QProcess &target = launcher.service.targetProcess;
    qint64 arrivals = 0;
    connect(&target, &QProcess::readyReadStandardOutput, this, [&] { ++arrivals; });
    launcher.launch();
    QTRY_COMPARE(launcher.service.state, State::Failed);
    QVERIFY(arrivals > 0);
    QCOMPARE(target.readAllStandardOutput().size(), 0);
}

void TargetLaunchTest::theServiceEndsARunningTargetAndReportsIt() {
    QVERIFY(installation::addTarget("wait"));
    auto launcher = std::make_unique<LauncherService>();
    SignalLog log(*launcher);
    launcher->projectPath = "/p";
    launcher->skipUpdateAndLaunch();
    (void)log.take();
    (void)launchLines();
    QElapsedTimer waited;
    waited.start();
    launcher.reset();
    QVERIFY(waited.elapsed() < 2000);
    const int killed = support::onWindows ? 0xF291 : 9; // what Qt ends a process with
    QCOMPARE(log.take(), exited(killed, "（进程崩溃）"));
    QCOMPARE(launchLines(),
             QStringList(QString("Target exited with code %1（进程崩溃）. Log: %2")
                             .arg(QString::number(killed), AppPaths::launchLogPath())));
}

void TargetLaunchTest::theServiceEndsAtOnceWithoutATarget() {
    auto launcher = std::make_unique<LauncherService>();
    SignalLog log(*launcher);
    const auto link = launcher->taskLink;
    launcher.reset();
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(link->cancelFlag.load(), 1);
}

QUORVANE_TEST_MAIN(QCoreApplication, TargetLaunchTest)
#include "target_launch_test.moc"
