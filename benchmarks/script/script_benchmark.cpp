// How fast a script is checked.
//
//   throughput   bytes of source a second that checkScript reads, over a generated program of
//                10 MB, as a ratio to `luac5.4 -p` over the same program in Lua, in one run, medians of
//                11 rounds: at least 0.8; the aim is 1.0. Beside it the time of a bare program that reads
//                the tokens and makes the records of a tree that is known beforehand
//   growth       for each shape of script the exponent of time against size, fitted over four
//                decades: at most 1.1
//
//   benchmark_script [throughput [BYTES [ROUNDS]] | growth [LARGEST] | once BYTES | write FOLDER BYTES]
//
// `once` checks one generated program, and is meant for a profiler and for its peak of memory, which it
// prints beside that before the check. Times are of the processor, so a busy machine disturbs them less.

#include "generated_program.h"
#include "library/function_library.h"
#include "script/script_diagnostics.h"
#include "script/text_parser.h"
#include "script/token_scan.h"
#include "tree_copy.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QVector>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <sys/resource.h>

namespace {

double seconds(const timeval &time) {
    return double(time.tv_sec) + double(time.tv_usec) / 1e6;
}

// Of this process, or of its children that have ended.
double processorTime(int who) {
    rusage usage{};
    getrusage(who, &usage);
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// Checks the script and frees its tree.
double checkTime(const QString &script) {
    ast::ScriptCheckContext context = ast::makeCheckContext(script);
    const double start = processorTime(RUSAGE_SELF);
    std::shared_ptr<ast::Program> program;
    (void)ast::checkScript(context, &program);
    program.reset();
    return processorTime(RUSAGE_SELF) - start;
}

// What is told, without a parser: the tokens are read, and the records of a tree that is known beforehand are made
// and freed.
double bareTime(const QString &script) {
    const std::shared_ptr<const ast::Program> program =
        ast::parseText(script, ast::Detail::Whole).program;
    const double start = processorTime(RUSAGE_SELF);
    constexpr std::size_t most = 1024;
    std::vector<ast::Token> tokens;
    tokens.reserve(most);
    ast::TokenScan scan(script);
    do {
        tokens.clear();
        if (!scan.read(tokens, most))
            qFatal("the generated program holds an unknown character");
    } while (tokens.back().kind != ast::Eof);
    copyOf(*program).reset();
    return processorTime(RUSAGE_SELF) - start;
}

double luacTime(const QString &path) {
    const double start = processorTime(RUSAGE_CHILDREN);
    if (QProcess::execute(QStringLiteral("luac5.4"), {QStringLiteral("-p"), path}) != 0)
        qFatal("luac5.4 -p fails on %s", qPrintable(path));
    return processorTime(RUSAGE_CHILDREN) - start;
}

void write(const QString &path, const QString &text) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0)
        qFatal("cannot write %s", qPrintable(path));
}

void writePrograms(const QDir &folder, int bytes) {
    write(folder.filePath(QStringLiteral("program.ys")), scriptProgram(bytes));
    write(folder.filePath(QStringLiteral("program.lua")), luaProgram(bytes));
}

double median(QVector<double> values) {
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

// Of this process, in MiB.
double peakMemory() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) / 1024;
}

void checkOnce(int bytes) {
    ast::ScriptCheckContext context = ast::makeCheckContext(scriptProgram(bytes));
    const double before = peakMemory();
    const double start = processorTime(RUSAGE_SELF);
    std::shared_ptr<ast::Program> program;
    (void)ast::checkScript(context, &program);
    program.reset();
    std::printf("%.3f s, peak %.1f MiB, %.1f before the check\n",
                processorTime(RUSAGE_SELF) - start, peakMemory(), before);
}

