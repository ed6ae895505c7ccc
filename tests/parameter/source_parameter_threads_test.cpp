// The store on a thread of its own: many writers, and every way in which it can end.
//
// What Qt orders, ThreadSanitizer cannot see, since Qt is not instrumented. So the tests pass data
// between threads through atomics and promises, hand Qt only functors that hold nothing, and keep to
// the dispatcher without GLib, below which the sanitizer looks at nothing. The queued cells are the
// affair of tsan_event_queue.cpp.
#include "parameter/source_parameter.h"

#include "parameter_support.h"
#include "support/staged_main.h"

#include <QPointer>
#include <QRegularExpression>
#include <QThread>

#include <array>
#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace {

using support::cell;

constexpr int writers = 16;
constexpr int writesEach = 10000;

QString variableOf(int writer) {
    return QStringLiteral("w%1").arg(writer);
}

QString elementOf(int writer, int index) {
    return QStringLiteral("w%1[%2]").arg(QString::number(writer), QString::number(index));
}

// From any thread. The value is named: a temporary would not be registered by its emission.
void write(SourceParameter *store, const QString &name, int value) {
    const YsDate named = cell(value);
    Q_EMIT store->ParaWriteSigDate(name, named);
}

struct Task {
    std::function<void()> run;
    std::promise<void> done;
};
std::atomic<Task *> nextTask{nullptr};

// Runs `run` on the object's thread, behind everything that was emitted before, and waits for it.
void runOn(QObject *object, std::function<void()> run) {
    Task task{std::move(run), {}};
    nextTask = &task;
    QMetaObject::invokeMethod(
        object,
        [] {
            Task *const current = nextTask;
            current->run();
            current->done.set_value();
        },
        Qt::QueuedConnection);
    task.done.get_future().wait();
}

// Makes a variable of each writer and returns the objects: the store frees none of them.
std::vector<std::unique_ptr<BaseParameter>> makeVariables(SourceParameter *store) {
    for (int writer = 0; writer < writers; ++writer)
        write(store, variableOf(writer), 0);
    std::vector<std::unique_ptr<BaseParameter>> made;
    runOn(store, [&] {
        for (BaseParameter *parameter : qAsConst(store->m_parameters))
            made.emplace_back(parameter);
    });
    return made;
}

void freeVariables(SourceParameter *store) {
    runOn(store, [store] {
        qDeleteAll(store->m_parameters);
        store->m_parameters.clear();
        store->m_names.clear();
    });
}

// Sixteen threads at once, each with its own number.
std::vector<std::thread> startWriters(const std::function<void(int)> &work) {
    std::vector<std::thread> threads;
    threads.reserve(writers);
    for (int writer = 0; writer < writers; ++writer)
        threads.emplace_back(work, writer);
    return threads;
}

void join(std::vector<std::thread> threads) {
    for (std::thread &thread : threads)
        thread.join();
}

// What the stores say and do on their threads.
std::mutex heardMutex;
QStringList heard;
std::atomic<int> storesDestroyed{0};
std::atomic<int> threadsFinished{0};

void hear(const QString &line) {
    const std::lock_guard<std::mutex> lock(heardMutex);
    heard.append(line);
}

QStringList whatWasHeard() {
    const std::lock_guard<std::mutex> lock(heardMutex);
    return heard;
}

void hearDebugLine(QtMsgType, const QMessageLogContext &, const QString &line) {
    QString thread;
    QDebug(&thread).nospace() << QThread::currentThreadId();
    hear(line + QStringLiteral(" on ") + thread);
}

// A threaded store whose end is counted.
SourceParameter *makeStore() {
    auto *const store = new SourceParameter(true);
    QObject::connect(store, &QObject::destroyed, [] { ++storesDestroyed; });
    QObject::connect(
        store->m_thread, &QThread::finished, store->m_thread, [] { ++threadsFinished; },
        Qt::DirectConnection);
    return store;
}

} // namespace

class SourceParameterThreadsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void threadedStoreLivesOnItsOwnThread();
    void everyWriteOfEveryWriterArrives();
    void writesOfAWriterStayInOrder();
    void allWritersMayWriteOneVariable();
    void messageReachesAListenerOnTheListenersThread();
    void threadDiagnosticNamesTheStoresThread();
    void storeDeletedFromAnotherThreadIsDeletedOnce();
    void storeMayBeDeletedBeforeItsThreadIsUnderWay();
    void storeMayBeDeletedByAThirdThread();
    void storeMayBeDeletedWithWritesStillQueued();
    void endOfItsThreadDeletesTheStore();
    void deleteLaterEndsTheThread();
    void storeDeletedOnItsOwnThreadDoesNotWaitForItself();
    void threadMayEndWhileWritersEmit();
};

