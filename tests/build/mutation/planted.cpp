// What run.py changes: planted_main.cpp sees each change of weigh, and cannot see those of leave.
#include "planted.h"

void weigh(std::string &out, int weight) {
    if (weight > 10) {
        out.append("more");
        out.append(" than");
    }
    if (out.empty())
        out.append("less");
}

int leave(int weight) {
    if (weight > 10)
        return 10;
    return weight;
}

void neverCalled(std::string &out) {
    out.append("never");
}
