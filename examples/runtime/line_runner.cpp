// A stand-in for the production runtime: an example, and a fixture of the end-to-end tests.
//
// The launcher starts it as LineRunner.exe. It checks what it was started with as the real runtime
// would, tells which project it would run, lives for a while and ends. It inspects nothing.
//
// Its command line belongs to the launcher, so how it shall end is told by a file beside it,
// LineRunner.conf. The launcher discards its output, so it also appends it to LineRunner.log beside
// it, where that file can be written.
//
// Exit codes of its own: 64 for a wrong command line, 65 for a nonce that is missing, different or
// old, 66 for a project that is not there.
#include "host.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr int wrongCommandLine = 64;
constexpr int wrongNonce = 65;
constexpr int noProject = 66;

constexpr long long nonceLifetimeMs = 60'000;

// What the launcher handed over.
struct Start {
    std::string parentPid;
    std::string nonce;
    std::string project;
    std::string locale;
    bool reloadModels = false;
};

// How this run shall end.
struct Script {
    long long lifetimeMs = 5000;
    int exitCode = 0;
    bool crash = false;
};

// Writes to standard output and to the log beside the program.
class Report {
public:
    explicit Report(const fs::path &folder)
        : log(folder / "LineRunner.log", std::ios::app) {}

    void line(const std::string &text) {
        std::cout << text << std::endl;
        log << text << std::endl;
    }

private:
    std::ofstream log;
};

bool isDecimal(const std::string &text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool isNonce(const std::string &text) {
    const auto isHexDigit = [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); };
    return text.size() == 32 && std::all_of(text.begin(), text.end(), isHexDigit);
}

// The text behind "--name=", or nothing if the argument is another one.
std::optional<std::string> valueOf(const std::string &argument, const std::string &name) {
    const std::string prefix = "--" + name + "=";
    if (argument.compare(0, prefix.size(), prefix) != 0)
        return std::nullopt;
    return argument.substr(prefix.size());
}

// Accepts exactly the list that the launcher builds: four arguments in their order, perhaps a
// fifth.
std::optional<Start> readCommandLine(const std::vector<std::string> &arguments) {
    const std::size_t count = arguments.size();
    if (count != 4 && count != 5)
        return std::nullopt;
    const auto parentPid = valueOf(arguments[0], "parent-pid");
    const auto nonce = valueOf(arguments[1], "nonce");
    const auto project = valueOf(arguments[2], "project");
    const auto locale = valueOf(arguments[3], "locale");
    if (!parentPid || !isDecimal(*parentPid) || !nonce || !isNonce(*nonce) || !project || !locale)
        return std::nullopt;
    if (*locale != "en" && *locale != "zh_CN")
        return std::nullopt;
    const bool reloadModels = count == 5;
    if (reloadModels && arguments[4] != "--reload-models")
        return std::nullopt;
    return Start{*parentPid, *nonce, *project, *locale, reloadModels};
}

// The launcher's data folder; the first base that the environment names.
fs::path dataFolder() {
    if (const std::string data = environment("XDG_DATA_HOME"); !data.empty())
        return fs::u8path(data) / "Quorvane";
    if (const std::string local = environment("LOCALAPPDATA"); !local.empty())
        return fs::u8path(local) / "Quorvane";
    return fs::u8path(environment("HOME")) / ".local" / "share" / "Quorvane";
}

long long nowMs() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

// The nonce file of the launcher that started us: the nonce, then the moment of its writing.
// Returns what is wrong with it, or empty text.
std::string nonceFault(const Start &start) {
    const fs::path path = dataFolder() / ("launch_nonce_" + start.parentPid + ".txt");
    std::ifstream file(path);
    std::string nonce;
    std::string written;
    if (!std::getline(file, nonce) || !std::getline(file, written) || !isDecimal(written))
        return "cannot read " + path.u8string();
    if (nonce != start.nonce)
        return "the nonce differs from the one in " + path.u8string();
    const long long ageMs = nowMs() - std::strtoll(written.c_str(), nullptr, 10);
    if (ageMs < 0 || ageMs >= nonceLifetimeMs)
        return "the nonce is " + std::to_string(ageMs) + " ms old";
    return {};
}

// LineRunner.conf: lines of the form "key = value"; '#' starts a comment line.
Script readScript(const fs::path &folder) {
    std::map<std::string, std::string> values;
    std::ifstream file(folder / "LineRunner.conf");
    for (std::string line; std::getline(file, line);) {
        line.erase(std::remove_if(line.begin(), line.end(),
                                  [](char c) { return c == ' ' || c == '\t' || c == '\r'; }),
                   line.end());
        const std::size_t equals = line.find('=');
        if (equals != std::string::npos && line.front() != '#')
            values[line.substr(0, equals)] = line.substr(equals + 1);
    }
    Script script;
    if (isDecimal(values["lifetime_ms"]))
        script.lifetimeMs = std::strtoll(values["lifetime_ms"].c_str(), nullptr, 10);
    if (isDecimal(values["exit_code"]))
        script.exitCode = int(std::strtol(values["exit_code"].c_str(), nullptr, 10));
    script.crash = values["crash"] == "true";
    return script;
}

int run(const fs::path &folder, const std::vector<std::string> &arguments) {
    Report report(folder);
    report.line("LineRunner stand-in, working folder " + fs::current_path().u8string());
    for (const std::string &argument : arguments)
        report.line("argument: " + argument);

    const std::optional<Start> start = readCommandLine(arguments);
    if (!start) {
        report.line("refused: not a command line of the launcher");
        return wrongCommandLine;
    }
    if (const std::string fault = nonceFault(*start); !fault.empty()) {
        report.line("refused: " + fault);
        return wrongNonce;
    }
    report.line("nonce accepted");
    if (!fs::is_regular_file(fs::u8path(start->project))) {
        report.line("refused: no project " + start->project);
        return noProject;
    }
    report.line("would run " + start->project + " with locale " + start->locale +
                (start->reloadModels ? ", models loaded anew" : ""));

    const Script script = readScript(folder);
    std::this_thread::sleep_for(std::chrono::milliseconds(script.lifetimeMs));
    if (script.crash) {
        report.line("crashing as told");
        std::abort();
    }
    report.line("ending with code " + std::to_string(script.exitCode));
    return script.exitCode;
}

} // namespace

int main(int argc, char **argv) {
    try {
        // The launcher starts its target by a full path, and in the target's own folder.
        const std::vector<std::string> words = commandLine(argc, argv);
        return run(fs::absolute(fs::u8path(words.at(0))).parent_path(),
                   {words.begin() + 1, words.end()});
    } catch (const std::exception &error) {
        std::fprintf(stderr, "LineRunner stand-in: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
