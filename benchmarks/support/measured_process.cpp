#include "measured_process.h"

#include <QElapsedTimer>

#include <algorithm>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

extern char **environ;

Spent runProcess(const std::vector<QByteArray> &command) {
    std::vector<QByteArray> words = command;
    std::vector<char *> arguments;
    arguments.reserve(words.size() + 1);
    for (QByteArray &word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    QElapsedTimer clock;
    clock.start();
    pid_t child = 0;
    int status = 0;
    rusage usage = {};
    if (posix_spawnp(&child, arguments.front(), nullptr, nullptr, arguments.data(), environ) != 0 ||
        wait4(child, &status, 0, &usage) != child || status != 0)
        qFatal("%s failed", command.front().constData());
    const auto seconds = [](const timeval &time) {
        return double(time.tv_sec) + double(time.tv_usec) / 1e6;
    };
    return {double(clock.nsecsElapsed()) / 1e9, double(usage.ru_maxrss) / 1024,
            seconds(usage.ru_utime) + seconds(usage.ru_stime)};
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}
