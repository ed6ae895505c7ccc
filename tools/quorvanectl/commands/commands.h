// The table of commands. Each command is one file, named after it, that holds its row beside what it
// does.
#pragma once

#include "quorvanectl/shell/command.h"

namespace ctl {

// All commands, family by family, in the order of the help.
[[nodiscard]] const std::vector<Command> &allCommands();

// The rows, one for each file.
[[nodiscard]] Command doctor();
[[nodiscard]] Command keysNew();
[[nodiscard]] Command languageServer();
[[nodiscard]] Command libraryList();
[[nodiscard]] Command logCommand();
[[nodiscard]] Command projectCheck();
[[nodiscard]] Command projectGraph();
[[nodiscard]] Command projectNew();
[[nodiscard]] Command projectRecover();
[[nodiscard]] Command scriptCheck();
[[nodiscard]] Command scriptTokens();
[[nodiscard]] Command scriptTree();
[[nodiscard]] Command supportCollect();
[[nodiscard]] Command updateAttach();
[[nodiscard]] Command updateCanonical();
[[nodiscard]] Command updateExplain();
[[nodiscard]] Command updateInfo();
[[nodiscard]] Command updateLint();
[[nodiscard]] Command updateManifest();
[[nodiscard]] Command updatePack();
[[nodiscard]] Command updateRelease();
[[nodiscard]] Command updateSign();
[[nodiscard]] Command updateStick();
[[nodiscard]] Command updateVerify();
[[nodiscard]] Command updateWithdraw();

} // namespace ctl
