#include "quorvanectl/log/log_starts.h"

#include <utility>

namespace ctl {
namespace {

// "[task check_1a2b3c4d] …"
bool isSearch(const LogEntry &entry) {
    return entry.text.startsWith("[task check_");
}

} // namespace

StartSplitter::StartSplitter(std::function<void(LogStart &&)> takeStart)
    : found(std::move(takeStart)) {}

// A second search in one start follows a cancelled one, or the check of another project.
bool StartSplitter::opensNextBySearch() const {
    if (current->launched || current->over)
        return true;
    if (!current->searches || current->wasCancelled)
        return false;
    return !(current->searchEnded && current->passed);
}

bool StartSplitter::opensNext(const LogEntry &entry) const {
    switch (entry.kind()) {
    case LineKind::TaskStarted:
        return isSearch(entry) ? opensNextBySearch() : current->launched || current->over;
    case LineKind::Settings:
    case LineKind::PrecheckPassed:
    case LineKind::PrecheckWarns:
    case LineKind::PrecheckFailed:
    case LineKind::Launching:
        return current->launched || current->over;
    case LineKind::StartFailed:
        return current->over;
    default:
        return false;
    }
}

void StartSplitter::note(StartProgress *progress, LogEntry &&entry) {
    switch (entry.kind()) {
    case LineKind::TaskStarted:
        progress->searches = progress->searches || isSearch(entry);
        break;
    case LineKind::TaskPhase:
        progress->searchEnded = progress->searchEnded || isSearch(entry);
        break;
    case LineKind::CancelRequested:
        progress->wasCancelled = progress->wasCancelled || isSearch(entry);
        break;
    case LineKind::PrecheckPassed:
        progress->passed = true;
        break;
    case LineKind::Launching:
        progress->launched = true;
        break;
    case LineKind::PrecheckFailed:
    case LineKind::StartFailed:
    case LineKind::Exited:
        progress->over = true;
        break;
    default:
        break;
    }
    LogStart &start = progress->start;
    if (start.entries.size() >= 2 * LogStart::keptAtEachEnd) {
        start.entries.removeAt(LogStart::keptAtEachEnd);
        ++start.leftOut;
    }
    start.entries.append(std::move(entry));
}

void StartSplitter::add(LogEntry &&entry) {
    const LogTime time = entry.time;
    if (current && previous && entry.kind() == LineKind::Exited && !current->launched &&
        previous->launched && !previous->over) {
        note(&*previous, std::move(entry));
    } else {
        if (current && opensNext(entry)) {
            if (previous)
                give(&*previous, false);
            previous = std::exchange(current, std::nullopt);
        }
        if (!current) {
            constexpr int usual = 16; // entries
            current.emplace();
            current->start.entries.reserve(usual);
            current->start.before = lastTime;
        }
        note(&*current, std::move(entry));
    }
    lastTime = time;
}

void StartSplitter::give(StartProgress *progress, bool isLast) {
    progress->start.isLast = isLast;
    found(std::move(progress->start));
}

void StartSplitter::end() {
    if (previous)
        give(&*previous, false);
    if (current)
        give(&*current, true);
}

} // namespace ctl
