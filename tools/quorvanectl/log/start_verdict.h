// What a start's lines say: when, which project and versions, what was offered and answered, how long
// each part took, and how it ended.
#pragma once

#include "quorvanectl/log/log_starts.h"

#include <QStringList>

namespace ctl {

enum class Level { Note, Warning, Failure };

enum class Ending {
    Exited,          // the target ended
    Running,         // it was started, and the log says no more
    NeverEnded,      // it was started, its end is not in the log, and another start follows
    CannotRun,       // the project has errors, or is gone
    NotStarted,      // the target could not be started
    UpdateBrokenOff, // an update began, and nothing tells its end
    UpdateFailed,
    UpdateCancelled,
    SearchBrokenOff, // it ended while updates were looked for
    Closed,          // the launcher ended before the line was started
};

enum class Answer {
    None,        // nothing was offered
    Updated,     // the project, and what else was chosen
    Installers,  // these alone
    Skipped,     // this version
    StartedOnly, // the line was started without it
    Unknown,     // the log has no answer
};

struct StartPart {
    enum Kind { Search, Update, Setup, Target } kind = Search;
    LogTime begin = 0;
    std::optional<LogTime> end; // none: broken off, or it goes on
};

// A stretch of time of which the log tells nothing, or something that is wrong with it.
struct LogGap {
    enum Kind { Silence, SilenceBefore, ClockBack, Zeros, LeftOut } kind = Silence;
    LogTime from = 0;
    LogTime to = 0;
    qint64 count = 0; // of zero bytes, or of lines left out
};

struct StartVerdict {
    LogTime begin = 0;
    LogTime end = 0;
    QString project;   // its file
    QString installed; // its version
    QString onOffer;   // the version of it that the manifest has
    QString source;    // where the offer came from
    QStringList offered;
    QStringList installers; // those that were started
    Answer answer = Answer::None;
    QVector<StartPart> parts;
    QVector<LogGap> gaps;
    Ending ending = Ending::Closed;
    QString exitCode; // of the target
    bool crashed = false;
    bool isFailure = false; // of the start, or of an update in it
};

[[nodiscard]] StartVerdict judge(const LogStart &start);

// Whether judge() would call it a failure. Fast.
[[nodiscard]] bool isFailure(const LogStart &start);

[[nodiscard]] Level levelOf(const LogEntry &entry);

} // namespace ctl
