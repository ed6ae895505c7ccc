#include "quorvanectl/passphrase.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace ctl {
namespace {

bool fail(const QString &text, QString *error) {
    if (error != nullptr)
        *error = text;
    return false;
}

bool hasTerminal() {
    const int terminal = ::open("/dev/tty", O_RDWR | O_CLOEXEC);
    if (terminal < 0)
        return false;
    ::close(terminal);
    return true;
}

} // namespace

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
    if (!hasTerminal()) {
        return fail(
            QStringLiteral("no terminal to ask for the passphrase at; give it by --passphrase-fd"),
            error);
    }
    // OpenSSL's own prompt turns the echo off and puts it back, after Ctrl-C too.
    const int outcome = EVP_read_pw_string_min(text.data(), 4, static_cast<int>(text.size()) - 1,
                                               prompt.toLocal8Bit().constData(), twice ? 1 : 0);
    if (outcome != 0)
        return fail(QStringLiteral("no passphrase was given"), error);
    length = std::strlen(text.data());
    return true;
}

} // namespace ctl
