#include "quorvanectl/console.h"

#include <io.h>

bool ctl::isTerminal(int stream) {
    return _isatty(stream) != 0;
}
