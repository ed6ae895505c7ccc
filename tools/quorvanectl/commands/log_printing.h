// The starts of a launch log, as `log` prints them.
#pragma once

#include "quorvanectl/log/start_text.h"
#include "quorvanectl/shell/console.h"

namespace ctl {

struct LogPrinting {
    Language language = Language::English;
    bool allLines = false; // not those alone that warn or tell a failure
};

void printStart(const Console &console, const LogStart &start, const StartVerdict &verdict,
                const LogPrinting &how);

// How many starts there are, how many of them were told, and how many of these failed.
struct LogCount {
    qint64 all = 0;
    qint64 told = 0;
    qint64 failed = 0;
};

void printCount(const Console &console, const LogCount &count, bool lacksBeginning,
                Language language);

} // namespace ctl
