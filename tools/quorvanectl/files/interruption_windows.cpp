// Windows tells of Ctrl-C on a thread of its own.
#include "quorvanectl/files/interruption.h"

#include <windows.h>

#include <atomic>
#include <mutex>

namespace ctl {
namespace {

std::atomic<bool> wasInterrupted{false};
std::atomic<int> watches{0}; // alive
std::mutex fileIsWritten;

BOOL WINAPI note(DWORD event) {
    wasInterrupted = true;
    // Where the console, the session or the machine ends, the program ends once this returns. What is going
    // on has a few seconds to clear up, and ends the program by itself.
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        Sleep(INFINITE);
    return TRUE;
}

// Whoever is asked next ends the program, unless a watch lives. Until then no other file is begun: the lock is
// kept.
BOOL WINAPI waitForTheFile(DWORD) {
    if (watches == 0)
        fileIsWritten.lock();
    return FALSE;
}

} // namespace

InterruptionWatch::InterruptionWatch() {
    if (watches++ > 0)
        return;
    wasInterrupted = false;
    (void)SetConsoleCtrlHandler(note, TRUE); // without a console nobody asks for the end
}

InterruptionWatch::~InterruptionWatch() {
    if (--watches > 0)
        return;
    (void)SetConsoleCtrlHandler(note, FALSE);
}

bool interrupted() {
    return wasInterrupted;
}

WholeFile::WholeFile() {
    fileIsWritten.lock();
    (void)SetConsoleCtrlHandler(waitForTheFile, TRUE);
}

WholeFile::~WholeFile() {
    (void)SetConsoleCtrlHandler(waitForTheFile, FALSE);
    fileIsWritten.unlock();
}

} // namespace ctl
