// How long is waited for somebody else's short look at a file: a virus scanner or an indexer opens a new file
// for a moment, and Windows then lets nobody rename, remove or write to it.
#pragma once

#include <QDeadlineTimer>

// How long what was refused is tried again, from the first refusal on.
inline constexpr int patienceMs = 2000;

// For one operation: however many of its steps are refused, it takes no longer than this. Any thread.
class Patience {
public:
    // Pauses before the next try. False, at once, when there is to be none.
    [[nodiscard]] bool goesOn();

private:
    bool isBegun = false;
    QDeadlineTimer end;
};
