// Two functions for the test of scripts/mutate.
#pragma once

#include <string>

void weigh(std::string &out, int weight);
int leave(int weight);
void neverCalled(std::string &out);
