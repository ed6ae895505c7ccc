#include "launcher/transitions.h"

#include <algorithm>

using State = LauncherService::State;

namespace {

constexpr StateSet only(State state) {
    return 1U << unsigned(state);
}

constexpr StateSet idle = only(State::Idle);
constexpr StateSet countdown = only(State::Countdown);
constexpr StateSet precheck = only(State::Precheck);
constexpr StateSet updateCheck = only(State::UpdateCheck);
constexpr StateSet applyingUpdate = only(State::ApplyingUpdate);
constexpr StateSet launch = only(State::Launch);
constexpr StateSet monitor = only(State::Monitor);
constexpr StateSet repairMode = only(State::RepairMode);
constexpr StateSet failed = only(State::Failed);
constexpr StateSet any = 0x1ff;

constexpr Transition::Reach byWindow = Transition::Reach::Window;
constexpr Transition::Reach byCallers = Transition::Reach::Callers;
constexpr Transition::Reach byNobody = Transition::Reach::Nobody;

} // namespace

constexpr std::array<Transition, 56> transitions{{
    // The entry
    {idle, "initialize", "", State::Idle, byWindow},
    {any & ~idle, "initialize", "", State::Idle, byCallers},
    {idle, "start", "", State::Countdown, byWindow},
    {any & ~(idle | repairMode), "start", "", State::Countdown, byCallers},
    {repairMode, "start", "", State::RepairMode, byCallers},

    // The start flow
    {countdown, "tick reaches 0", "no project", State::Failed, byWindow},
    {countdown, "tick reaches 0", "project set", State::Precheck, byWindow},
    {repairMode | failed, "manual start", "no project", State::Failed, byWindow},
    {repairMode | failed, "manual start", "project set", State::Precheck, byWindow},
    {any & ~(repairMode | failed), "manual start", "no project", State::Failed, byCallers},
    {any & ~(precheck | repairMode | failed), "manual start", "project set", State::Precheck,
     byCallers},
    {precheck, "precheck fails", "", State::RepairMode, byWindow},
    {precheck, "check needed", "", State::UpdateCheck, byWindow},
    {precheck, "check running", "", State::Precheck, byWindow},
    {precheck, "banner, automatic start", "", State::RepairMode, byWindow},
    {precheck, "nothing to ask", "", State::Launch, byWindow},
    {launch, "no target or start failed", "", State::Failed, byWindow},
    {launch, "target started", "", State::Monitor, byWindow},

    // F8, and the end of the target. The target may end in any state that follows F8 in Monitor, or
    // an update that the banner still offers there.
    {countdown | monitor | repairMode | failed, "F8", "no task", State::RepairMode, byWindow},
    {any & ~(countdown | monitor | repairMode | failed), "F8", "no task", State::RepairMode,
     byCallers},
    {any & ~(idle | precheck | launch), "target ended", "", State::Failed, byWindow},
    {idle | precheck | launch, "target ended", "", State::Failed, byCallers},

    // A check. In Failed it ends when the target ended first; other states than those of the window
    // are the work of callers that move the flow while it runs.
    {countdown, "check started", "", State::Countdown, byWindow},
    {repairMode, "check started", "", State::UpdateCheck, byWindow},
    {idle, "check started", "", State::UpdateCheck, byCallers},
    {countdown, "check found, banner", "timer paused", State::RepairMode, byWindow},
    {precheck | updateCheck, "check found, banner", "", State::RepairMode, byWindow},
    {idle, "check found, banner", "", State::RepairMode, byCallers},
    {failed, "check found, banner", "", State::Failed, byWindow},
    {monitor, "check found, banner", "the target runs", State::Monitor, byCallers},
    {countdown, "check ended, no banner", "not to launch", State::Countdown, byWindow},
    {updateCheck, "check ended, no banner", "not to launch", State::RepairMode, byWindow},
    {failed, "check ended, no banner", "not to launch", State::Failed, byWindow},
    {precheck | updateCheck | failed, "check ended, no banner", "to launch", State::Launch,
     byWindow},
    {any & ~(precheck | updateCheck | launch | failed), "check ended, no banner", "to launch",
     State::Launch, byCallers},
    {any & ~(countdown | repairMode | failed), "check ended, no banner",
     "begun in the countdown, seconds left", State::Countdown, byCallers},

    // The answers to a prompt. It stays in Monitor when a manual start has passed it by.
    {repairMode, "remind later", "paused, seconds left", State::Countdown, byWindow},
    {idle | precheck | updateCheck, "remind later", "", State::RepairMode, byCallers},
    {repairMode, "skip version", "paused, seconds left", State::Countdown, byWindow},
    {idle | precheck | updateCheck, "skip version", "", State::RepairMode, byCallers},
    {repairMode, "skip and launch", "paused, seconds left", State::Countdown, byWindow},
    {countdown | monitor | repairMode | failed, "skip and launch", "", State::Launch, byWindow},
    {idle | precheck | updateCheck | applyingUpdate, "skip and launch", "", State::Launch,
     byCallers},

    // An update. In Countdown it is still offered where a skipped version could not be stored; in
    // Failed it ends when the target ended first.
    {countdown | monitor | repairMode | failed, "apply accepted", "", State::ApplyingUpdate,
     byWindow},
    {idle | precheck | updateCheck | launch, "apply accepted", "", State::ApplyingUpdate,
     byCallers},
    {applyingUpdate | failed, "apply cancelled or failed", "", State::RepairMode, byWindow},
    {any & ~(applyingUpdate | failed), "apply cancelled or failed", "", State::RepairMode,
     byCallers},
    {applyingUpdate | failed, "apply succeeded", "setup follows", State::ApplyingUpdate, byWindow},
    {any & ~(applyingUpdate | failed), "apply succeeded", "setup follows", State::ApplyingUpdate,
     byCallers},
    {applyingUpdate | failed, "setup cancelled", "", State::RepairMode, byWindow},
    {any & ~(applyingUpdate | failed), "setup cancelled", "", State::RepairMode, byCallers},
    {applyingUpdate | failed, "setup ended", "to launch", State::Launch, byWindow},
    {any & ~(applyingUpdate | launch | failed), "setup ended", "to launch", State::Launch,
     byCallers},
    {applyingUpdate | failed, "setup ended", "another project selected", State::RepairMode,
     byWindow},
    {any & ~(applyingUpdate | failed), "setup ended", "another project selected", State::RepairMode,
     byCallers},
    {any, "setup ended", "not to launch", State::RepairMode, byNobody},
}};

bool isTransition(State from, State to) {
    return std::any_of(transitions.begin(), transitions.end(), [from, to](const Transition &row) {
        return row.to == to && holds(row.from, from);
    });
}
