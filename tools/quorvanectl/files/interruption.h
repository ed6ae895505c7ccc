// Ctrl-C as a question that long work asks between two steps, so that it can clear up behind itself.
#pragma once

namespace ctl {

// While one lives, Ctrl-C and a request to terminate only set a flag. Main thread; one that is made
// while another lives goes before it, and shares its flag.
class InterruptionWatch {
public:
    InterruptionWatch();
    ~InterruptionWatch();
    InterruptionWatch(const InterruptionWatch &) = delete;
    InterruptionWatch &operator=(const InterruptionWatch &) = delete;

private:
    using Handler = void (*)(int);
    Handler interruptBefore;
    Handler terminateBefore;
};

// Whether the user has asked for the end since the first watch began. Any thread.
[[nodiscard]] bool interrupted();

} // namespace ctl
