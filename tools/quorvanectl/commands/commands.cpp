#include "quorvanectl/commands/commands.h"

namespace ctl {

const std::vector<Command> &allCommands() {
    static const std::vector<Command> table{
        projectCheck(),   projectGraph(),  projectNew(),      projectRecover(), scriptCheck(),
        scriptTokens(),   scriptTree(),    libraryList(),     languageServer(), updatePack(),
        updateManifest(), updateLint(),    updateCanonical(), updateAttach(),   updateVerify(),
        updateStick(),    updateExplain(), updateSign(),      updateRelease(),  updateWithdraw(),
        updateInfo(),     keysNew(),       supportCollect(),  logCommand(),     doctor(),
    };
    return table;
}

} // namespace ctl
