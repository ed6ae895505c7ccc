// The table of commands.
#pragma once

#include "quorvanectl/shell/command.h"

namespace ctl {

// All commands of this platform, family by family, in the order of the help.
[[nodiscard]] const std::vector<Command> &allCommands();

// The files of commands that this platform has, in that order.
using CommandsOfFile = std::vector<Command> (*)();
[[nodiscard]] std::vector<CommandsOfFile> commandFiles();

// What the help says of commands that this platform lacks; empty if it has all.
[[nodiscard]] QString missingCommands();

// Of which system it is true that it lacks this family or command of others; empty for any other word.
[[nodiscard]] QString systemWithout(const QString &title);

// One function for each file of commands.
std::vector<Command> explainCommands();
std::vector<Command> libraryCommands();
std::vector<Command> projectCommands();
std::vector<Command> recoveryCommands();
std::vector<Command> scriptCommands();
std::vector<Command> updateCommands();

// Not on Windows.
std::vector<Command> packingCommands();
std::vector<Command> signingCommands();
std::vector<Command> supportCommands();

} // namespace ctl
