// Writes a second that the parameter store takes through its queued signal, by the number of names
// that it holds, against a bare queued signal that carries the same arguments to a slot that does
// nothing. Both are received on a thread of their own, and a round ends when its last write is done.
//
// The store finds a name by looking along its list. Up to a hundred names that hardly shows beside
// the signal itself; with a thousand a write costs some three times as much, with ten thousand twenty.
//
//   benchmark_parameter [--benchmark_repetitions=5]
#include "parameter/source_parameter.h"

#include <QCoreApplication>
#include <QSemaphore>
#include <QThread>

#include <benchmark/benchmark.h>

namespace {

constexpr int writesInARound = 20000;

QStringList namesOf(qint64 count) {
    QStringList names;
    for (qint64 i = 0; i < count; ++i)
        names.append(QStringLiteral("station_%1").arg(i, 5, 10, QLatin1Char('0')));
    return names;
}

// Returns when the object's thread has done all that was queued before.
void waitFor(QObject *object) {
    QSemaphore done;
    QMetaObject::invokeMethod(
        object, [&done] { done.release(); }, Qt::QueuedConnection);
    done.acquire();
}

} // namespace

class BareReceiver : public QObject {
    Q_OBJECT

public:
    BareReceiver() {
        moveToThread(&m_thread);
        m_thread.start();
        connect(this, &BareReceiver::ParaWriteSigDate, this, &BareReceiver::receive,
                Qt::QueuedConnection);
    }
    ~BareReceiver() override {
        m_thread.quit();
        m_thread.wait();
    }

Q_SIGNALS:
    void ParaWriteSigDate(QString name, YsDate value);

private:
    void receive(const QString &, const YsDate &) {}

    QThread m_thread;
};

namespace {

// One writer that goes through the names in turn.
template<typename Receiver>
void measureWrites(benchmark::State &state, Receiver &receiver, const QStringList &names) {
    YsDate value;
    value.value = 12.5;
    for (const QString &name : names)
        Q_EMIT receiver.ParaWriteSigDate(name, value);
    waitFor(&receiver);

    int next = 0;
    for (auto _ : state) {
        for (int i = 0; i < writesInARound; ++i) {
            Q_EMIT receiver.ParaWriteSigDate(names.at(next), value);
            next = (next + 1) % names.size();
        }
        waitFor(&receiver);
    }
    state.SetItemsProcessed(state.iterations() * writesInARound);
}

void bareSignal(benchmark::State &state) {
    BareReceiver receiver;
    measureWrites(state, receiver, namesOf(state.range(0)));
}

void store(benchmark::State &state) {
    SourceParameter receiver(true);
    measureWrites(state, receiver, namesOf(state.range(0)));
    qDeleteAll(receiver.m_parameters); // The store is idle: nothing else is queued to its thread.
}

void byNames(benchmark::internal::Benchmark *benchmark) {
    benchmark->ArgName("names")->Arg(1)->Arg(10)->Arg(100)->Arg(1000)->Arg(10000);
    benchmark->UseRealTime()->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
}

BENCHMARK(bareSignal)->Apply(byNames);
BENCHMARK(store)->Apply(byNames);

} // namespace

int main(int argc, char **argv) {
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

#include "parameter_benchmark.moc"
