#include "quorvanectl/console.h"

#include <unistd.h>

bool ctl::isTerminal(int stream) {
    return isatty(stream) == 1;
}
