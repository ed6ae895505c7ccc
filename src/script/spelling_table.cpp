#include "script/spelling_table.h"

#include <cstring>
#include <utility>

namespace ast {
namespace {

constexpr quint32 firstSize = 64;
// A well-mixed hash in a half-full table needs a few; the bound is for hostile scripts.
constexpr quint32 probeLimit = 32;

bool equals(const QString &text, const QChar *units, qint32 length) {
    return text.size() == length &&
           std::memcmp(text.constData(), units, size_t(length) * sizeof(QChar)) == 0;
}

} // namespace

// The slot that holds the spelling or that is free for it; null if both are out of reach.
SpellingTable::Slot *SpellingTable::place(const QChar *units, qint32 length, quint32 hash) {
    const quint32 mask = quint32(entries.size()) - 1;
    for (quint32 probe = 0; probe < probeLimit; ++probe) {
        Slot &slot = entries[(hash + probe) & mask];
        if (!slot.isUsed || (slot.hash == hash && equals(slot.spelling.text, units, length)))
            return &slot;
    }
    return nullptr;
}

Spelling &SpellingTable::find(const QChar *units, qint32 length, quint32 hash) {
    if (used >= entries.size() / 2)
        grow();
    Slot *slot = place(units, length, hash);
    if (slot == nullptr) {
        unshared = {QString(units, length), -1};
        return unshared;
    }
    if (!slot->isUsed) {
        *slot = {{QString(units, length), -1}, hash, true};
        ++used;
    }
    return slot->spelling;
}

void SpellingTable::grow() {
    std::vector<Slot> old(entries.empty() ? firstSize : entries.size() * 2);
    old.swap(entries);
    used = 0;
    for (Slot &slot : old) {
        const QString &text = slot.spelling.text;
        Slot *target = slot.isUsed ? place(text.constData(), text.size(), slot.hash) : nullptr;
        if (target == nullptr)
            continue;
        *target = std::move(slot);
        ++used;
    }
}

} // namespace ast
