// Standard error may be a pipe whose reader has gone: a terminal that was closed, a service's log.
#pragma once

// From now on writing to such a pipe fails instead of ending the program. Before anything is written;
// main thread. Programs that this one starts through Qt are not affected.
void outliveBrokenPipes();
