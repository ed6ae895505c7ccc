#include "quorvanectl/log/start_verdict.h"

#include "quorvanectl/log/text_match.h"

#include <algorithm>

namespace ctl {
namespace {

constexpr LogTime longSilence = 15 * LogTime(60); // seconds, within a start
constexpr LogTime longSilenceBefore =
    LogTime(7) * 24 * 3600;   // seconds, between two: no weekend is longer
constexpr LogTime jitter = 2; // seconds by which lines of two programs may be out of order

bool exitedWell(const LogEntry &entry) {
    return entry.text.startsWith("Target exited with code 0.");
}

// --- how it ended ----------------------------------------------------------------------------------

// The task that was begun and of whose end nothing is told.
struct OpenTask {
    bool isUpdate = false; // of the project or of installers
    bool isSearch = false;
};

OpenTask openTask(const LogStart &start) {
    OpenTask open;
    for (const LogEntry &entry : start.entries) {
        switch (entry.kind()) {
        case LineKind::TaskStarted:
            (isSearch(entry) ? open.isSearch : open.isUpdate) = true;
            break;
        case LineKind::TaskPhase:
            if (isSearch(entry))
                open.isSearch = false;
            else if (!entry.text.contains("] phase=apply ")) // the installers follow
                open.isUpdate = false;
            break;
        case LineKind::CancelRequested: // of installers the log tells no other end
            if (entry.text.startsWith("[task setup_"))
                open.isUpdate = false;
            break;
        case LineKind::UpdateFailed:
        case LineKind::UpdateCancelled:
        case LineKind::Launching:
            open.isUpdate = false;
            break;
        default:
            break;
        }
    }
    return open;
}

// The last line that says how it ended; null if there is none.
const LogEntry *lastEnd(const LogStart &start) {
    const LogEntry *last = nullptr;
    for (const LogEntry &entry : start.entries) {
        switch (entry.kind()) {
        case LineKind::Launching:
        case LineKind::Exited:
        case LineKind::StartFailed:
        case LineKind::PrecheckFailed:
        case LineKind::UpdateFailed:
        case LineKind::UpdateCancelled:
            last = &entry;
            break;
        default:
            break;
        }
    }
    return last;
}

Ending endingOf(const LogStart &start) {
    const OpenTask open = openTask(start);
    if (open.isUpdate)
        return Ending::UpdateBrokenOff;
    const LogEntry *const last = lastEnd(start);
    switch (last == nullptr ? LineKind::Tells : last->kind()) {
    case LineKind::Launching:
        return start.isLast ? Ending::Running : Ending::NeverEnded;
    case LineKind::Exited:
        return Ending::Exited;
    case LineKind::StartFailed:
        return Ending::NotStarted;
    case LineKind::PrecheckFailed:
        return Ending::CannotRun;
    case LineKind::UpdateFailed:
        return Ending::UpdateFailed;
    case LineKind::UpdateCancelled:
        return Ending::UpdateCancelled;
    default:
        return open.isSearch ? Ending::SearchBrokenOff : Ending::Closed;
    }
}

// --- what it tells ---------------------------------------------------------------------------------

// Behind " --project=", up to the next argument: a path may hold blanks.
void readLaunch(const QString &text, StartVerdict *verdict) {
    const QString before = QStringLiteral(" --project=");
    const int from = text.indexOf(before);
    if (from < 0)
        return;
    const int begin = from + before.size();
    const int end = text.indexOf(QLatin1String(" --locale="), begin);
    verdict->project = text.mid(begin, end < 0 ? -1 : end - begin);
}

// The line of an offer that names each item and its version.
void readOffer(const QString &text, StartVerdict *verdict) {
    verdict->offered.clear();
    for (const QString &line : text.split(QLatin1Char('\n'))) {
        if (!line.contains(QLatin1String(" -> ")))
            continue;
        const int colon = std::max(line.indexOf(QLatin1String(": ")) + 1,
                                   line.indexOf(QChar(0xFF1A))); // a wide one in Chinese
        verdict->offered = line.mid(colon + 1).trimmed().split(QStringLiteral(", "));
        return;
    }
}

void readEntry(const LogEntry &entry, StartVerdict *verdict) {
    if (entry.line == nullptr)
        return;
    const QString text = QString::fromUtf8(entry.text);
    const QStringList filled = knownMessage(text, entry.isCut).filled;
    switch (entry.kind()) {
    case LineKind::Compared:
        verdict->installed = filled.value(0);
        verdict->onOffer = filled.value(1);
        verdict->project = filled.value(3);
        break;
    case LineKind::Uncompared:
    case LineKind::PrecheckPassed:
        verdict->project = filled.value(0);
        break;
    case LineKind::PrecheckFailed:
        if (text.startsWith(QLatin1String("Project file")))
            verdict->project = filled.value(0);
        break;
    case LineKind::Launching:
        readLaunch(text, verdict);
        break;
    case LineKind::Offer:
        verdict->source = filled.value(0);
        readOffer(text, verdict);
        break;
    case LineKind::InstallerStarted:
        verdict->installers.append(filled.value(0));
        break;
    case LineKind::Exited:
        verdict->exitCode = filled.value(0);
        verdict->crashed = filled.value(1).contains(QString::fromUtf8("崩溃"));
        break;
    default:
        break;
    }
}

// The last answer counts.
Answer answerOf(const LogStart &start) {
    Answer answer = Answer::None;
    for (const LogEntry &entry : start.entries) {
        switch (entry.kind()) {
        case LineKind::Offer:
            answer = Answer::Unknown;
            break;
        case LineKind::Skipped:
            answer = Answer::Skipped;
            break;
        case LineKind::TaskStarted:
            if (entry.text.startsWith("[task apply_"))
                answer = Answer::Updated;
            else if (entry.text.startsWith("[task setup_"))
                answer = Answer::Installers;
            break;
        case LineKind::Launching:
            if (answer == Answer::Unknown)
                answer = Answer::StartedOnly;
            break;
        default:
            break;
        }
    }
    return answer;
}

// --- how long each part took ---------------------------------------------------------------------

StartPart::Kind partOf(const LogEntry &entry) {
    if (entry.text.startsWith("[task apply_"))
        return StartPart::Update;
    return entry.text.startsWith("[task setup_") ? StartPart::Setup : StartPart::Search;
}

void endPart(QVector<StartPart> *parts, StartPart::Kind kind, LogTime time) {
    const auto part = std::find_if(parts->rbegin(), parts->rend(), [kind](const StartPart &it) {
        return it.kind == kind && !it.end;
    });
    if (part != parts->rend())
        part->end = time;
}

QVector<StartPart> partsOf(const LogStart &start) {
    QVector<StartPart> parts;
    for (const LogEntry &entry : start.entries) {
        switch (entry.kind()) {
        case LineKind::TaskStarted:
            parts.append({partOf(entry), entry.time, {}});
            break;
        case LineKind::TaskPhase:
            if (entry.text.contains("] phase=setup ")) {
                endPart(&parts, StartPart::Setup, entry.time);
            } else if (entry.text.contains("] phase=apply ")) {
                endPart(&parts, StartPart::Update, entry.time);
                parts.append({StartPart::Setup, entry.time, {}});
            } else {
                endPart(&parts, StartPart::Search, entry.time);
            }
            break;
        case LineKind::UpdateFailed:
        case LineKind::UpdateCancelled:
            endPart(&parts, StartPart::Update, entry.time);
            break;
        case LineKind::Launching:
            parts.append({StartPart::Target, entry.time, {}});
            break;
        case LineKind::StartFailed:
        case LineKind::Exited:
            endPart(&parts, StartPart::Target, entry.time);
            break;
        default:
            break;
        }
    }
    return parts;
}

// --- what is missing -------------------------------------------------------------------------------

void addGap(QVector<LogGap> *gaps, LogGap::Kind kind, LogTime from, LogTime to, LogTime longest) {
    if (to < from - jitter)
        gaps->append({LogGap::ClockBack, from, to, 0});
    else if (to - from > longest)
        gaps->append({kind, from, to, 0});
}

// While the target runs, nothing has to be logged.
QVector<LogGap> gapsOf(const LogStart &start) {
    QVector<LogGap> gaps;
    if (start.before)
        addGap(&gaps, LogGap::SilenceBefore, *start.before, start.entries.first().time,
               longSilenceBefore);
    bool runs = false;
    for (int i = 0; i < start.entries.size(); ++i) {
        const LogEntry &entry = start.entries.at(i);
        if (entry.zeros > 0)
            gaps.append({LogGap::Zeros, entry.time, entry.time, entry.zeros});
        if (i == LogStart::keptAtEachEnd && start.leftOut > 0)
            gaps.append({LogGap::LeftOut, start.entries.at(i - 1).time, entry.time, start.leftOut});
        else if (i > 0)
            addGap(&gaps, LogGap::Silence, start.entries.at(i - 1).time, entry.time,
                   runs ? entry.time : longSilence);
        runs = (runs || entry.kind() == LineKind::Launching) && entry.kind() != LineKind::Exited;
    }
    return gaps;
}

} // namespace

Level levelOf(const LogEntry &entry) {
    switch (entry.kind()) {
    case LineKind::Exited:
        return exitedWell(entry) ? Level::Note : Level::Failure;
    case LineKind::UpdateRefused:
    case LineKind::UpdateFailed:
    case LineKind::PrecheckFailed:
    case LineKind::StartFailed:
    case LineKind::Fails:
        return Level::Failure;
    case LineKind::Warns:
    case LineKind::Offline:
    case LineKind::Settings:
    case LineKind::PrecheckWarns:
        return Level::Warning;
    default:
        return Level::Note;
    }
}

bool isFailure(const LogStart &start) {
    const Ending ending = endingOf(start);
    return ending == Ending::NeverEnded || ending == Ending::UpdateBrokenOff ||
           std::any_of(start.entries.begin(), start.entries.end(),
                       [](const LogEntry &entry) { return levelOf(entry) == Level::Failure; });
}

StartVerdict judge(const LogStart &start) {
    StartVerdict verdict;
    verdict.begin = start.entries.first().time;
    verdict.end = start.entries.last().time;
    for (const LogEntry &entry : start.entries)
        readEntry(entry, &verdict);
    verdict.answer = answerOf(start);
    verdict.parts = partsOf(start);
    verdict.gaps = gapsOf(start);
    verdict.ending = endingOf(start);
    verdict.isFailure = isFailure(start);
    return verdict;
}

} // namespace ctl
