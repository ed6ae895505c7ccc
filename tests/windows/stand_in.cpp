// Stands in for powershell.exe. A plan in a file beside it tells what to do, one step a line:
//   err TEXT    writes to the standard error
//   body TEXT   writes the file that the script names behind -OutFile
//   folder      makes a folder in that file's place
//   exit N      ends with this exit code
//   crash       ends by a fault
//   hang        does not end by itself; as long as it runs there is a file stand_in.alive
// It first leaves its arguments in stand_in.seen, one a line.
#include "host.h"

#include <windows.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>

namespace fs = std::filesystem;

namespace {

fs::path targetOf(const std::string &script) {
    const std::string mark = "-OutFile '";
    const std::size_t start = script.find(mark) + mark.size();
    return fs::u8path(script.substr(start, script.find('\'', start) - start));
}

[[noreturn]] void hang(const fs::path &folder) {
    (void)CreateFileW((folder / "stand_in.alive").c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                      FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    Sleep(INFINITE);
    std::abort();
}

} // namespace

int main(int argc, char **argv) {
    const std::vector<std::string> words = commandLine(argc, argv);
    std::wstring self(32768, L'\0');
    self.resize(GetModuleFileNameW(nullptr, self.data(), DWORD(self.size())));
    const fs::path folder = fs::path(self).parent_path();
    std::ofstream seen(folder / "stand_in.seen", std::ios::binary);
    for (std::size_t i = 1; i < words.size(); ++i)
        seen << words[i] << '\n';
    seen.close();
    std::ifstream plan(folder / "stand_in.plan");
    for (std::string line; std::getline(plan, line);) {
        const std::string step = line.substr(0, line.find(' '));
        const std::string rest = line.substr(std::min(line.size(), step.size() + 1));
        if (step == "err")
            std::cerr << rest << std::flush;
        else if (step == "body")
            std::ofstream(targetOf(words.back()), std::ios::binary) << rest;
        else if (step == "folder")
            fs::create_directory(targetOf(words.back()));
        else if (step == "exit")
            return std::stoi(rest);
        else if (step == "crash")
            RaiseException(EXCEPTION_ACCESS_VIOLATION, EXCEPTION_NONCONTINUABLE, 0, nullptr);
        else if (step == "hang")
            hang(folder);
    }
    return 0;
}
