// A command run to its end, with what it took.
#pragma once

#include <QByteArray>

#include <vector>

struct Spent {
    double seconds = 0;
    double peakMebibytes = 0;    // of memory
    double processorSeconds = 0; // its own and the system's for it
};

// A command that cannot be run, or fails, ends the benchmark.
[[nodiscard]] Spent runProcess(const std::vector<QByteArray> &command);

[[nodiscard]] double median(std::vector<double> values);
