// How workers end beside their usual ways: with memory run out, after the window was closed, and in
// which order a dying service waits for them.
//
// The three workers' work is this file's, in the place of the library's, so that it can fail inside.
#include "installation.h"
#include "launcher/launcher_service.h"
#include "launcher/offer/project_apply.h"
#include "signal_log.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSemaphore>
#include <QThreadPool>
#include <QtConcurrent>

#include <new>

using State = LauncherService::State;

namespace {

// What the worker's work does: runs out of memory, throws something else, or gives its result.
enum class Work { OutOfMemory, Foreign, Succeeds, Fails };
std::atomic<Work> work{Work::Succeeds};

void failInside() {
    if (work == Work::OutOfMemory)
        throw std::bad_alloc();
    if (work == Work::Foreign)
        throw 5;
}

} // namespace

bool UpdateContext::runUpdateCheck(QString *summary) {
    snapshot.source = QStringLiteral("half done");
    *summary = QStringLiteral("half done");
    failInside();
    return work == Work::Succeeds;
}

ApplyResult applyProjectUpdate(const UpdateSnapshot &, const QString &, const CancelFlag *) {
    failInside();
    return {work == Work::Succeeds, QStringLiteral("the message"), QString(), QString()};
}

ComponentSetupResult UpdateContext::runComponentSetup() const {
    failInside();
    return {true, QString(), QString(), false};
}

// Of the check's file too, and not asked: no manifest is held here.
bool UpdateContext::evaluateManifest(const QJsonObject &, QString *, OfferWeighing *) {
    return false;
}

namespace {

const QString noMemory = QStringLiteral("not enough memory for the update");

// A service in the user's hands with an offer of a project.
struct Launcher {
    LauncherService service;
    SignalLog log{service};

    explicit Launcher(bool withProject = true) {
        service.state = State::RepairMode;
        service.updateAvailable = true;
        service.projectPath = installation::addRunnableProject("line", "1.0");
        service.snapshot.projectEntry = {
            {"name", "line"}, {"version", "2.0"}, {"zipUrl", "a.zip"}, {"zipSha256", "00"}};
        service.selection = {withProject, true, false, false, false};
    }

    void waitForTask() {
        QTRY_VERIFY(!service.isUpdateTaskActive());
        QCoreApplication::processEvents();
    }
};

QStringList noTarget() {
    const QString text = "LineRunner.exe not found in " + QCoreApplication::applicationDirPath() +
                         ".\nProduction layout requires Runtime (R2). Install Runtime beside "
                         "Launcher.";
    return {"state Launch", "state Failed", "status " + text, "launchFailed " + text};
}

// A worker of this result that ends once the flag has been up for that long; -1: with the test.
template<typename Result>
QFuture<Result> lateWorker(const LauncherService &service, QSemaphore *end, int milliseconds) {
    return QtConcurrent::run([link = service.taskLink, end, milliseconds]() -> Result {
        while (link->cancelFlag.load() == 0)
            QThread::yieldCurrentThread();
        (void)end->tryAcquire(1, milliseconds);
        return {};
    });
}

// How many milliseconds a service takes to go whose first worker does not end and whose second does
// after 3.5 seconds: that long, or six seconds if it waits for the second one first.
template<typename First, typename Second>
qint64 waitedFor(QFutureWatcher<First> LauncherService::*first,
                 QFutureWatcher<Second> LauncherService::*second) {
    QSemaphore end;
    QElapsedTimer waited;
    {
        LauncherService service;
        (service.*first).setFuture(lateWorker<First>(service, &end, -1));
        (service.*second).setFuture(lateWorker<Second>(service, &end, 3500));
        waited.start();
    }
    const qint64 took = waited.elapsed();
    end.release(2);
    QThreadPool::globalInstance()->waitForDone();
    return took;
}

} // namespace

Q_DECLARE_METATYPE(Work)

class WorkerEndsTest : public QObject {
    Q_OBJECT

private:
    static void bothFailures();

private Q_SLOTS:
    void init();
    void aCheckThatFailsInsideFindsNothing_data();
    void aCheckThatFailsInsideFindsNothing();
    void anApplyThatFailsInsideIsAFailure_data();
    void anApplyThatFailsInsideIsAFailure();
    void aSetupThatFailsInsideIsAWarning_data();
    void aSetupThatFailsInsideIsAWarning();
    void anEndThatNobodyTookIsNotTold_data();
    void anEndThatNobodyTookIsNotTold();
    void theCheckIsWaitedForBeforeTheSetup();
    void theSetupIsWaitedForBeforeTheApply();
};

void WorkerEndsTest::bothFailures() {
    QTest::addColumn<Work>("fault");
    QTest::newRow("memory runs out") << Work::OutOfMemory;
    QTest::newRow("anything else is thrown") << Work::Foreign;
}

void WorkerEndsTest::init() {
    installation::reset();
    work = Work::Succeeds;
    QVERIFY(QThreadPool::globalInstance()->waitForDone());
}

