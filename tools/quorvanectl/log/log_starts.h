// Cuts a launch log into starts. No line marks one, so the order of the lines does: what comes before a
// line was started, while it ran and at its end is one start; another search for updates, another check
// of a project or another launch after that is the next.
#pragma once

#include "quorvanectl/log/log_reader.h"

#include <QVector>

#include <functional>
#include <optional>
#include <vector>

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

// Whether it is a line of a search for updates, "[task check_1a2b3c4d] …".
[[nodiscard]] bool isSearch(const LogEntry &entry);

class StartSplitter {
public:
    // `found` gets each start, in the order of the log, and may take it. One that it leaves, or puts in its
    // place, lends its memory to what comes.
    explicit StartSplitter(std::function<void(LogStart *)> found);

    // Takes what the entry tells, and leaves it the memory of another.
    void add(LogEntry *entry);

    // Gives what is left. The last call.
    void end();

private:
    [[nodiscard]] bool opensNext(const LogEntry &entry) const;
    [[nodiscard]] bool opensNextBySearch() const;
    void note(StartProgress *progress, LogEntry *entry);
    void give(StartProgress *progress, bool isLast);
    void reuse(QVector<LogEntry> *entries);

    const std::function<void(LogStart *)> found;
    std::optional<LogTime> lastTime;
    // The end of a target is logged after what the user did meanwhile: one start is held back for it.
    std::optional<StartProgress> previous;
    std::optional<StartProgress> current;
    // The memory of starts that are no longer needed. What the texts say is of no meaning.
    std::vector<QByteArray> spareTexts;
    QVector<LogEntry> spareEntries; // empty
};

} // namespace ctl
