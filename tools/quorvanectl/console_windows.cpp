#include "quorvanectl/console.h"

#include <io.h>

void ctl::occupyStandardStreams() {} // no file gets the number of a stream here

bool ctl::isTerminal(int stream) {
    return _isatty(stream) != 0;
}
