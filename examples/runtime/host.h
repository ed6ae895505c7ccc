// What the stand-in runtime asks of its system, as UTF-8 whatever the system's own encoding is.
#pragma once

#include <string>
#include <vector>

// The command line, the program's own path first.
std::vector<std::string> commandLine(int argc, char **argv);

// A variable of the environment; empty if there is none.
std::string environment(const char *name);
