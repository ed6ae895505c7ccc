// The states of the flow and what moves between them, as data: the service checks each of its moves
// against it in debug builds, and a test drives each row.
#pragma once

#include "launcher/launcher_service.h"

#include <array>

// A set of states: a bit for each, counted from Idle.
using StateSet = unsigned;

struct Transition {
    // Who can bring it about.
    enum class Reach {
        Window,  // the flow by itself, the entry, or a control of the window
        Callers, // a caller of the public operations; no control of the window does
        Nobody,  // a value of a field that nothing sets today
    };

    StateSet from;
    const char *trigger;
    const char *condition;     // empty: none
    LauncherService::State to; // one of `from` itself: the state stays
    Reach reach;
};

extern const std::array<Transition, 56> transitions;

[[nodiscard]] constexpr bool holds(StateSet states, LauncherService::State state) {
    return ((states >> unsigned(state)) & 1U) != 0;
}

// Whether a row leads from one state to the other. Receivers that run an event loop of their own (a
// message box) do so at the end of a start, of the target or of an update, and the moves that may
// follow then are rows from any state.
[[nodiscard]] bool isTransition(LauncherService::State from, LauncherService::State to);