void SourceParameterThreadsTest::initTestCase() {
    qputenv("QT_NO_GLIB", "1");
}

void SourceParameterThreadsTest::init() {
    heard.clear();
    storesDestroyed = 0;
    threadsFinished = 0;
}

void SourceParameterThreadsTest::threadedStoreLivesOnItsOwnThread() {
    SourceParameter store(true);
    QVERIFY(store.m_threaded);
    QVERIFY(store.m_thread != nullptr);
    QCOMPARE(store.thread(), store.m_thread);
    QCOMPARE(store.m_thread->thread(), QThread::currentThread());
    QVERIFY(store.m_thread->isRunning());
    std::atomic<QThread *> worked{nullptr};
    runOn(&store, [&worked] { worked = QThread::currentThread(); });
    QCOMPARE(worked.load(), store.m_thread);
}

void SourceParameterThreadsTest::everyWriteOfEveryWriterArrives() {
    SourceParameter store(true);
    join(startWriters([&store](int writer) {
        write(&store, elementOf(writer, writesEach), -1);
        for (int i = 0; i < writesEach; ++i)
            write(&store, elementOf(writer, i), i);
    }));
    int names = 0;
    int wrong = 0;
    runOn(&store, [&] {
        names = store.m_names.size();
        for (int writer = 0; writer < writers; ++writer) {
            const BaseParameter *const variable =
                store.m_parameters.value(store.m_names.indexOf(variableOf(writer)));
            for (int i = 0; i < writesEach; ++i)
                wrong += variable->m_values.at(std::size_t(i)).value.toInt() != i;
        }
    });
    freeVariables(&store);
    QCOMPARE(names, writers);
    QCOMPARE(wrong, 0);
}

// Every write but the first goes beyond its array, so each is told, in the order it is done.
void SourceParameterThreadsTest::writesOfAWriterStayInOrder() {
    SourceParameter store(true);
    QObject::connect(&store, &SourceParameter::SendMessage, &store, &hear, Qt::DirectConnection);
    join(startWriters([&store](int writer) {
        write(&store, elementOf(writer, 1), 0);
        for (int i = 1; i <= writesEach; ++i)
            write(&store, elementOf(writer, i), i);
    }));
    freeVariables(&store);
    const QRegularExpression form(
        QStringLiteral("^修改参数:w(\\d+)\\[(\\d+)\\] 时,遇到了数组长度超限\\(0\\)问题。$"));
    std::array<int, writers> last{};
    int outOfOrder = 0;
    for (const QString &message : whatWasHeard()) {
        const QRegularExpressionMatch match = form.match(message);
        QVERIFY2(match.hasMatch(), qPrintable(message));
        int &previous = last.at(match.captured(1).toUInt());
        outOfOrder += match.captured(2).toInt() != ++previous;
    }
    QCOMPARE(outOfOrder, 0);
    for (const int count : last)
        QCOMPARE(count, writesEach);
}

void SourceParameterThreadsTest::allWritersMayWriteOneVariable() {
    SourceParameter store(true);
    join(startWriters([&store](int) {
        for (int i = 1; i <= writesEach; ++i)
            write(&store, QStringLiteral("shared"), i);
    }));
    QStringList names;
    int value = 0;
    runOn(&store, [&] {
        names = store.m_names;
        value = store.m_parameters.at(0)->m_values.at(0).value.toInt();
    });
    freeVariables(&store);
    QCOMPARE(names, QStringList("shared"));
    QCOMPARE(value, writesEach); // The last write of all was the last of some writer.
}

void SourceParameterThreadsTest::messageReachesAListenerOnTheListenersThread() {
    SourceParameter store(true);
    QStringList messages;
    QThread *listened = nullptr;
    QObject listener;
    QObject::connect(&store, &SourceParameter::SendMessage, &listener, [&](const QString &message) {
        messages.append(message);
        listened = QThread::currentThread();
    });
    Q_EMIT store.ParaDeleteSigDate(QStringLiteral("a"));
    QTRY_COMPARE(messages, QStringList(QStringLiteral("删除变量：a 时，变量未创建")));
    QCOMPARE(listened, QThread::currentThread());
}

void SourceParameterThreadsTest::threadDiagnosticNamesTheStoresThread() {
    SourceParameter store(true);
    QString id;
    runOn(&store, [&id] { QDebug(&id).nospace() << QThread::currentThreadId(); });
    const QtMessageHandler before = qInstallMessageHandler(hearDebugLine);
    Q_EMIT store.PrintThreadIDSignals();
    runOn(&store, [] {}); // The signal has been received,
    runOn(&store, [] {}); // and what it posted has been done.
    qInstallMessageHandler(before);
    QCOMPARE(whatWasHeard(),
             QStringList(QStringLiteral("SourceParameter在新线程槽函数中的ID: %1 on %1").arg(id)));
}

