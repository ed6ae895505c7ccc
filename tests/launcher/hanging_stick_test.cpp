// The flow while the mounted volumes do not answer: the cancel, F8 and the end of the launcher reach a
// check that hangs there. The walk over the volumes is this file's, so that no row waits for a limit.
#include "installation.h"
#include "launcher/launcher_service.h"
#include "launcher/offer/stick_walk.h"
#include "signal_log.h"
#include "support/staged_main.h"

#include <QElapsedTimer>
#include <QSemaphore>
#include <QThreadPool>

using State = LauncherService::State;

namespace {

// The walk of one check: it hangs until the test lets it go, and answers with a stick then.
QSemaphore begun;
QSemaphore mayEnd;
QSemaphore ended;

StickManifest onStick() {
    StickManifest manifest;
    manifest.path = "/stick/QuorvanerUpdate/manifest.json";
    manifest.text = "[]";
    manifest.hash = "00";
    return manifest;
}

QStringList readAndRefused() {
    return {"已读取 U 盘 manifest：/stick/QuorvanerUpdate/manifest.json（file_sha256=00）",
            "更新被拒绝：manifest JSON is invalid（source=/stick/QuorvanerUpdate/manifest.json）。"
            "将继续使用当前版本。"};
}

QString cancelledOffer() {
    return "在线更新不可用（cancelled）。可使用 U 盘更新：QuorvanerUpdate/manifest.json。";
}

} // namespace

StickManifest findStickManifest() {
    begun.release();
    mayEnd.acquire();
    ended.release();
    return onStick();
}

class HangingStickTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanupTestCase();
    void aWalkThatAnswersIsTaken();
    void theCancelEndsTheCheckAndF8Works();
    void theEndOfTheLauncherDoesNotWaitForIt();

private:
    // The lines of the log behind the names of their tasks.
    static QStringList takeLog();
};

void HangingStickTest::init() {
    installation::reset();
}

// A row that failed may have left a walk behind, and the end of the process would wait for a check.
void HangingStickTest::cleanupTestCase() {
    mayEnd.release(10);
}

QStringList HangingStickTest::takeLog() {
    QStringList lines = installation::takeLog();
    return lines.replaceInStrings(QRegularExpression("^\\[task [^]]*\\] "), QString());
}

void HangingStickTest::aWalkThatAnswersIsTaken() {
    mayEnd.release();
    LauncherService service;
    service.countdownTimer.setInterval(1000 * 1000);
    service.start();
    QTRY_VERIFY(service.updateCheckDone);
    QCOMPARE(takeLog(), QStringList("started kind=check") + readAndRefused() +
                            QStringList("phase=check elapsedMs=0 none"));
    QVERIFY(begun.tryAcquire() && ended.tryAcquire());
}

void HangingStickTest::theCancelEndsTheCheckAndF8Works() {
    LauncherService service;
    service.countdownTimer.setInterval(1000 * 1000);
    service.start();
    QTRY_COMPARE(begun.available(), 1);
    begun.acquire();
    SignalLog log(service);
    service.enterRepairMode();
    QCOMPARE(service.state, State::Countdown); // refused, as ever while a task runs
    QElapsedTimer waited;
    waited.start();
    service.cancelUpdateTask();
    QTRY_VERIFY(!service.isUpdateTaskActive());
    const qint64 took = waited.elapsed();
    QVERIFY2(took < 1000,
             qPrintable(QString::number(took))); // 100 at most, on a machine that is idle
    service.enterRepairMode();
    QCOMPARE(service.state, State::RepairMode);
    QCoreApplication::processEvents(); // F8 asks for a check of its own
    QCOMPARE(takeLog(), QStringList({"started kind=check", "cancel requested by user",
                                     cancelledOffer(), "phase=check elapsedMs=0 none",
                                     "修复模式下更新检查命中节流窗口（30 秒），跳过重复请求。"}));

    (void)log.take(); // what F8 does after a check has its own tests
    mayEnd.release();
    ended.acquire(); // the late answer: it is dropped
    QCoreApplication::processEvents();
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(takeLog(), QStringList());
    QCOMPARE(service.snapshot.source, QString());
}

void HangingStickTest::theEndOfTheLauncherDoesNotWaitForIt() {
    QElapsedTimer waited;
    {
        LauncherService service;
        service.countdownTimer.setInterval(1000 * 1000);
        service.start();
        QTRY_COMPARE(begun.available(), 1);
        begun.acquire();
        waited.start();
    }
    QVERIFY(QThreadPool::globalInstance()->waitForDone());
    QVERIFY2(waited.elapsed() < 2900, qPrintable(QString::number(waited.elapsed())));
    QCOMPARE(takeLog(), QStringList({"started kind=check", cancelledOffer()}));
    mayEnd.release();
    ended.acquire();
}

QUORVANE_TEST_MAIN(QCoreApplication, HangingStickTest)
#include "hanging_stick_test.moc"
