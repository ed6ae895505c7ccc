#include "quorvanectl/shell/console.h"

#include <QFile>
#include <QTextCodec>
#include <QTextDecoder>

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>

namespace {

constexpr int longestPiece = 4096; // UTF-16 units, far below what a console takes at once

HANDLE handleOf(int stream) {
    return GetStdHandle(stream == 1 ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
}

// Bytes of UTF-8 that a console shows, whatever its code page is.
class Screen : public QIODevice {
public:
    explicit Screen(HANDLE console)
        : handle(console)
        , decoder(QTextCodec::codecForName("UTF-8")->makeDecoder()) {
        (void)open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    }

protected:
    qint64 readData(char *, qint64) override { return -1; }

    qint64 writeData(const char *bytes, qint64 size) override {
        const QString text =
            decoder->toUnicode(bytes, int(size)); // keeps half a character for the next
        for (int done = 0; done < text.size();) {
            int length = std::min(longestPiece, text.size() - done);
            if (done + length < text.size() && text.at(done + length - 1).isHighSurrogate())
                --length;
            DWORD written = 0;
            if (WriteConsoleW(handle, text.utf16() + done, DWORD(length), &written, nullptr) == 0 ||
                written == 0) {
                setErrorString(qt_error_string(int(GetLastError())));
                return -1;
            }
            done += int(written);
        }
        return size;
    }

private:
    HANDLE handle;
    std::unique_ptr<QTextDecoder> decoder;
};

// A console that was told to follow escape sequences; it outlives the program and gets its mode back.
struct Told {
    HANDLE console = nullptr;
    DWORD modeBefore = 0;
};
Told told[2];

void restoreModes() {
    for (auto one = std::rbegin(told); one != std::rend(told); ++one) { // both may be one console
        if (one->console != nullptr)
            (void)SetConsoleMode(one->console, one->modeBefore);
    }
}

// Ctrl-C, or the end of the console or the session: who comes after ends the program, and calls nothing
// of it any more. A command that catches Ctrl-C itself is asked first, and this is then not called.
BOOL WINAPI restoreBeforeTheEnd(DWORD) {
    restoreModes();
    return FALSE;
}

} // namespace

// The C library would turn each line feed into two bytes.
void ctl::prepareStreams() {
    (void)_setmode(0, _O_BINARY);
    for (const int stream : {1, 2}) {
        (void)_setmode(stream, _O_BINARY);
        Told console{handleOf(stream), 0};
        if (GetConsoleMode(console.console, &console.modeBefore) == 0 ||
            SetConsoleMode(console.console,
                           console.modeBefore | ENABLE_VIRTUAL_TERMINAL_PROCESSING) == 0)
            continue; // no console, or one that is too old for it
        told[stream - 1] = console;
    }
    (void)std::atexit(restoreModes);
    (void)SetConsoleCtrlHandler(restoreBeforeTheEnd, TRUE);
}

void ctl::occupyStandardStreams() {} // no file gets the number of a stream here

std::unique_ptr<QIODevice> ctl::openStream(int stream) {
    const HANDLE handle = handleOf(stream);
    DWORD mode = 0;
    if (GetConsoleMode(handle, &mode) != 0)
        return std::make_unique<Screen>(handle);
    auto file = std::make_unique<QFile>();
    if (stream == 1)
        (void)file->open(stdout, QIODevice::WriteOnly);
    else
        (void)file->open(stderr, QIODevice::WriteOnly | QIODevice::Unbuffered);
    return file;
}

bool ctl::isTerminal(int stream) {
    DWORD mode = 0;
    if (stream == 0)
        return GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &mode) != 0;
    return told[stream - 1].console != nullptr;
}
