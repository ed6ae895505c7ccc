// What the system's shell asks of a thread that starts programs. shell_turn_portable.cpp,
// shell_turn_windows.cpp.
#pragma once

// While one lives, this thread may start a program that Windows asks the user's leave for: its shell does that,
// and builds on parts that each thread has to be made ready for. A short time; no other thread is concerned.
class ShellTurn {
public:
    ShellTurn();
    ~ShellTurn(); // NOLINT(performance-trivially-destructible): on Windows it is not
    ShellTurn(const ShellTurn &) = delete;
    ShellTurn &operator=(const ShellTurn &) = delete;

private:
    [[maybe_unused]] bool isReady = false; // elsewhere there is nothing to be ready for
};
