// Stands in for an installer: tells that it ran. Behind the program's own bytes stand two lines, the
// folder to tell it in and the name to tell; installers.h makes such files.
#include "host.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

std::string takeLastLine(std::string &text) {
    const std::size_t end = text.rfind('\n');
    const std::string line = text.substr(end + 1);
    text.resize(end);
    return line;
}

// Installers run side by side: each makes a folder of its own, counted by their starts.
fs::path newFolder(const fs::path &parent) {
    fs::create_directories(parent);
    int number = 0;
    while (!fs::create_directory(parent / std::to_string(number)))
        ++number;
    return parent / std::to_string(number);
}

} // namespace

int main(int argc, char **argv) {
    const std::vector<std::string> words = commandLine(argc, argv);
    std::ifstream self(fs::u8path(words.at(0)), std::ios::binary);
    std::string content{std::istreambuf_iterator<char>(self), std::istreambuf_iterator<char>()};
    const std::string name = takeLastLine(content);
    const fs::path folder = newFolder(fs::u8path(takeLastLine(content)));
    std::ofstream(folder / "part") << name << ' ' << words.size() - 1;
    fs::rename(folder / "part", folder / "told");
    return 0;
}
