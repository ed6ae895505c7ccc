#include "support/unpacking.h"

void support::provideUnpacking() {}
