#include "quorvanectl/files/interruption.h"

#include <csignal>

namespace ctl {
namespace {

volatile std::sig_atomic_t wasInterrupted = 0;
int watches = 0; // alive

void note(int) {
    wasInterrupted = 1;
}

} // namespace

InterruptionWatch::InterruptionWatch()
    : interruptBefore(
          (wasInterrupted = watches++ > 0 ? wasInterrupted : 0, std::signal(SIGINT, note)))
    , terminateBefore(std::signal(SIGTERM, note)) {}

InterruptionWatch::~InterruptionWatch() {
    --watches;
    (void)std::signal(SIGINT, interruptBefore);
    (void)std::signal(SIGTERM, terminateBefore);
}

bool interrupted() {
    return wasInterrupted != 0;
}

} // namespace ctl
