// A disk that nobody is writing to, so that a measured program does not wait for what came before it.
#pragma once

// Writes out all that waits to be written, and looks until nearly nothing does; after a minute it goes
// on all the same, and says so, since others on this machine may write all the time.
void waitForQuietDisk();
