#include "host.h"

#include <cstdlib>

std::vector<std::string> commandLine(int argc, char **argv) {
    return {argv, argv + argc};
}

std::string environment(const char *name) {
    const char *value = std::getenv(name);
    return value ? value : "";
}
