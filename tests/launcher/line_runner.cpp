// Stands in for the target. Its command line is the launcher's, so a plan in a file beside it tells
// what to do; one step a line:
//   print N    writes N bytes to the standard output
//   wait       waits for the file LineRunner.go
//   exit N     ends with this exit code
//   crash      ends by a signal
// It first leaves its arguments and its working folder in LineRunner.seen.
#include "host.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

namespace fs = std::filesystem;

namespace {

void leaveWhatWasSeen(const std::vector<std::string> &words, const fs::path &folder) {
    const fs::path half = folder / "LineRunner.half";
    {
        std::ofstream out(half);
        for (std::size_t i = 1; i < words.size(); ++i)
            out << words[i] << '\n';
        out << fs::current_path().generic_u8string() << '\n';
    }
    fs::rename(half, folder / "LineRunner.seen");
}

} // namespace

int main(int argc, char **argv) {
    const std::vector<std::string> words = commandLine(argc, argv);
    const fs::path folder = fs::u8path(words.at(0)).parent_path();
    leaveWhatWasSeen(words, folder);
    std::ifstream plan(folder / "LineRunner.plan");
    std::string step;
    while (plan >> step) {
        long number = 0;
        if (step == "print" && plan >> number)
            std::cout << std::string(std::size_t(number), 'x') << std::flush;
        else if (step == "exit" && plan >> number)
            return int(number);
        else if (step == "crash")
            std::abort();
        while (step == "wait" && !fs::exists(folder / "LineRunner.go"))
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return 0;
}
