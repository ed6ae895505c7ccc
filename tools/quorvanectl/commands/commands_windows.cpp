// Packing and signing belong to the publisher's machine, and looking at a line PC for support to the
// systems where it can be tested: neither is built here.
#include "quorvanectl/commands/commands.h"

namespace ctl {

const std::vector<Command> &allCommands() {
    static const std::vector<Command> table{
        projectCheck(),    projectGraph(), projectNew(),   projectRecover(), scriptCheck(),
        scriptTokens(),    scriptTree(),   libraryList(),  updateManifest(), updateLint(),
        updateCanonical(), updateAttach(), updateVerify(), updateStick(),    updateExplain(),
        updateInfo(),      logCommand(),
    };
    return table;
}

QString missingCommands() {
    return QStringLiteral("On Windows there are no commands `update pack`, `update sign`, `keys`, "
                          "`support collect` and `doctor`.");
}

QString systemWithout(const QString &title) {
    static const QStringList missing{QStringLiteral("update pack"), QStringLiteral("update sign"),
                                     QStringLiteral("keys"), QStringLiteral("support collect"),
                                     QStringLiteral("doctor")};
    return missing.contains(title) ? QStringLiteral("Windows") : QString();
}

} // namespace ctl
