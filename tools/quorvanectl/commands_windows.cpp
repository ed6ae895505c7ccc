// Packing and signing belong to the publisher's machine, and collecting a folder for support to the
// systems where it can be tested: neither is built here.
#include "quorvanectl/commands.h"

namespace ctl {

const std::vector<Command> &allCommands() {
    static const std::vector<Command> table = [] {
        std::vector<Command> all;
        for (const auto commandsOf : {
                 projectCommands,
                 recoveryCommands,
                 scriptCommands,
                 libraryCommands,
                 updateCommands,
                 explainCommands,
             }) {
            const std::vector<Command> some = commandsOf();
            all.insert(all.end(), some.begin(), some.end());
        }
        return all;
    }();
    return table;
}

QString missingCommands() {
    return QStringLiteral("On Windows there are no commands `update pack`, `update sign`, `keys` "
                          "and `support collect`.");
}

} // namespace ctl
