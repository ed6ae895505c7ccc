// A program at a terminal of its own: what it shows, and what is typed at it.
#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QFile>
#include <QStringList>
#include <QVector>

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

namespace support {

class Terminal {
public:
    // Starts the program with the terminal for all its streams.
    Terminal(const QString &program, const QStringList &arguments) {
        QVector<QByteArray> words{QFile::encodeName(program)};
        for (const QString &argument : arguments)
            words.append(argument.toUtf8());
        QVector<char *> pointers;
        for (QByteArray &word : words)
            pointers.append(word.data());
        pointers.append(nullptr);
        child = ::forkpty(&terminal, nullptr, nullptr, nullptr);
        if (child == 0) {
            ::execv(pointers.constFirst(), pointers.data());
            ::_exit(127);
        }
    }

    ~Terminal() {
        if (child > 0 && !hasEnded)
            ::kill(child, SIGKILL);
        (void)wait();
        ::close(terminal);
    }

    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;

    // Reads until the text shows; false if it does not within half a minute.
    [[nodiscard]] bool shows(const QByteArray &text) {
        QElapsedTimer time;
        time.start();
        while (!shown.contains(text) && time.elapsed() < 30000) {
            if (!readMore())
                break;
        }
        return shown.contains(text);
    }

    void type(const QByteArray &text) {
        if (::write(terminal, text.constData(), size_t(text.size())) != text.size())
            qFatal("the terminal takes no more");
    }

    // Reads to the program's end; its exit code, or -1 if a signal ended it.
    int wait() {
        if (hasEnded)
            return status;
        while (readMore()) {
        }
        int raw = 0;
        ::waitpid(child, &raw, 0);
        hasEnded = true;
        status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
        return status;
    }

    // All that has shown so far, echoes included.
    [[nodiscard]] QByteArray screen() const { return shown; }

private:
    bool readMore() {
        pollfd ready = {terminal, POLLIN, 0};
        if (::poll(&ready, 1, 30000) <= 0)
            return false;
        char buffer[4096];
        const ssize_t size = ::read(terminal, buffer, sizeof buffer);
        if (size > 0)
            shown += QByteArray(buffer, int(size));
        return size > 0;
    }

    int terminal = -1;
    pid_t child = -1;
    QByteArray shown;
    bool hasEnded = false;
    int status = -1;
};

} // namespace support
