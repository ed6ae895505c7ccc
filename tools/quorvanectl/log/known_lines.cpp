#include "quorvanectl/log/known_lines.h"

namespace ctl {

const std::initializer_list<KnownTable> &knownTables() {
    static const std::initializer_list<KnownTable> tables{
        launchLogTable(),   targetTable(),         packageTable(),
        signatureTable(),   networkTable(),        archiveTable(),
        projectFileTable(), projectEntriesTable(), projectScriptsTable(),
    };
    return tables;
}

} // namespace ctl
