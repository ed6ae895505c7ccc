// The program unpacks by itself, so nothing is provided.
#include "support/unpacking.h"

void support::provideUnpacking() {}
