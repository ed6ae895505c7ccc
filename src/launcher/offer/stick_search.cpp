#include "launcher/offer/stick_search.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

// Constant when the program starts, and never destroyed: any thread may ask at any time.
std::atomic<bool> leftBehind{false};

// What the two threads share. Standard locks, which ThreadSanitizer can see.
struct Answer {
    std::mutex lock;
    std::condition_variable given;
    bool isGiven = false;
    StickManifest manifest;
};

void seek(const std::function<StickManifest()> &walk, const std::shared_ptr<Answer> &answer) {
    StickManifest found;
    try {
        found = walk();
    } catch (...) {
        found = StickManifest(); // out of memory: as if there were no stick
    }
    const std::lock_guard<std::mutex> locked(answer->lock);
    answer->manifest = std::move(found);
    answer->isGiven = true;
    answer->given.notify_one();
}

// False if it did not come in time.
bool waitFor(Answer &answer, Clock::time_point end, const CancelFlag *cancelRef) {
    std::unique_lock<std::mutex> locked(answer.lock);
    const auto isGiven = [&answer] { return answer.isGiven; };
    Clock::time_point now = Clock::now();
    do {
        const auto look = std::min(end, now + std::chrono::milliseconds(stickPollMs));
        if (answer.given.wait_until(locked, look, isGiven))
            return true;
        now = Clock::now();
    } while (now < end && !isCancelled(cancelRef));
    return false;
}

} // namespace

StickSearch searchStick(const std::function<StickManifest()> &walk, int limitMs,
                        const CancelFlag *cancelRef) {
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(limitMs);
    const auto answer = std::make_shared<Answer>();
    std::thread seeker;
    try {
        seeker = std::thread(seek, walk, answer);
    } catch (const std::system_error &) {
        return {}; // the system has no thread to give: as if there were no stick
    }
    if (waitFor(*answer, end, cancelRef)) {
        seeker.join(); // it has nothing left to do that could hang
        return {answer->manifest, false};
    }
    leftBehind = true;
    seeker.detach();
    return {StickManifest(), !isCancelled(cancelRef)};
}

bool isStickSearchLeftBehind() {
    return leftBehind;
}
