// The order of signals, slots and enumerations is an interface: workers call a slot by its name,
// and receivers count on the indexes.
#include "launcher/launcher_service.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QMetaEnum>
#include <QMetaMethod>

namespace {

QStringList methods(QMetaMethod::MethodType type) {
    const QMetaObject &meta = LauncherService::staticMetaObject;
    QStringList found;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        if (meta.method(i).methodType() == type)
            found.append(QString::fromLatin1(meta.method(i).methodSignature()));
    }
    return found;
}

QStringList enumerators(const char *name) {
    const QMetaObject &meta = LauncherService::staticMetaObject;
    const QMetaEnum found = meta.enumerator(meta.indexOfEnumerator(name));
    QStringList keys;
    for (int i = 0; i < found.keyCount(); ++i)
        keys.append(QStringLiteral("%1=%2").arg(found.key(i)).arg(found.value(i)));
    return keys;
}

} // namespace

class MetaObjectTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void signalsStandInTheirOrder();
    void slotsStandInTheirOrder();
    void onlyTheTickIsAPublicSlot();
    void enumerationsKeepTheirValues();
    void fieldsStartWithTheirValues();
};

void MetaObjectTest::signalsStandInTheirOrder() {
    const QStringList expected{
        "stateChanged(LauncherService::State)",
        "statusChanged(QString)",
        "countdownChanged(int)",
        "updateSuggestionReady(QString)",
        "updatePromptChanged(LauncherService::UpdatePromptMode)",
        "applyUpdateFinished(bool,QString)",
        "precheckFailed(QString)",
        "launchFailed(QString)",
        "targetExited(int,QString)",
        "updateTaskActiveChanged(bool)",
        "updateTaskProgressChanged(QString,QString,int,QString)",
    };
    QCOMPARE(methods(QMetaMethod::Signal), expected);
    const QMetaObject &meta = LauncherService::staticMetaObject;
    for (int i = 0; i < expected.size(); ++i)
        QCOMPARE(meta.indexOfSignal(qPrintable(expected.at(i))), meta.methodOffset() + i);
}

void MetaObjectTest::slotsStandInTheirOrder() {
    QCOMPARE(
        methods(QMetaMethod::Slot),
        QStringList({"tickCountdown()", "onUpdateCheckFinished()", "onComponentSetupFinished()",
                     "reportUpdateTaskProgress(QString,QString,int,QString)"}));
    QVERIFY(methods(QMetaMethod::Method).isEmpty());
}

void MetaObjectTest::onlyTheTickIsAPublicSlot() {
    const QMetaObject &meta = LauncherService::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        if (method.methodType() == QMetaMethod::Slot)
            QCOMPARE(method.access() == QMetaMethod::Public, method.name() == "tickCountdown");
    }
}

void MetaObjectTest::enumerationsKeepTheirValues() {
    QCOMPARE(enumerators("State"), QStringList({"Idle=0", "Countdown=1", "Precheck=2",
                                                "UpdateCheck=3", "ApplyingUpdate=4", "Launch=5",
                                                "Monitor=6", "RepairMode=7", "Failed=8"}));
    QCOMPARE(enumerators("UpdatePromptMode"),
             QStringList({"None=0", "UsbBanner=1", "OnlineBanner=2", "BadgeOnly=3"}));
    QCOMPARE(LauncherService::staticMetaObject.enumeratorCount(), 2);
}

void MetaObjectTest::fieldsStartWithTheirValues() {
    const LauncherService service;
    QCOMPARE(service.projectPath, QString());
    QVERIFY(service.snapshot.manifestText.isEmpty() && !service.snapshot.fromUsb);
    const UpdateSelection all = service.selection;
    QVERIFY(all.project && all.runtime && all.launcher && all.editor && all.pythonTools);
    QVERIFY(!service.cancelRef);
    QCOMPARE(service.state, LauncherService::State::Idle);
    QCOMPARE(service.statusText, QString());
    QCOMPARE(service.countdownSeconds, 5);
    QVERIFY(!service.skipCorePluginPrecheck && !service.updatesHandled);
    QVERIFY(!service.reloadModelsOnLaunch && !service.updateAvailable);
    QVERIFY(!service.updateCheckDone && !service.checkInFlight && !service.remindLater);
    QCOMPARE(service.promptMode, LauncherService::UpdatePromptMode::None);
    QCOMPARE(service.updateSummary, QString());
    QVERIFY(!service.countdownPaused && !service.launchAfterCheck);
    QVERIFY(!service.resumeCountdownAfterCheck && !service.launchAfterSetup);
    QCOMPARE(service.lastCheckStartMs, qint64(0));
    QCOMPARE(service.taskId, QString());
    QCOMPARE(service.cancelFlag.load(), 0);
    QCOMPARE(service.countdownTimer.interval(), 1000);
    QVERIFY(!service.countdownTimer.isSingleShot() && !service.countdownTimer.isActive());
}

QUORVANE_TEST_MAIN(QCoreApplication, MetaObjectTest)
#include "meta_object_test.moc"
