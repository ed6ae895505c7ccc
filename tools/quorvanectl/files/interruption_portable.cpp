#include "quorvanectl/files/interruption.h"

#include <csignal>

namespace ctl {
namespace {

using Handler = void (*)(int);

volatile std::sig_atomic_t wasInterrupted = 0;
int watches = 0; // alive
Handler interruptBefore = SIG_DFL;
Handler terminateBefore = SIG_DFL;

void note(int) {
    wasInterrupted = 1;
}

} // namespace

InterruptionWatch::InterruptionWatch() {
    if (watches++ > 0)
        return;
    wasInterrupted = 0;
    interruptBefore = std::signal(SIGINT, note);
    terminateBefore = std::signal(SIGTERM, note);
}

InterruptionWatch::~InterruptionWatch() {
    if (--watches > 0)
        return;
    (void)std::signal(SIGINT, interruptBefore);
    (void)std::signal(SIGTERM, terminateBefore);
}

bool interrupted() {
    return wasInterrupted != 0;
}

WholeFile::WholeFile() = default;
WholeFile::~WholeFile() = default;

} // namespace ctl
