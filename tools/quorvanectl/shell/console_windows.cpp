#include "quorvanectl/shell/console.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <cstdlib>

namespace {

UINT encodingBefore = 0;

void restoreEncoding() {
    (void)SetConsoleOutputCP(encodingBefore);
}

// Ctrl-C, or the end of the console or the session: who comes after ends the program, and calls nothing
// of it any more. A command that catches Ctrl-C itself is asked first, and this is then not called.
BOOL WINAPI restoreBeforeTheEnd(DWORD) {
    restoreEncoding();
    return FALSE;
}

} // namespace

// The C library would turn each line feed into two bytes, and the console would read UTF-8 as the
// machine's own encoding. The console outlives the program and gets its encoding back.
void ctl::prepareStreams() {
    for (const int stream : {1, 2})
        (void)_setmode(stream, _O_BINARY);
    encodingBefore = GetConsoleOutputCP();
    if (encodingBefore == 0 || SetConsoleOutputCP(CP_UTF8) == FALSE)
        return;
    (void)std::atexit(restoreEncoding);
    (void)SetConsoleCtrlHandler(restoreBeforeTheEnd, TRUE);
}

void ctl::occupyStandardStreams() {} // no file gets the number of a stream here

bool ctl::isTerminal(int stream) {
    return _isatty(stream) != 0;
}
