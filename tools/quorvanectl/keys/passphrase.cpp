#include "quorvanectl/keys/passphrase.h"
#include "quorvanectl/keys/silent_terminal.h"
#include "update/files/failure.h"

#include <openssl/crypto.h>

#include <algorithm>

namespace ctl {
namespace {

constexpr char interruptKey = '\x03';
constexpr char endKey = '\x04';
constexpr char eraseKey = '\x7f';
constexpr char backspaceKey = '\b';

} // namespace

Passphrase::~Passphrase() {
    OPENSSL_cleanse(text.data(), text.size());
}

bool Passphrase::readFrom(int descriptor, QString *error) {
    length = 0;
    char byte = '\0';
    Got got = Got::Byte;
    QString reason;
    while ((got = readByte(descriptor, &byte, &reason)) == Got::Byte && byte != '\n') {
        if (length + 1 == text.size())
            return fail(QStringLiteral("the passphrase is longer than 1023 bytes"), error);
        text[length++] = byte;
    }
    if (got == Got::Nothing)
        return fail(QStringLiteral("cannot read the passphrase from descriptor %1: %2")
                        .arg(QString::number(descriptor), reason),
                    error);
    if (got == Got::Byte && length > 0 && endsLineWith(text[length - 1]))
        --length;
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
