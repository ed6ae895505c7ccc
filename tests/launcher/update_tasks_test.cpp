// Update tasks: their progress, their ends, and workers that live longer than the service.
#include "ended_future.h"
#include "installation.h"
#include "launcher/launcher_service.h"
#include "signal_log.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFutureInterface>
#include <QSemaphore>
#include <QThreadPool>
#include <QtConcurrent>

#include <optional>

using State = LauncherService::State;

namespace {

bool report(LauncherService &service, const QString &taskId) {
    return QMetaObject::invokeMethod(&service, "reportUpdateTaskProgress", Qt::DirectConnection,
                                     Q_ARG(QString, taskId), Q_ARG(QString, "verify"),
                                     Q_ARG(int, 40), Q_ARG(QString, "detail:verify-ok"));
}

QStringList noTarget() {
    const QString text = "LineRunner.exe not found in " + QCoreApplication::applicationDirPath() +
                         ".\nProduction layout requires Runtime (R2). Install Runtime beside "
                         "Launcher.";
    return {"state Launch", "state Failed", "status " + text, "launchFailed " + text};
}

} // namespace

class UpdateTasksTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void aReportOfTheCurrentTaskIsPassedOn();
    void aReportOfAnotherTaskIsDropped();
    void reportsOfAWorkerArriveQueuedAndInOrder();
    void aReportAfterTheServiceIsDropped();
    void aServiceInThePlaceOfAnotherHearsNothingOfItsTasks();
    void theSetupEnds_data();
    void theSetupEnds();
    void theEndIsToldWhenAllIsDone();
    void theSetupIsCancelled();
    void anApplyThatEndsWhileASetupRunsBeginsNoSecondOne();
    void theApplyIsLoggedBeforeItsSetupBegins();
    void aSetupBelongsToATask_data();
    void aSetupBelongsToATask();
    void everyWorkerMakesATaskActive_data();
    void everyWorkerMakesATaskActive();
    void aWorkerMayOutliveTheService();
    void theServiceWaitsForWorkersThatEndInTime();
};

void UpdateTasksTest::init() {
    installation::reset();
}

void UpdateTasksTest::aReportOfTheCurrentTaskIsPassedOn() {
    LauncherService service;
    service.taskId = "apply_1";
    SignalLog log(service);
    QStringList ids;
    connect(&service, &LauncherService::updateTaskProgressChanged, this,
            [&](const QString &id) { ids << id; });
    QVERIFY(report(service, "apply_1"));
    QCOMPARE(log.take(), QStringList("progress verify 40 detail:verify-ok"));
    QCOMPARE(ids, QStringList("apply_1"));
}

void UpdateTasksTest::aReportOfAnotherTaskIsDropped() {
    LauncherService service;
    service.taskId = "apply_2";
    SignalLog log(service);
    QVERIFY(report(service, "apply_1"));
    QVERIFY(report(service, ""));
    QCOMPARE(log.take(), QStringList());
}

void UpdateTasksTest::reportsOfAWorkerArriveQueuedAndInOrder() {
    LauncherService service;
    service.taskId = "t";
    SignalLog log(service);
    QtConcurrent::run([link = service.taskLink] {
        for (int i = 0; i < 100; ++i)
            link->reportProgress("t", "download", i, "d");
    }).waitForFinished();
    QCOMPARE(log.take(), QStringList());
    QCoreApplication::processEvents();
    const QStringList arrived = log.take();
    QCOMPARE(arrived.size(), 100);
    for (int i = 0; i < 100; ++i)
        QCOMPARE(arrived.at(i), QString("progress download %1 d").arg(i));
}

void UpdateTasksTest::aReportAfterTheServiceIsDropped() {
    std::shared_ptr<TaskLink> link;
    {
        LauncherService service;
        link = service.taskLink;
    }
    link->reportProgress("t", "download", -1, "d");
    QCoreApplication::processEvents();
    QCOMPARE(link->cancelFlag.load(), 1);
}

// The memory of a service that is gone may hold another one: it hears nothing of the tasks of the
// first.
void UpdateTasksTest::aServiceInThePlaceOfAnotherHearsNothingOfItsTasks() {
    std::optional<LauncherService> service;
    service.emplace();
    const LauncherService *const place = &*service;
    const std::shared_ptr<TaskLink> link = service->taskLink;
    service.reset();
    service.emplace();
    QCOMPARE(&*service, place);
    service->taskId = "t";
    SignalLog log(*service);
    link->reportProgress("t", "download", -1, "d");
    QCoreApplication::processEvents();
    QCOMPARE(log.take(), QStringList());
}