// --- A worker that fails inside -------------------------------------------------------------

void WorkerEndsTest::aCheckThatFailsInsideFindsNothing_data() {
    bothFailures();
}

void WorkerEndsTest::aCheckThatFailsInsideFindsNothing() {
    QFETCH(Work, fault);
    work = fault;
    Launcher launcher;
    launcher.service.updateAvailable = false;
    launcher.service.enterRepairMode();
    QTRY_VERIFY(launcher.service.updateCheckDone);
    QCOMPARE(
        launcher.log.take(),
        QStringList({"status 修复模式：选择 yslib、查看日志或手动启动。", "active false",
                     "state UpdateCheck", "progress check -1 detail:fetch-manifest",
                     "status 无可用更新，将启动当前版本。", "state RepairMode", "active false"}));
    QVERIFY(!launcher.service.updateAvailable);
    QCOMPARE(installation::takeLog().last().section(' ', 2),
             QString("phase=check elapsedMs=0 none"));
}

void WorkerEndsTest::anApplyThatFailsInsideIsAFailure_data() {
    bothFailures();
}

void WorkerEndsTest::anApplyThatFailsInsideIsAFailure() {
    QFETCH(Work, fault);
    work = fault;
    Launcher launcher;
    launcher.service.applyChosenUpdate();
    launcher.waitForTask();
    QCOMPARE(launcher.log.take().mid(4),
             QStringList({"progress download -1 detail:download-project",
                          "progress verify -1 detail:verify-fail", "state RepairMode",
                          "status " + noMemory, "not applied " + noMemory, "active false"}));
    QCOMPARE(installation::takeLog().last(), noMemory);
    QVERIFY(!launcher.service.reloadModelsOnLaunch);
}

void WorkerEndsTest::aSetupThatFailsInsideIsAWarning_data() {
    bothFailures();
}

void WorkerEndsTest::aSetupThatFailsInsideIsAWarning() {
    QFETCH(Work, fault);
    work = fault;
    Launcher launcher(false);
    launcher.service.applyChosenUpdate();
    launcher.waitForTask();
    QCOMPARE(launcher.log.take().mid(4),
             QStringList({"status 已处理所选更新内容，正在启动…",
                          "applied 已跳过项目更新。\n" + noMemory, "active false"}) +
                 noTarget());
}

// --- The window is closed ---------------------------------------------------------------------

void WorkerEndsTest::anEndThatNobodyTookIsNotTold_data() {
    QTest::addColumn<QString>("task");
    QTest::addColumn<Work>("outcome");
    QTest::addColumn<bool>("cancels");
    for (const char *task : {"check", "apply", "setup"}) {
        for (const auto &[name, outcome] :
             {std::pair("success", Work::Succeeds), std::pair("failure", Work::Fails),
              std::pair("memory run out", Work::OutOfMemory)}) {
            QTest::addRow("%s, %s", task, name) << task << outcome << false;
            QTest::addRow("%s, %s, cancelled", task, name) << task << outcome << true;
        }
    }
}

// The worker has ended, its event waits in the queue, and the service goes.
void WorkerEndsTest::anEndThatNobodyTookIsNotTold() {
    QFETCH(QString, task);
    QFETCH(Work, outcome);
    QFETCH(bool, cancels);
    work = outcome;
    QObject receiver;
    int ends = 0;
    {
        Launcher launcher(task == "apply");
        if (task == "check") {
            launcher.service.updateAvailable = false;
            launcher.service.state = State::Idle;
            launcher.service.projectPath = installation::addRunnableProject("line", "1.0");
            launcher.service.runStartFlow(); // starts a check
        } else {
            launcher.service.applyChosenUpdate();
        }
        QVERIFY(launcher.service.taskId.startsWith(task));
        if (cancels)
            launcher.service.cancelUpdateTask();
        QVERIFY(QThreadPool::globalInstance()->waitForDone());
        connect(&launcher.service, &LauncherService::applyUpdateFinished, &receiver,
                [&ends] { ++ends; });
        connect(&launcher.service, &LauncherService::updateTaskActiveChanged, &receiver,
                [&ends] { ++ends; });
    }
    QCoreApplication::processEvents();
    QCOMPARE(ends, 0);
}

// --- The order of the waits: check, setup, apply, up to three seconds each ------------------

void WorkerEndsTest::theCheckIsWaitedForBeforeTheSetup() {
    const qint64 took = waitedFor(&LauncherService::checkWatcher, &LauncherService::setupWatcher);
    QVERIFY2(took >= 3500 && took < 5500, qPrintable(QString::number(took)));
}

void WorkerEndsTest::theSetupIsWaitedForBeforeTheApply() {
    const qint64 took = waitedFor(&LauncherService::setupWatcher, &LauncherService::applyWatcher);
    QVERIFY2(took >= 3500 && took < 5500, qPrintable(QString::number(took)));
}

QUORVANE_TEST_MAIN(QCoreApplication, WorkerEndsTest)
#include "worker_ends_test.moc"
