// How much the launcher's start costs above that of the least Qt program with a dialog.
//
//   benchmark_startup LAUNCHER EMPTY_DIALOG [ROUNDS]
//
// Run it by benchmarks/startup/run, which brings an installation and a screen. The two programs are
// started in turn; a first start of the launcher, which makes its folders and settings, is not
// counted. Goal, as ratios of the medians: time below 1.3 (1.5 at most), memory below 1.25 (1.35).
#include "first_frame.h"

#include <QCoreApplication>
#include <QVector>

#include <algorithm>
#include <cstdio>

namespace {

struct Series {
    QVector<double> time;
    QVector<double> cpu;
    QVector<double> resident;
    QVector<double> proportional;

    void add(const FirstFrame &frame) {
        time.append(frame.milliseconds);
        cpu.append(frame.cpuMilliseconds);
        resident.append(frame.residentMiB);
        proportional.append(frame.proportionalMiB);
    }
};

double median(QVector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double least(const QVector<double> &values) {
    return *std::min_element(values.cbegin(), values.cend());
}

void report(const char *what, const QVector<double> &launcher, const QVector<double> &dialog) {
    std::printf(
        "%-24s launcher %7.2f (least %7.2f)  empty dialog %7.2f (least %7.2f)  ratio %.3f\n", what,
        median(launcher), least(launcher), median(dialog), least(dialog),
        median(launcher) / median(dialog));
}

} // namespace

int main(int argc, char **argv) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const int rounds = arguments.value(3, "40").toInt();
    if (arguments.size() < 3 || rounds < 1) {
        std::fputs("usage: benchmark_startup LAUNCHER EMPTY_DIALOG [ROUNDS]\n", stderr);
        return 2;
    }
    Series launcher;
    Series dialog;
    (void)measureFirstFrame(arguments[1]); // the first start
    (void)measureFirstFrame(arguments[2]);
    for (int i = 0; i < rounds; ++i) {
        launcher.add(measureFirstFrame(arguments[1]));
        dialog.add(measureFirstFrame(arguments[2]));
    }
    report("first frame, ms", launcher.time, dialog.time);
    report("processor time, ms", launcher.cpu, dialog.cpu);
    report("resident memory, MiB", launcher.resident, dialog.resident);
    report("proportional memory, MiB", launcher.proportional, dialog.proportional);
    return 0;
}
