#include "quorvanectl/shell/console.h"

#include <fcntl.h>
#include <unistd.h>

void ctl::occupyStandardStreams() {
    // The lowest free number is given out, so one behind the three says that all are taken.
    int last = 0;
    do
        last = ::open("/dev/null", O_RDONLY);
    while (last >= 0 && last <= STDERR_FILENO);
    ::close(last);
}

void ctl::prepareStreams() {}

bool ctl::isTerminal(int stream) {
    return isatty(stream) == 1;
}
