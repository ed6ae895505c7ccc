// The least that an apply from a stick is, with the same libraries.
#pragma once

#include "measured_project.h"

// Copies the package, takes the library's hash of the copy, unpacks it with libzip, copies the old project,
// waits for the disk, puts the new one in its place and removes what is left. Nothing is looked at and nobody
// is asked, so this is what no apply of these steps can beat. For a process that is measured; a step that fails
// ends it.
void bareApply(const Place &place);
