#include "quorvanectl/shell/progress.h"

#include <chrono>

namespace ctl {
namespace {

constexpr int secondsBetweenLines = 10;

} // namespace

Progress::Progress(const Console &shownOn, const QString &work)
    : console(shownOn)
    , what(spelledOut(work))
    , teller([this] { tellUntilEnd(); }) {}

Progress::~Progress() {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        hasEnded = true;
    }
    end.notify_one();
    teller.join();
    if (hasTold && console.errorsOnTerminal)
        (void)console.err->write("\r\x1b[K"); // the line has served its time
}

void Progress::reached(qint64 done, qint64 total) {
    percent = total > 0 ? int(done * 100 / total) : -1;
}

void Progress::tellUntilEnd() {
    std::unique_lock<std::mutex> lock(mutex);
    for (int seconds = 1;; ++seconds) {
        if (end.wait_for(lock, std::chrono::seconds(1), [this] { return hasEnded; }))
            return;
        if (console.errorsOnTerminal || seconds % secondsBetweenLines == 1)
            tellOnce(seconds);
    }
}

void Progress::tellOnce(int seconds) {
    const int known = percent;
    const QString amount =
        known < 0 ? QStringLiteral("%1 s").arg(seconds) : QStringLiteral("%1 %").arg(known);
    const QString line = QStringLiteral("%1: %2").arg(what, amount);
    const QString framed = console.errorsOnTerminal ? QStringLiteral("\r%1\x1b[K").arg(line)
                                                    : line + QLatin1Char('\n');
    (void)console.err->write(framed.toUtf8());
    hasTold = true;
}

} // namespace ctl
