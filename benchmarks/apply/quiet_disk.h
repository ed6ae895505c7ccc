// A disk that nobody is writing to, so that a measured program does not wait for what came before it.
#pragma once

#include <QString>

// Writes out what waits to be written on the volume of `folder`, and looks until little of the machine's
// does; after ten seconds it goes on all the same, and says so, since others may write all the time. A volume
// in memory has no disk to wait for.
void waitForQuietDisk(const QString &folder);
