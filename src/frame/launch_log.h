// The launch log: one plain UTF-8 file that records across runs what the launcher decided and why.
// It only grows; a support engineer reads it, and the window shows the part of the current run.
#pragma once

#include <QString>

#include <functional>

// Adds one line, "yyyy-MM-dd HH:mm:ss message" in local time, to AppPaths::launchLogPath(). The
// file is opened and closed for each line. A line that cannot be written is lost without a report,
// as where a pipe or a device lies in place of the file: the log never stops the flow. Any thread.
void appendLaunchLog(const QString &message);

// Where the lines go from now on instead of the file, each as it was passed and without a time; an
// empty function brings the file back. For the command line tool alone, which shows what the
// launcher would log and leaves the log to it. Main thread, while no other thread logs.
void redirectLaunchLog(std::function<void(const QString &message)> sink);

// What the launch log gained since this view was made.
class RunLogView {
public:
    RunLogView();

    // The lines of this run without white space at the ends, read anew; empty if there are none or
    // the file cannot be read, or is a pipe or a device. A log that became shorter was replaced and
    // is read from its start.
    [[nodiscard]] QString text() const;

private:
    qint64 offset = 0; // bytes that the file held before this run
};
