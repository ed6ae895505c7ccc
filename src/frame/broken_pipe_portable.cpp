#include "frame/broken_pipe.h"

#include <csignal>

// Qt does the same, but only once it has a socket or a process, and undoes it in the process.
void outliveBrokenPipes() {
    (void)std::signal(SIGPIPE, SIG_IGN);
}
