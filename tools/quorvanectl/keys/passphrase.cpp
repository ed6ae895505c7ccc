#include "quorvanectl/keys/passphrase.h"
#include "update/files/failure.h"

#include <openssl/crypto.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace ctl {
namespace {

constexpr char interruptKey = '\x03';
constexpr char endKey = '\x04';
constexpr char eraseKey = '\x7f';
constexpr char backspaceKey = '\b';

} // namespace

// The controlling terminal, with nothing shown of what is typed and no key that ends the program:
// until it is put back, at the end of its life.
class Passphrase::SilentTerminal {
public:
    SilentTerminal()
        : descriptor(::open("/dev/tty", O_RDWR | O_CLOEXEC)) {
        if (!isOpen() || ::tcgetattr(descriptor, &before) != 0)
            return;
        termios silent = before;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL | ICANON | ISIG);
        silent.c_cc[VMIN] = 1;
        silent.c_cc[VTIME] = 0;
        isSilent = ::tcsetattr(descriptor, TCSAFLUSH, &silent) == 0;
    }
    ~SilentTerminal() {
        if (isSilent)
            ::tcsetattr(descriptor, TCSAFLUSH, &before);
        if (isOpen())
            ::close(descriptor);
    }
    SilentTerminal(const SilentTerminal &) = delete;
    SilentTerminal &operator=(const SilentTerminal &) = delete;

    [[nodiscard]] bool isReady() const { return isSilent; }

    void show(const QString &line) const {
        const QByteArray bytes = line.toUtf8();
        (void)!::write(descriptor, bytes.constData(), size_t(bytes.size()));
    }

    // The next byte typed; 0 at the end.
    [[nodiscard]] char read() const {
        char byte = '\0';
        ssize_t got = 0;
        do
            got = ::read(descriptor, &byte, 1);
        while (got < 0 && errno == EINTR);
        return got == 1 ? byte : '\0';
    }

private:
    [[nodiscard]] bool isOpen() const { return descriptor >= 0; }

    int descriptor;
    bool isSilent = false;
    termios before = {};
};

Passphrase::~Passphrase() {
    OPENSSL_cleanse(text.data(), text.size());
}

bool Passphrase::readFrom(int descriptor, QString *error) {
    length = 0;
    for (;;) {
        char byte = 0;
        const ssize_t got = ::read(descriptor, &byte, 1);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            return fail(
                QStringLiteral("cannot read the passphrase from descriptor %1: %2")
                    .arg(QString::number(descriptor), QString::fromLocal8Bit(std::strerror(errno))),
                error);
        }
        if (got == 0 || byte == '\n')
            break;
        if (length + 1 == text.size())
            return fail(QStringLiteral("the passphrase is longer than 1023 bytes"), error);
        text[length++] = byte;
    }
    text[length] = '\0';
    return length > 0 || fail(QStringLiteral("the passphrase is empty"), error);
}

bool Passphrase::ask(const QString &prompt, bool twice, QString *error) {
    const SilentTerminal terminal;
    if (!terminal.isReady()) {
        return fail(
            QStringLiteral("no terminal to ask for the passphrase at; give it by --passphrase-fd"),
            error);
    }
    if (!readLine(terminal, prompt, error))
        return false;
    if (!twice)
        return true;
    Passphrase again;
    if (!again.readLine(terminal, QStringLiteral("Once more: "), error))
        return false;
    return (length == again.length && std::equal(text.begin(), text.end(), again.text.begin())) ||
           fail(QStringLiteral("the two passphrases differ"), error);
}

bool Passphrase::readLine(const SilentTerminal &terminal, const QString &prompt, QString *error) {
    terminal.show(prompt);
    for (;;) {
        const char key = terminal.read();
        if (key == '\n' || key == '\r')
            break;
        if (key == '\0' || key == interruptKey || key == endKey) {
            terminal.show(QStringLiteral("\n"));
            return fail(QStringLiteral("no passphrase was given"), error);
        }
        if (key == eraseKey || key == backspaceKey)
            eraseLast();
        else if (length + 1 < text.size())
            text[length++] = key;
    }
    terminal.show(QStringLiteral("\n"));
    return length > 0 || fail(QStringLiteral("the passphrase is empty"), error);
}

// A whole character, which in UTF-8 may be several bytes.
void Passphrase::eraseLast() {
    const auto isContinuation = [](char byte) { return (byte & 0xC0) == 0x80; };
    while (length > 0) {
        const char last = text[--length];
        text[length] = '\0';
        if (!isContinuation(last))
            return;
    }
}

} // namespace ctl
