#include "quorvanectl/keys/silent_terminal.h"

#include <openssl/crypto.h>
#include <windows.h>

#include <io.h>

#include <array>
#include <atomic>
#include <string>

namespace ctl {
namespace {

HANDLE openConsole(const wchar_t *name) {
    return CreateFileW(name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                       nullptr, OPEN_EXISTING, 0, nullptr);
}

HANDLE handleOf(int descriptor) {
    if (descriptor == 0)
        return GetStdHandle(STD_INPUT_HANDLE);
    const intptr_t known = _get_osfhandle(descriptor);
    return reinterpret_cast<HANDLE>(known >= 0 ? known : intptr_t(descriptor));
}

bool isHighSurrogate(wchar_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

// The keys while they are silent, and the mode that they get back.
std::atomic<HANDLE> silentKeys{nullptr};
DWORD modeBefore = 0;

// Ctrl-Break, or the end of the console or the session: who comes after ends the program, and the console
// outlives it.
BOOL WINAPI giveKeysBack(DWORD) {
    if (const HANDLE keys = silentKeys)
        (void)SetConsoleMode(keys, modeBefore);
    return FALSE;
}

// Entered once and never left: whoever leaves waits for an answer that may be on its way.
void giveKeysBackAtTheEnd() {
    static const BOOL isEntered = SetConsoleCtrlHandler(giveKeysBack, TRUE);
    (void)isEntered;
}

} // namespace

struct SilentTerminal::State {
    HANDLE keys = INVALID_HANDLE_VALUE;
    HANDLE screen = INVALID_HANDLE_VALUE;
    bool isSilent = false;
    std::array<char, 4> character{}; // in UTF-8, of which `left` bytes are still to be read
    int size = 0;
    int left = 0;

    // The next character, which may come as two units.
    [[nodiscard]] bool readCharacter() {
        std::array<wchar_t, 2> units{};
        DWORD got = 0;
        if (ReadConsoleW(keys, units.data(), 1, &got, nullptr) == 0 || got == 0)
            return false;
        if (isHighSurrogate(units[0]) && ReadConsoleW(keys, &units[1], 1, &got, nullptr) == 0)
            return false;
        size = WideCharToMultiByte(CP_UTF8, 0, units.data(), units[1] == 0 ? 1 : 2,
                                   character.data(), int(character.size()), nullptr, nullptr);
        OPENSSL_cleanse(units.data(), sizeof units);
        left = size;
        return left > 0;
    }
};

SilentTerminal::SilentTerminal()
    : state(std::make_unique<State>()) {
    state->keys = openConsole(L"CONIN$");
    state->screen = openConsole(L"CONOUT$");
    if (state->screen == INVALID_HANDLE_VALUE || GetConsoleMode(state->keys, &modeBefore) == 0)
        return;
    const DWORD silent =
        modeBefore & ~DWORD(ENABLE_ECHO_INPUT | ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT);
    (void)FlushConsoleInputBuffer(state->keys);
    giveKeysBackAtTheEnd();
    silentKeys = state->keys;
    state->isSilent = SetConsoleMode(state->keys, silent) != 0;
}

SilentTerminal::~SilentTerminal() {
    if (state->isSilent) {
        (void)FlushConsoleInputBuffer(state->keys);
        (void)SetConsoleMode(state->keys, modeBefore);
    }
    silentKeys = nullptr;
    for (const HANDLE handle : {state->keys, state->screen}) {
        if (handle != INVALID_HANDLE_VALUE)
            CloseHandle(handle);
    }
    OPENSSL_cleanse(state->character.data(), state->character.size());
}

bool SilentTerminal::isReady() const {
    return state->isSilent;
}

void SilentTerminal::show(const QString &line) const {
    const std::wstring text = line.toStdWString();
    DWORD written = 0;
    (void)WriteConsoleW(state->screen, text.data(), DWORD(text.size()), &written, nullptr);
}

char SilentTerminal::read() const {
    if (state->left == 0 && !state->readCharacter())
        return '\0';
    return state->character[size_t(state->size - state->left--)];
}

Got readByte(int descriptor, char *byte, QString *reason) {
    const HANDLE handle = handleOf(descriptor);
    const bool isPipe = GetFileType(handle) == FILE_TYPE_PIPE;
    DWORD got = 0;
    while (ReadFile(handle, byte, 1, &got, nullptr) != 0) {
        if (got == 1)
            return Got::Byte;
        if (!isPipe) // who writes nothing to a pipe has not left it
            return Got::End;
    }
    const DWORD failure = GetLastError();
    if (failure == ERROR_BROKEN_PIPE || failure == ERROR_HANDLE_EOF) // its writer has gone
        return Got::End;
    *reason = qt_error_string(int(failure));
    return Got::Nothing;
}

bool endsLineWith(char byte) {
    return byte == '\r';
}

} // namespace ctl
