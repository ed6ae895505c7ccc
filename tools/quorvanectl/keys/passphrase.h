// The passphrase of a private key, in memory only as long as it is needed.
#pragma once

#include <QString>

#include <array>
#include <cstddef>

namespace ctl {

class SilentTerminal;

// At most 1023 bytes, wiped when it goes. No copies.
class Passphrase {
public:
    Passphrase() = default;
    Passphrase(const Passphrase &) = delete;
    Passphrase &operator=(const Passphrase &) = delete;
    ~Passphrase();

    // Reads from an open file descriptor up to the first line feed, or to its end: see silent_terminal.h.
    [[nodiscard]] bool readFrom(int descriptor, QString *error = nullptr);
    // Asks at the controlling terminal, without echo; `twice` asks again and compares. Fails where
    // there is no terminal, and on Ctrl-C.
    [[nodiscard]] bool ask(const QString &prompt, bool twice, QString *error = nullptr);

    [[nodiscard]] const char *data() const { return text.data(); } // ends in a NUL
    [[nodiscard]] int size() const { return int(length); }

private:
    bool readLine(const SilentTerminal &terminal, const QString &prompt, QString *error);
    void eraseLast();

    std::array<char, 1024> text{};
    std::size_t length = 0;
};

} // namespace ctl
