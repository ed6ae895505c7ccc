// Hears of nothing and says so: here a program's own functions do not come before the system's.
#include "file_events.h"

namespace file_events {

Watch::Watch(const Listener &) {}

Watch::~Watch() = default;

bool areSeen() {
    return false;
}

} // namespace file_events
