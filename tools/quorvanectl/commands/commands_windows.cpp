// Packing and signing belong to the publisher's machine, and collecting a folder for support to the
// systems where it can be tested: neither is built here.
#include "quorvanectl/commands/commands.h"

namespace ctl {

const std::vector<Command> &allCommands() {
    static const std::vector<Command> table{
        projectCheck(), projectRecover(), scriptCheck(),   scriptTokens(),    scriptTree(),
        libraryList(),  updateManifest(), updateLint(),    updateCanonical(), updateAttach(),
        updateVerify(), updateStick(),    updateExplain(), logCommand(),
    };
    return table;
}

QString missingCommands() {
    return QStringLiteral("On Windows there are no commands `update pack`, `update sign`, `keys` "
                          "and `support collect`.");
}

QString systemWithout(const QString &title) {
    static const QStringList missing{QStringLiteral("update pack"), QStringLiteral("update sign"),
                                     QStringLiteral("keys"), QStringLiteral("support collect")};
    return missing.contains(title) ? QStringLiteral("Windows") : QString();
}

} // namespace ctl
