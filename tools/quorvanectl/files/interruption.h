// Ctrl-C as a question that long work asks between two steps, so that it can clear up behind itself.
// interruption_portable.cpp, interruption_windows.cpp.
#pragma once

namespace ctl {

// While one lives, Ctrl-C and a request to terminate (on Windows the end of the console too) only set a
// flag. Main thread; one that is made while another lives goes before it, and shares its flag.
class InterruptionWatch {
public:
    InterruptionWatch();
    ~InterruptionWatch();
    InterruptionWatch(const InterruptionWatch &) = delete;
    InterruptionWatch &operator=(const InterruptionWatch &) = delete;
};

// Whether the user has asked for the end since the first watch began. Any thread.
[[nodiscard]] bool interrupted();

// While one lives, a file is written that Ctrl-C would leave behind half: on Windows the end waits for it.
// Elsewhere such a file has no name yet, and nothing is done. One at a time; main thread.
class WholeFile {
public:
    WholeFile();
    ~WholeFile(); // NOLINT(performance-trivially-destructible): on Windows it is not
    WholeFile(const WholeFile &) = delete;
    WholeFile &operator=(const WholeFile &) = delete;
};

} // namespace ctl
