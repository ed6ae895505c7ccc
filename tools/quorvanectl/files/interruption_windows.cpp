// Windows tells of Ctrl-C on a thread of its own, and may keep the list of those who are asked locked until
// all have answered. Who answers late must not be waited for by somebody who wants to leave that list: so one
// answers for all, is entered once and stays.
#include "quorvanectl/files/interruption.h"

#include <windows.h>

#include <atomic>
#include <mutex>

namespace ctl {
namespace {

std::atomic<bool> wasInterrupted{false};
std::atomic<int> watches{0}; // alive
std::mutex fileIsWritten;

// Where the console, the session or the machine ends, the program ends once this returns. What is going on
// has a few seconds to clear up, and ends the program by itself.
BOOL note(DWORD event) {
    wasInterrupted = true;
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        Sleep(INFINITE);
    return TRUE;
}

// Without a watch, whoever is asked next ends the program, once a file that is being written is whole. Until
// then no other file is begun: the lock is kept.
BOOL WINAPI answer(DWORD event) {
    if (watches > 0)
        return note(event);
    fileIsWritten.lock();
    return FALSE;
}

// Without a console nobody asks for the end.
void answerFromNowOn() {
    static const BOOL isEntered = SetConsoleCtrlHandler(answer, TRUE);
    (void)isEntered;
}

} // namespace

InterruptionWatch::InterruptionWatch() {
    if (watches == 0)
        wasInterrupted = false;
    ++watches;
    answerFromNowOn();
}

InterruptionWatch::~InterruptionWatch() {
    --watches;
}

bool interrupted() {
    return wasInterrupted;
}

WholeFile::WholeFile() {
    fileIsWritten.lock();
    answerFromNowOn();
}

WholeFile::~WholeFile() {
    fileIsWritten.unlock();
}

} // namespace ctl
