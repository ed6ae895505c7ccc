#include "quorvanectl/log/log_starts.h"

#include <string_view>
#include <utility>

namespace ctl {
namespace {

// Memory beyond these is freed.
constexpr int usualEntries = 16;  // of a start
constexpr int usualText = 500;    // bytes
constexpr size_t mostSpares = 64; // texts

// To leave out one entry moves all behind it, so it is done for many at once.
constexpr int mostEntries = 3 * LogStart::keptAtEachEnd;

void leaveOut(LogStart *start) {
    const int count = start->entries.size() - 2 * LogStart::keptAtEachEnd;
    if (count <= 0)
        return;
    start->entries.remove(LogStart::keptAtEachEnd, count);
    start->leftOut += count;
}

} // namespace

bool isSearch(const LogEntry &entry) {
    constexpr std::string_view task = "[task check_";
    const std::string_view text(entry.text.constData(), size_t(entry.text.size()));
    return text.substr(0, task.size()) == task;
}

StartSplitter::StartSplitter(std::function<void(LogStart *)> takeStart)
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

void StartSplitter::note(StartProgress *progress, LogEntry *entry) {
    switch (entry->kind()) {
    case LineKind::TaskStarted:
        progress->searches = progress->searches || isSearch(*entry);
        break;
    case LineKind::TaskPhase:
        progress->searchEnded = progress->searchEnded || isSearch(*entry);
        break;
    case LineKind::CancelRequested:
        progress->wasCancelled = progress->wasCancelled || isSearch(*entry);
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
    if (start.entries.size() >= mostEntries)
        leaveOut(&start);
    start.entries.append(std::move(*entry));
    if (!spareTexts.empty()) {
        entry->text.swap(spareTexts.back());
        spareTexts.pop_back();
    }
}

void StartSplitter::add(LogEntry *entry) {
    const LogTime time = entry->time;
    if (current && previous && entry->kind() == LineKind::Exited && !current->launched &&
        previous->launched && !previous->over) {
        note(&*previous, entry);
    } else {
        if (current && opensNext(*entry)) {
            if (previous)
                give(&*previous, false);
            previous = std::exchange(current, std::nullopt);
        }
        if (!current) {
            current.emplace();
            current->start.entries = std::move(spareEntries);
            current->start.entries.reserve(usualEntries);
            current->start.before = lastTime;
        }
        note(&*current, entry);
    }
    lastTime = time;
}

void StartSplitter::give(StartProgress *progress, bool isLast) {
    progress->start.isLast = isLast;
    leaveOut(&progress->start);
    found(&progress->start);
    reuse(&progress->start.entries);
}

// A log may have ten million lines: to ask for memory for each, and to free it, took a fifth of the time.
void StartSplitter::reuse(QVector<LogEntry> *entries) {
    for (LogEntry &entry : *entries) {
        if (spareTexts.size() < mostSpares && entry.text.capacity() <= usualText)
            spareTexts.push_back(std::move(entry.text));
    }
    entries->clear();
    if (entries->capacity() <= 2 * usualEntries)
        spareEntries = std::move(*entries);
}

void StartSplitter::end() {
    if (previous)
        give(&*previous, false);
    if (current)
        give(&*current, true);
}

} // namespace ctl
