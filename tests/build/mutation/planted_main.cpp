// The test of planted.cpp: it ends with 0 if all is as it should be.
#include "planted.h"

int main() {
    std::string ten, eleven;
    weigh(ten, 10);
    weigh(eleven, 11);
    return ten == "less" && eleven == "more than" && leave(5) == 5 ? 0 : 1;
}
