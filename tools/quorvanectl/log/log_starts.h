// Cuts a launch log into starts. No line marks one, so the order of the lines does: what comes before a
// line was started, while it ran and at its end is one start; another search for updates, another check
// of a project or another launch after that is the next.
#pragma once

#include "quorvanectl/log/log_reader.h"

#include <QVector>

#include <functional>
#include <optional>

namespace ctl {

struct LogStart {
    static constexpr int keptAtEachEnd = 100; // entries

    QVector<LogEntry> entries;     // of very many the first and the last ones
    qint64 leftOut = 0;            // entries between these
    std::optional<LogTime> before; // when the last line before this start was written
    bool isLast = false;           // nothing follows it in the log
};

// What has been seen of a start.
struct StartProgress {
    LogStart start;
    bool searches = false;     // a search for updates was begun,
    bool searchEnded = false;  // and ended,
    bool wasCancelled = false; // or was cancelled
    bool passed = false;       // the project was checked and can run
    bool launched = false;
    bool over = false; // by whatever end
};

class StartSplitter {
public:
    // `found` gets each start, in the order of the log.
    explicit StartSplitter(std::function<void(LogStart &&)> found);

    void add(LogEntry &&entry);

    // Gives what is left. The last call.
    void end();

private:
    [[nodiscard]] bool opensNext(const LogEntry &entry) const;
    [[nodiscard]] bool opensNextBySearch() const;
    static void note(StartProgress *progress, LogEntry &&entry);
    void give(StartProgress *progress, bool isLast);

    const std::function<void(LogStart &&)> found;
    std::optional<LogTime> lastTime;
    // The end of a target is logged after what the user did meanwhile: one start is held back for it.
    std::optional<StartProgress> previous;
    std::optional<StartProgress> current;
};

} // namespace ctl
