#include "quorvanectl/commands/commands.h"

namespace ctl {

const std::vector<Command> &allCommands() {
    static const std::vector<Command> table = [] {
        std::vector<Command> all;
        for (const CommandsOfFile commandsOf : commandFiles()) {
            const std::vector<Command> some = commandsOf();
            all.insert(all.end(), some.begin(), some.end());
        }
        return all;
    }();
    return table;
}

} // namespace ctl
