// The table of commands. Each command is one file, named after it, that holds its row beside what it
// does.
#pragma once

#include "quorvanectl/shell/command.h"

namespace ctl {

// All commands of this platform, family by family, in the order of the help.
[[nodiscard]] const std::vector<Command> &allCommands();

// What the help says of commands that this platform lacks; empty if it has all.
[[nodiscard]] QString missingCommands();

// Of which system it is true that it lacks this family or command of others; empty for any other word.
[[nodiscard]] QString systemWithout(const QString &title);

// The rows, one for each file.
[[nodiscard]] Command libraryList();
[[nodiscard]] Command logCommand();
[[nodiscard]] Command projectCheck();
[[nodiscard]] Command projectGraph();
[[nodiscard]] Command projectNew();
[[nodiscard]] Command projectRecover();
[[nodiscard]] Command scriptCheck();
[[nodiscard]] Command scriptTokens();
[[nodiscard]] Command scriptTree();
[[nodiscard]] Command updateAttach();
[[nodiscard]] Command updateCanonical();
[[nodiscard]] Command updateExplain();
[[nodiscard]] Command updateInfo();
[[nodiscard]] Command updateLint();
[[nodiscard]] Command updateManifest();
[[nodiscard]] Command updateStick();
[[nodiscard]] Command updateVerify();

// Not on Windows.
[[nodiscard]] Command doctor();
[[nodiscard]] Command keysNew();
[[nodiscard]] Command supportCollect();
[[nodiscard]] Command updatePack();
[[nodiscard]] Command updateRelease();
[[nodiscard]] Command updateSign();
[[nodiscard]] Command updateWithdraw();

} // namespace ctl
