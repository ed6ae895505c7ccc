#include "quorvanectl/commands/commands.h"

namespace ctl {

std::vector<CommandsOfFile> commandFiles() {
    return {projectCommands, recoveryCommands, scriptCommands,  libraryCommands, packingCommands,
            updateCommands,  explainCommands,  signingCommands, supportCommands};
}

QString missingCommands() {
    return {};
}

QString systemWithout(const QString &) {
    return {};
}

} // namespace ctl
