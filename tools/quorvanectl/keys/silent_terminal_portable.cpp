#include "quorvanectl/keys/silent_terminal.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace ctl {

struct SilentTerminal::State {
    int descriptor = -1;
    bool isSilent = false;
    termios before = {};
};

SilentTerminal::SilentTerminal()
    : state(std::make_unique<State>()) {
    state->descriptor = ::open("/dev/tty", O_RDWR | O_CLOEXEC);
    if (state->descriptor < 0 || ::tcgetattr(state->descriptor, &state->before) != 0)
        return;
    termios silent = state->before;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL | ICANON | ISIG);
    silent.c_cc[VMIN] = 1;
    silent.c_cc[VTIME] = 0;
    state->isSilent = ::tcsetattr(state->descriptor, TCSAFLUSH, &silent) == 0;
}

SilentTerminal::~SilentTerminal() {
    if (state->isSilent)
        ::tcsetattr(state->descriptor, TCSAFLUSH, &state->before);
    if (state->descriptor >= 0)
        ::close(state->descriptor);
}

bool SilentTerminal::isReady() const {
    return state->isSilent;
}

void SilentTerminal::show(const QString &line) const {
    const QByteArray bytes = line.toUtf8();
    (void)!::write(state->descriptor, bytes.constData(), size_t(bytes.size()));
}

char SilentTerminal::read() const {
    char byte = '\0';
    return readByte(state->descriptor, &byte, nullptr) == Got::Byte ? byte : '\0';
}

Got readByte(int descriptor, char *byte, QString *reason) {
    ssize_t got = 0;
    do
        got = ::read(descriptor, byte, 1);
    while (got < 0 && errno == EINTR);
    if (got < 0 && reason != nullptr)
        *reason = QString::fromLocal8Bit(std::strerror(errno));
    if (got < 0)
        return Got::Nothing;
    return got == 0 ? Got::End : Got::Byte;
}

bool endsLineWith(char) {
    return false;
}

} // namespace ctl
