// Progress on standard error, of anything that takes longer than a second.
#pragma once

#include "quorvanectl/shell/console.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace ctl {

// Tells that `what` goes on: first after a second, then once a second on a terminal, over itself,
// and every ten seconds elsewhere, in lines of their own. It tells from a thread, so nothing else
// may write to the console's `err` while one lives.
class Progress {
public:
    Progress(const Console &console, const QString &what);
    ~Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    // How far the work is, in units of its own: told as a percentage. Any thread.
    void reached(qint64 done, qint64 total);

private:
    void tellUntilEnd();
    void tellOnce(int seconds);

    const Console console;
    const QString what;
    std::atomic<int> percent{-1};
    std::mutex mutex;
    std::condition_variable end;
    bool hasEnded = false;
    bool hasTold = false;
    std::thread teller;
};

// What `work` returns, with progress while it runs.
template<typename Work>
[[nodiscard]] auto whileTelling(const Console &console, const QString &what, Work work) {
    const Progress progress(console, what);
    return work();
}

} // namespace ctl
