// The texts that were made last, so that clauses which say the same share one string: scripts repeat
// themselves. It holds few, however many a script has.
#pragma once

#include <QString>

#include <vector>

namespace ast {

class RecentTexts {
public:
    // A string of these units, equal ones of late if it still has them. `hash` is any hash of the units.
    [[nodiscard]] QString find(const QChar *units, int length, quint32 hash);

private:
    std::vector<QString> texts;
};

} // namespace ast