void UpdateTasksTest::theSetupEnds_data() {
    QTest::addColumn<bool>("project");
    QTest::addColumn<QString>("summary");
    QTest::addColumn<QString>("warnings");
    QTest::addColumn<bool>("launch");
    QTest::addColumn<QString>("details");
    QTest::newRow("with the project alone") << true << ""
                                            << "" << true << "项目更新已完成。";
    QTest::newRow("without the project") << false << ""
                                         << "" << true << "已跳过项目更新。";
    QTest::newRow("with all there is to tell") << true << "s1\ns2"
                                               << "w" << true << "项目更新已完成。\ns1\ns2\nw";
    QTest::newRow("with warnings alone") << false << ""
                                         << "w" << true << "已跳过项目更新。\nw";
    QTest::newRow("without a launch") << false << "s"
                                      << "" << false << "已跳过项目更新。\ns";
}

void UpdateTasksTest::theSetupEnds() {
    QFETCH(bool, project);
    QFETCH(QString, summary);
    QFETCH(QString, warnings);
    QFETCH(bool, launch);
    QFETCH(QString, details);
    const QString path = installation::addProject("line");
    LauncherService service;
    service.projectPath = path;
    service.state = State::ApplyingUpdate;
    service.taskId = "setup_1";
    service.updateAvailable = true;
    service.selection.project = project;
    service.launchAfterSetup = launch;
    SignalLog log(service);
    service.setupWatcher.setFuture(ended(ComponentSetupResult{true, summary, warnings, false}));
    QTRY_VERIFY(service.updatesHandled);
    QCOMPARE(log.take(), QStringList({"status 已处理所选更新内容，正在启动…", "applied " + details,
                                      "active false"}) +
                             (launch ? noTarget() : QStringList("state RepairMode")));
    QVERIFY(!service.updateAvailable && !service.launchAfterSetup);
    QCOMPARE(SettingsStore::instance().defaultProject(), path);
    QCOMPARE(installation::takeLog().mid(0, details.count('\n') + 2),
             details.split('\n') + QStringList("[task setup_1] phase=setup elapsedMs=0"));
}

// Whoever shows the end in a box reads what stands behind it.
void UpdateTasksTest::theEndIsToldWhenAllIsDone() {
    const QString path = installation::addProject("line");
    LauncherService service;
    service.projectPath = path;
    service.state = State::ApplyingUpdate;
    service.taskId = "setup_1";
    service.updateAvailable = service.launchAfterSetup = true;
    bool told = false;
    connect(&service, &LauncherService::applyUpdateFinished, this, [&] {
        told = true;
        QCOMPARE(SettingsStore::instance().defaultProject(), path);
        QCOMPARE(installation::takeLog(),
                 QStringList({"项目更新已完成。", "s", "[task setup_1] phase=setup elapsedMs=0"}));
        QVERIFY(service.updatesHandled);
        QVERIFY(!service.updateAvailable);
        QVERIFY(!service.launchAfterSetup);
        QVERIFY(!service.isUpdateTaskActive());
        QCOMPARE(service.statusText, QString("已处理所选更新内容，正在启动…"));
        QCOMPARE(service.state, State::ApplyingUpdate);
    });
    service.setupWatcher.setFuture(ended(ComponentSetupResult{true, "s", QString(), false}));
    QTRY_VERIFY(told);
}

void UpdateTasksTest::theSetupIsCancelled() {
    LauncherService service;
    service.state = State::ApplyingUpdate;
    service.updateAvailable = service.launchAfterSetup = true;
    SignalLog log(service);
    service.setupWatcher.setFuture(ended(ComponentSetupResult{true, "s", "w", true}));
    QTRY_COMPARE(log.entries().size(), 4);
    QCOMPARE(log.take(), QStringList({"state RepairMode", "status 组件更新任务已取消。",
                                      "not applied 组件更新任务已取消。", "active false"}));
    QVERIFY(service.updateAvailable && !service.updatesHandled && !service.launchAfterSetup);
    QCOMPARE(installation::takeLog(), QStringList());
    QCOMPARE(SettingsStore::instance().defaultProject(), QString());
}

void UpdateTasksTest::anApplyThatEndsWhileASetupRunsBeginsNoSecondOne() {
    LauncherService service;
    service.state = State::ApplyingUpdate;
    service.taskId = "apply_1";
    QFutureInterface<ComponentSetupResult> setup;
    setup.reportStarted();
    service.setupWatcher.setFuture(setup.future());
    SignalLog log(service);
    ApplyResult applied;
    applied.success = true;
    applied.message = "m";
    service.applyWatcher.setFuture(ended(applied));
    QTRY_VERIFY(service.reloadModelsOnLaunch);
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(installation::takeLog(), QStringList("[task apply_1] phase=apply elapsedMs=0 m"));
    QVERIFY(!service.launchAfterSetup);
    setup.reportFinished();
}

