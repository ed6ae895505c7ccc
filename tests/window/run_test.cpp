// One run through the window with a real target: countdown, start, watch, report, and a start by
// hand after it.
#include "launcher/installation.h"
#include "launcher/signal_log.h"
#include "support/staged_main.h"
#include "window_scene.h"

#include <QMessageBox>

using State = LauncherService::State;

class RunTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void theEndIsReported_data();
    void theEndIsReported();
    void theLanguageChangesWhileTheTargetRuns();
    void aStartByHandFollowsAFailedRun();
    void closingTheWindowLeavesTheTargetToTheService();
};

namespace {

QString demoProject() {
    return AppPaths::projectsDirectory() + "/demo/demo.yslib";
}

void copyFolder(const QString &from, const QString &to) {
    QVERIFY(QDir().mkpath(to));
    const auto entries = QDir(from).entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot);
    for (const QFileInfo &entry : entries) {
        const QString target = to + '/' + entry.fileName();
        if (entry.isDir())
            copyFolder(entry.filePath(), target);
        else
            QVERIFY(QFile::copy(entry.filePath(), target));
    }
}

// A service that counts down in no time and asks no server.
void prepare(WindowScene &scene) {
    scene.service.updatesHandled = true;
    scene.service.countdownTimer.setInterval(1);
    scene.window.show();
}

} // namespace

void RunTest::initTestCase() {
    installation::reset();
    QVERIFY(installation::write(installation::appPath("plugins/CoreOperators.dll"), "stand-in"));
    copyFolder(QUORVANE_SOURCES "/examples/projects/demo", QFileInfo(demoProject()).path());
    stageTranslation();
}

void RunTest::init() {
    useLanguage(Language::Chinese);
    QFile::remove(installation::appPath("LineRunner.go"));
}

void RunTest::theEndIsReported_data() {
    QTest::addColumn<QString>("plan");
    QTest::addColumn<QString>("report");
    QTest::addColumn<bool>("box");
    QTest::newRow("exit code 0 shows no box") << "exit 0"
                                              << "目标进程已退出，代码 0。" << false;
    QTest::newRow("exit code 1") << "exit 1"
                                 << "目标进程已退出，代码 1（可能被外部终止，如任务管理器）。"
                                 << true;
    QTest::newRow("exit code 7") << "exit 7"
                                 << "目标进程已退出，代码 7。" << true;
}

void RunTest::theEndIsReported() {
    QFETCH(QString, plan);
    QFETCH(QString, report);
    QFETCH(bool, box);
    QVERIFY(installation::addTarget("wait " + plan));
    WindowScene scene;
    QCOMPARE(scene.service.projectPath, demoProject());
    prepare(scene);
    scene.service.start();
    QVERIFY(scene.parts.countdownLabel->isVisible());
    QVERIFY(scene.parts.logView->isVisible());
    QTRY_COMPARE(scene.service.state, State::Monitor);
    QVERIFY(!scene.parts.countdownLabel->isVisible());
    QVERIFY(!scene.parts.repairPanel->isVisible());
    QCOMPARE(scene.parts.statusLabel->text(),
             "正在监护目标进程。日志：" + AppPaths::launchLogPath());

    SignalLog log(scene.service);
    const QString dumps = "\nDump 目录：" + AppPaths::dumpsDirectory();
    const QString details = report + "\n日志：" + AppPaths::launchLogPath() + dumps;
    QStringList entriesAtTheBox;
    const bool seen = duringModal(
        [&] {
            installation::release();
            QTRY_COMPARE(scene.service.state, State::Failed);
            QTRY_VERIFY(log.entries().size() >= 3);
        },
        [&](QWidget *widget) {
            auto *shown = qobject_cast<QMessageBox *>(widget);
            QVERIFY(shown);
            QCOMPARE(shown->windowTitle(), QString("目标进程提前退出"));
            QCOMPARE(shown->text(), details + dumps);
            QVERIFY(scene.parts.repairPanel->isVisible());
            entriesAtTheBox = log.entries();
            shown->close();
        });
    QCOMPARE(seen, box);
    const QStringList stated = {"state Failed", "status " + details};
    if (box)
        QCOMPARE(entriesAtTheBox, stated);
    const QString code = plan.section(' ', 1);
    QCOMPARE(log.take(), stated + QStringList("exited " + code + ' ' + details));
    QCOMPARE(scene.parts.statusLabel->text(), details);
    QVERIFY(scene.parts.repairPanel->isVisible());
}

void RunTest::theLanguageChangesWhileTheTargetRuns() {
    QVERIFY(installation::addTarget("wait exit 0"));
    WindowScene scene;
    prepare(scene);
    scene.service.start();
    QTRY_COMPARE(scene.service.state, State::Monitor);
    scene.parts.languageButton->click();
    QCOMPARE(scene.parts.statusLabel->text(),
             "The line is running. Leave this window open: closing it stops the line. Log: " +
                 AppPaths::launchLogPath());
    installation::release();
    QTRY_COMPARE(scene.service.state, State::Failed);
    QTRY_VERIFY(scene.parts.repairPanel->isVisible());
    QVERIFY(scene.parts.statusLabel->text().startsWith("The line has stopped with code 0."));
    // What was said about an end is said: it keeps its language.
    scene.parts.languageButton->click();
    QVERIFY(scene.parts.statusLabel->text().startsWith("The line has stopped with code 0."));
}

void RunTest::aStartByHandFollowsAFailedRun() {
    QVERIFY(installation::addTarget("wait exit 0"));
    WindowScene scene;
    prepare(scene);
    scene.put(State::Failed);
    scene.parts.launchButton->click();
    QCOMPARE(scene.service.state, State::Monitor);
    QVERIFY(!scene.parts.repairPanel->isVisible());
    QTest::keyClick(&scene.window, Qt::Key_F8);
    QCOMPARE(scene.service.state, State::RepairMode);
    QVERIFY(scene.parts.repairPanel->isVisible());
    installation::release();
    QTRY_COMPARE(scene.service.state, State::Failed);
}

void RunTest::closingTheWindowLeavesTheTargetToTheService() {
    QVERIFY(installation::addTarget("wait exit 0"));
    WindowScene scene;
    prepare(scene);
    scene.service.start();
    QTRY_COMPARE(scene.service.state, State::Monitor);
    QTest::keyClick(&scene.window, Qt::Key_Escape);
    QVERIFY(!scene.window.isVisible());
    QCOMPARE(scene.service.targetProcess.state(), QProcess::Running);
}

QUORVANE_TEST_MAIN(QApplication, RunTest)
#include "run_test.moc"
