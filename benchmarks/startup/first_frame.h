// Watches from outside how a program comes up on an X screen, through nothing but what the screen
// shows and what /proc tells.
#pragma once

#include <QStringList>

struct FirstFrame {
    double milliseconds = 0;    // from just before the process is made until its window is painted
    double cpuMilliseconds = 0; // that all its threads worked for it
    double residentMiB = 0;     // of the process, stopped at that frame
    double proportionalMiB = 0; // the same with shared pages divided among those that share them
};

// Starts `program`, waits for the first frame of its first window and ends it. The screen must have
// no window of another program. Ends the benchmark with a message if no frame comes.
[[nodiscard]] FirstFrame measureFirstFrame(const QString &program);