void UpdateTasksTest::theApplyIsLoggedBeforeItsSetupBegins() {
    LauncherService service;
    service.state = State::ApplyingUpdate;
    service.taskId = "apply_1";
    bool began = false;
    connect(&service, &LauncherService::updateTaskProgressChanged, this, [&] {
        if (std::exchange(began, true))
            return;
        QCOMPARE(installation::takeLog(), QStringList("[task apply_1] phase=apply elapsedMs=0 m"));
    });
    service.applyWatcher.setFuture(ended(ApplyResult{true, "m", QString(), QString()}));
    QTRY_VERIFY(began);
}

void UpdateTasksTest::aSetupBelongsToATask_data() {
    QTest::addColumn<QString>("task");
    QTest::newRow("that of the apply before it") << "apply_1";
    QTest::newRow("a new one where there is none") << "";
}

void UpdateTasksTest::aSetupBelongsToATask() {
    QFETCH(QString, task);
    LauncherService service;
    service.state = State::ApplyingUpdate;
    service.taskId = task;
    service.applyWatcher.setFuture(ended(ApplyResult{true, "m", QString(), QString()}));
    QTRY_VERIFY(service.reloadModelsOnLaunch);
    QCOMPARE(service.taskId.section('_', 0, 0), QString(task.isEmpty() ? "setup" : "apply"));
    QCOMPARE(installation::takeLog().contains("[task " + service.taskId + "] started kind=setup"),
             task.isEmpty());
}

void UpdateTasksTest::everyWorkerMakesATaskActive_data() {
    QTest::addColumn<int>("worker");
    QTest::newRow("the check") << 0;
    QTest::newRow("the apply") << 1;
    QTest::newRow("the setup") << 2;
    QTest::newRow("a check whose end is not taken yet") << 3;
}

void UpdateTasksTest::everyWorkerMakesATaskActive() {
    QFETCH(int, worker);
    LauncherService service;
    QVERIFY(!service.isUpdateTaskActive());
    QFutureInterface<UpdateCheckResult> check;
    QFutureInterface<ApplyResult> apply;
    QFutureInterface<ComponentSetupResult> setup;
    check.reportStarted();
    apply.reportStarted();
    setup.reportStarted();
    if (worker == 0)
        service.checkWatcher.setFuture(check.future());
    else if (worker == 1)
        service.applyWatcher.setFuture(apply.future());
    else if (worker == 2)
        service.setupWatcher.setFuture(setup.future());
    else
        service.checkInFlight = true;
    QVERIFY(service.isUpdateTaskActive());
    service.taskId = "x_1";
    SignalLog log(service);
    service.cancelUpdateTask();
    QCOMPARE(log.take(), QStringList("status 正在取消更新任务…"));
    QCOMPARE(service.cancelFlag.load(), 1);
    QCOMPARE(installation::takeLog(), QStringList("[task x_1] cancel requested by user"));
    check.reportFinished();
    apply.reportFinished();
    setup.reportFinished();
}

// The service waits for three seconds and goes; the worker ends in its own time and reports to
// nobody.
void UpdateTasksTest::aWorkerMayOutliveTheService() {
    QSemaphore serviceIsGone;
    std::atomic<int> flagSeen{-1};
    QElapsedTimer waited;
    {
        LauncherService service;
        service.checkWatcher.setFuture(
            QtConcurrent::run([&, link = service.taskLink]() -> UpdateCheckResult {
                serviceIsGone.acquire();
                flagSeen = link->cancelFlag.load();
                link->reportProgress("t", "check", -1, "late");
                return {};
            }));
        waited.start();
    }
    QVERIFY2(waited.elapsed() >= 3000 && waited.elapsed() < 5900,
             qPrintable(QString::number(waited.elapsed())));
    serviceIsGone.release();
    QVERIFY(QThreadPool::globalInstance()->waitForDone());
    QCoreApplication::processEvents();
    QCOMPARE(flagSeen.load(), 1);
}

void UpdateTasksTest::theServiceWaitsForWorkersThatEndInTime() {
    std::atomic<bool> ended{false};
    {
        LauncherService service;
        service.setupWatcher.setFuture(
            QtConcurrent::run([&, link = service.taskLink]() -> ComponentSetupResult {
                while (link->cancelFlag.load() == 0)
                    QThread::yieldCurrentThread();
                ended = true;
                return {};
            }));
    }
    QVERIFY(ended);
}

QUORVANE_TEST_MAIN(QCoreApplication, UpdateTasksTest)
#include "update_tasks_test.moc"
