// One string for each distinct spelling of a script, so that equal token texts share their memory.
#pragma once

#include <QString>

#include <vector>

namespace ast {

struct Spelling {
    QString text;
    // The token kind, -1 while nobody has set it.
    qint32 kind = -1;
};

// Every look-up takes bounded time, whatever spellings a script holds: one that meets too many
// others at its place is simply not shared.
class SpellingTable {
public:
    // The entry of the spelling, valid until the next call. `hash` is any hash of its units.
    Spelling &find(const QChar *units, qint32 length, quint32 hash);

private:
    struct Slot {
        Spelling spelling;
        quint32 hash = 0;
        bool isUsed = false;
    };

    Slot *place(const QChar *units, qint32 length, quint32 hash);
    void grow();

    std::vector<Slot> entries;
    quint32 used = 0;
    Spelling unshared;
};

} // namespace ast
