// The project validator over 1,000 scripts of 1,000 lines, in one run with
// `luac5.4 -p` over the same programs in Lua, one process a file.
//
//   time      at most 3 times that of luac5.4; the aim is 2
//   memory    the peak at most 20 MiB above that of a project with one empty script
//
//   benchmark_validator [SCRIPTS [LINES [ROUNDS]]]
//
// The ratio is that of processor time, children included, which other work on the machine moves
// less than elapsed time; both are printed. The peak is that of a process that does nothing else:
// the program starts itself for it.

#include "generated_project.h"
#include "library/function_library.h"
#include "project/project_validator.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <vector>

extern char **environ;

namespace {

struct Size {
    int scripts;
    int lines;
    int rounds;
};

void loadLanguage(const QString &folder) {
    const QString path = QDir(folder).filePath(QStringLiteral("FunctionLib.ini"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) ||
        file.write("[Highlight]\nother=function,include,import\n") < 0)
        qFatal("cannot write the function library");
    file.close();
    if (!FunctionLibrary::instance().load(path))
        qFatal("cannot load the function library");
}

void validate(const QString &project) {
    const QVector<ProjectIssue> issues = validateProjectFile(project);
    // The last script imports one that does not exist, which is no finding.
    if (!issues.isEmpty())
        qFatal("the project is not clean:\n%s", qPrintable(formatProjectIssues(issues.mid(0, 9))));
}

// Started without a shell and without a copy of this process's memory, to favour the other side.
void checkLuaFile(const QByteArray &path) {
    QByteArray program("luac5.4");
    QByteArray option("-p");
    QByteArray file(path);
    char *const arguments[] = {program.data(), option.data(), file.data(), nullptr};
    pid_t child = 0;
    int status = 0;
    if (posix_spawnp(&child, program.constData(), nullptr, nullptr, arguments, environ) != 0 ||
        waitpid(child, &status, 0) != child || status != 0)
        qFatal("luac5.4 -p %s failed", path.constData());
}

void checkLuaFiles(const QString &folder) {
    const QDir files(folder);
    for (const QString &name : files.entryList({QStringLiteral("*.lua")}, QDir::Files))
        checkLuaFile(QFile::encodeName(files.filePath(name)));
}

struct Time {
    double elapsed;
    double processor;
};

double processorSeconds() {
    double total = 0;
    for (const auto who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage usage = {};
        getrusage(who, &usage);
        total += double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                 double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
    }
    return total;
}

template<typename Work>
Time measure(Work work) {
    const double before = processorSeconds();
    QElapsedTimer timer;
    timer.start();
    work();
    return {double(timer.nsecsElapsed()) / 1e9, processorSeconds() - before};
}

void printTimes(const char *name, std::vector<double> &times) {
    std::sort(times.begin(), times.end());
    std::printf("  %-15s best %7.3f s   median %7.3f s   worst %7.3f s\n", name, times.front(),
                times.at(times.size() / 2), times.back());
}

// Returns the median of the processor time.
double report(const char *name, const std::vector<Time> &times) {
    std::vector<double> elapsed;
    std::vector<double> processor;
    for (const Time &time : times) {
        elapsed.push_back(time.elapsed);
        processor.push_back(time.processor);
    }
    std::printf("%s\n", name);
    printTimes("elapsed", elapsed);
    printTimes("processor", processor);
    return processor.at(processor.size() / 2);
}

// Peak resident memory in KiB of a process that validates this project.
qint64 peakOf(const QString &project) {
    QProcess self;
    self.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--peak"), project});
    self.waitForFinished(-1);
    return self.readAllStandardOutput().trimmed().toLongLong();
}

int printPeak(const QString &project) {
    validate(project);
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("%ld\n", usage.ru_maxrss);
    return 0;
}

void compare(const Size &size, const QString &folder) {
    const QDir root(folder);
    root.mkpath(QStringLiteral("project"));
    root.mkpath(QStringLiteral("empty"));
    root.mkpath(QStringLiteral("lua"));
    const QString project =
        writeProject(root.filePath(QStringLiteral("project")), size.scripts, size.lines);
    const QString empty = writeProject(root.filePath(QStringLiteral("empty")), 1, 0);
    const QString lua = root.filePath(QStringLiteral("lua"));
    writeLuaFiles(lua, size.scripts, size.lines);

    std::vector<Time> ours;
    std::vector<Time> theirs;
    for (int i = 0; i < size.rounds; ++i) {
        ours.push_back(measure([&] { validate(project); }));
        theirs.push_back(measure([&] { checkLuaFiles(lua); }));
    }
    std::printf("%d scripts of %d lines, %d rounds\n", size.scripts, size.lines, size.rounds);
    const double our = report("validateProjectFile", ours);
    const double their = report("luac5.4 -p", theirs);
    std::printf("ratio of the medians     %.2f   (at most 0.5)\n", our / their);
    const double above = double(peakOf(project) - peakOf(empty)) / 1024;
    std::printf("peak above an empty one  %.1f MiB   (reach 20)\n", above);
}

} // namespace

int main(int argc, char **argv) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QTemporaryDir folder;
    loadLanguage(folder.path());
    if (arguments.value(1) == QLatin1String("--peak"))
        return printPeak(arguments.value(2));
    const auto number = [&](int index, int otherwise) {
        return arguments.size() > index ? arguments.at(index).toInt() : otherwise;
    };
    compare({number(1, 1000), number(2, 1000), number(3, 11)}, folder.path());
    return 0;
}
