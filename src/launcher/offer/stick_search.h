// The search for a stick's manifest, with an end: a volume that never answers, a dead network drive for
// one, holds nobody up.
//
// Nothing ends a call that hangs in the system. So the walk has a thread of its own, and whoever waits
// for it gives up in time and leaves the thread behind. What it finds later is dropped. It owns what it
// works on, together with the one who waits, and never logs.
#pragma once

#include "launcher/offer/stick_manifest.h"
#include "update/files/cancel_flag.h"

#include <functional>

// For the walk, the look for the manifest and its reading together.
inline constexpr int stickLimitMs = 5000;

// How often the cancel flag is looked at meanwhile.
inline constexpr int stickPollMs = 100;

struct StickSearch {
    StickManifest manifest; // empty: there is no stick, as far as is known
    bool outOfTime = false; // the limit ended the search
};

// Does the walk, and waits for it until `limitMs` have passed or the flag (which may be null) is up. An
// answer that comes at once counts also when the flag is up already. A walk that throws has found
// nothing. Any thread.
[[nodiscard]] StickSearch searchStick(const std::function<StickManifest()> &walk, int limitMs,
                                      const CancelFlag *cancelRef);

// Whether a thread has been left behind in this process. The volume may answer at any moment, and the
// thread would then meet what the end of a process destroys first: such a process ends by std::_Exit.
[[nodiscard]] bool isStickSearchLeftBehind();