void measureThroughput(int bytes, int rounds) {
    const QTemporaryDir temporary;
    const QDir folder(temporary.path());
    const QString script = scriptProgram(bytes);
    const QString lua = luaProgram(bytes);
    writePrograms(folder, bytes);
    QVector<double> ownTimes;
    QVector<double> otherTimes;
    QVector<double> bareTimes;
    for (int round = 0; round < rounds; ++round) {
        ownTimes.append(checkTime(script));
        bareTimes.append(bareTime(script));
        otherTimes.append(luacTime(folder.filePath(QStringLiteral("program.lua"))));
    }
    const double own = median(ownTimes);
    const double other = median(otherTimes);
    const double bare = median(bareTimes);
    const double ownSpeed = double(script.size()) / own / 1e6;
    const double otherSpeed = double(lua.size()) / other / 1e6;
    std::printf("checkScript  %7.3f s  %6.1f MB/s of %d bytes\n", own, ownSpeed, script.size());
    std::printf("luac5.4 -p   %7.3f s  %6.1f MB/s of %d bytes\n", other, otherSpeed, lua.size());
    std::printf("ratio        %7.2f    (at least 0.8, aim 1.0)\n", ownSpeed / otherSpeed);
    std::printf("bare program %7.3f s, ratio to it %.2f, its own to luac5.4 -p %.2f\n", bare,
                own / bare, double(script.size()) / bare / 1e6 / otherSpeed);
}

// Small sizes are checked many times over, until there is something to measure.
double timeOf(const QString &script) {
    double best = INFINITY;
    for (int round = 0; round < 3; ++round) {
        double total = 0;
        int count = 0;
        while (total < 0.005) {
            total += checkTime(script);
            ++count;
        }
        best = std::min(best, total / count);
    }
    return best;
}

// The slope of the least-squares line through log(time) against log(size).
double exponent(const QVector<double> &sizes, const QVector<double> &times) {
    double x = 0;
    double y = 0;
    double xx = 0;
    double xy = 0;
    for (int i = 0; i < sizes.size(); ++i) {
        const double logSize = std::log(sizes.at(i));
        const double logTime = std::log(times.at(i));
        x += logSize;
        y += logTime;
        xx += logSize * logSize;
        xy += logSize * logTime;
    }
    const double count = sizes.size();
    return (count * xy - x * y) / (count * xx - x * x);
}

void measureGrowth(int largest) {
    std::printf("%-18s %10s %10s %10s %10s %10s  exponent (at most 1.1)\n", "seconds at size",
                "/10000", "/1000", "/100", "/10", "whole");
    for (const ProgramShape &shape : programShapes()) {
        QVector<double> sizes;
        QVector<double> times;
        std::printf("%-18s", shape.name);
        for (int divisor = 10000; divisor >= 1; divisor /= 10) {
            const QString script = shape.script(largest / divisor);
            sizes.append(script.size());
            times.append(timeOf(script));
            std::printf(" %10.6f", times.last());
        }
        std::printf("  %.2f\n", exponent(sizes, times));
        std::fflush(stdout);
    }
}

} // namespace

int main(int argc, char **argv) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QString what = arguments.value(1);
    const auto number = [&arguments](int index, int otherwise) {
        const int value = arguments.value(index).toInt();
        return value > 0 ? value : otherwise;
    };
    const QTemporaryDir folder;
    const QString library = QDir(folder.path()).filePath(QStringLiteral("FunctionLib.ini"));
    write(library, QStringLiteral("[Highlight]\nother=function,include,import\n"));
    if (!FunctionLibrary::instance().load(library))
        qFatal("cannot load %s", qPrintable(library));
    if (what == QLatin1String("once"))
        checkOnce(number(2, 10000000));
    else if (what == QLatin1String("write"))
        writePrograms(QDir(arguments.value(2)), number(3, 10000000));
    if (what.isEmpty() || what == QLatin1String("throughput"))
        measureThroughput(number(2, 10000000), number(3, 11));
    if (what.isEmpty() || what == QLatin1String("growth"))
        measureGrowth(number(2, 1000000));
    return 0;
}