// The ends.

// The end of the thread, which this waits for, must not delete the store once more.
void SourceParameterThreadsTest::storeDeletedFromAnotherThreadIsDeletedOnce() {
    SourceParameter *const store = makeStore();
    const QPointer<QThread> thread = store->m_thread;
    write(store, "a", 1);
    freeVariables(store);
    delete store;
    QCOMPARE(storesDestroyed.load(), 1);
    QCOMPARE(threadsFinished.load(), 1);
    QVERIFY(thread.isNull());
}

void SourceParameterThreadsTest::storeMayBeDeletedBeforeItsThreadIsUnderWay() {
    for (int i = 0; i < 200; ++i)
        delete makeStore();
    QCOMPARE(storesDestroyed.load(), 200);
    QCOMPARE(threadsFinished.load(), 200);
}

void SourceParameterThreadsTest::storeMayBeDeletedByAThirdThread() {
    SourceParameter *const store = makeStore();
    const QPointer<QThread> thread = store->m_thread;
    std::thread([store] { delete store; }).join();
    QCOMPARE(storesDestroyed.load(), 1);
    QCOMPARE(threadsFinished.load(), 1);
    QVERIFY(thread.isNull());
}

void SourceParameterThreadsTest::storeMayBeDeletedWithWritesStillQueued() {
    SourceParameter *const store = makeStore();
    const auto variables = makeVariables(store);
    join(startWriters([store](int writer) {
        for (int i = 0; i < 1000; ++i)
            write(store, variableOf(writer), i);
    }));
    delete store;
    QCOMPARE(storesDestroyed.load(), 1);
    QCOMPARE(threadsFinished.load(), 1);
}

// The store is deleted on the ending thread itself, which must not wait for itself.
void SourceParameterThreadsTest::endOfItsThreadDeletesTheStore() {
    SourceParameter *const store = makeStore();
    const QPointer<QThread> thread = store->m_thread;
    store->m_thread->quit();
    QTRY_VERIFY(thread.isNull());
    QCOMPARE(storesDestroyed.load(), 1);
    QCOMPARE(threadsFinished.load(), 1);
}

void SourceParameterThreadsTest::deleteLaterEndsTheThread() {
    SourceParameter *const store = makeStore();
    const QPointer<QThread> thread = store->m_thread;
    store->deleteLater();
    QTRY_VERIFY(thread.isNull());
    QCOMPARE(storesDestroyed.load(), 1);
    QCOMPARE(threadsFinished.load(), 1);
}

void SourceParameterThreadsTest::storeDeletedOnItsOwnThreadDoesNotWaitForItself() {
    SourceParameter *const store = makeStore();
    const QPointer<QThread> thread = store->m_thread;
    auto *const neighbour = new QObject;
    neighbour->moveToThread(store->m_thread);
    QObject::connect(store->m_thread, &QThread::finished, neighbour, &QObject::deleteLater);
    runOn(neighbour, [store] { delete store; });
    QCOMPARE(storesDestroyed.load(), 1);
    QTRY_VERIFY(thread.isNull());
    QCOMPARE(threadsFinished.load(), 1);
}

void SourceParameterThreadsTest::threadMayEndWhileWritersEmit() {
    SourceParameter *const store = makeStore();
    const auto variables = makeVariables(store);
    QObject::disconnect(store->m_thread, &QThread::finished, store, nullptr);
    std::atomic<int> underWay{0};
    std::atomic<bool> ended{false};
    std::vector<std::thread> threads = startWriters([&](int writer) {
        for (int i = 0; i < 100; ++i)
            write(store, variableOf(writer), i);
        ++underWay;
        while (!ended)
            write(store, variableOf(writer), -1);
        for (int i = 0; i < 100; ++i)
            write(store, variableOf(writer), i);
    });
    while (underWay < writers)
        std::this_thread::yield();
    store->m_thread->quit();
    store->m_thread->wait();
    QCOMPARE(threadsFinished.load(), 1);
    QCOMPARE(storesDestroyed.load(), 0);
    ended = true;
    join(std::move(threads));
    QCOMPARE(store->m_names.size(), writers);
    delete store;
    QCOMPARE(storesDestroyed.load(), 1);
}

QUORVANE_TEST_MAIN(QCoreApplication, SourceParameterThreadsTest)
#include "source_parameter_threads_test.moc"
