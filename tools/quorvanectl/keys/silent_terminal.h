// What a passphrase is read from: a terminal that shows nothing of it, or an open file descriptor.
// silent_terminal_portable.cpp, silent_terminal_windows.cpp.
#pragma once

#include <QString>

#include <memory>

namespace ctl {

// The controlling terminal, or the console, with nothing shown of what is typed and no key that ends the
// program: until it is put back, at the end of its life.
class SilentTerminal {
public:
    SilentTerminal();
    ~SilentTerminal();
    SilentTerminal(const SilentTerminal &) = delete;
    SilentTerminal &operator=(const SilentTerminal &) = delete;

    [[nodiscard]] bool isReady() const;
    void show(const QString &line) const;
    // The next byte typed, in UTF-8 on Windows and as it comes elsewhere; 0 at the end.
    [[nodiscard]] char read() const;

private:
    struct State;
    std::unique_ptr<State> state;
};

enum class Got { Byte, End, Nothing };

// One byte and no more: what stands behind it is for others that read the descriptor. Got::Nothing comes with
// the reason. On Windows 0 is the standard input, and a number that is no descriptor of this program is that
// of a handle which it has inherited.
[[nodiscard]] Got readByte(int descriptor, char *byte, QString *reason);

// Whether a line ends with this before its line feed, as it does on Windows.
[[nodiscard]] bool endsLineWith(char byte);

} // namespace ctl
