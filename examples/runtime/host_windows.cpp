#include "host.h"

#include <windows.h>

#include <shellapi.h>

#include <filesystem>

namespace fs = std::filesystem;

// What main is given has lost every letter that the machine's code page does not hold.
std::vector<std::string> commandLine(int, char **) {
    int count = 0;
    LPWSTR *const words = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 0; i < count; ++i)
        arguments.push_back(fs::path(words[i]).u8string());
    LocalFree(words);
    return arguments;
}

std::string environment(const char *name) {
    const std::wstring wide = fs::u8path(name).wstring();
    std::wstring value(GetEnvironmentVariableW(wide.c_str(), nullptr, 0), L'\0');
    value.resize(GetEnvironmentVariableW(wide.c_str(), value.data(), DWORD(value.size())));
    return fs::path(value).u8string();
}
