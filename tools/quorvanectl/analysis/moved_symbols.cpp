#include "quorvanectl/analysis/moved_symbols.h"

#include "script/syntax_tree.h"
#include "update/files/memory_guard.h"

#include <algorithm>
#include <utility>

namespace ctl {
namespace {

// So many edits are kept at most until they are made.
constexpr int mostEdits = 100;

// A name that touches the edit from outside stays as it is; dropWhatIsGone() tells whether it still is
// one.
Stretch movedName(const Stretch &name, const TextEdit &edit) {
    const int delta = edit.inserted - edit.removed;
    if (name.from >= edit.from + edit.removed)
        return {name.from + delta, name.to + delta};
    return name;
}

// What is typed at an end of a stretch belongs to it, as a cursor at its end does.
Stretch movedStretch(const Stretch &stretch, const TextEdit &edit) {
    const int behind = edit.from + edit.removed;
    const int delta = edit.inserted - edit.removed;
    const int from = stretch.from <= edit.from ? stretch.from
                     : stretch.from >= behind  ? stretch.from + delta
                                               : edit.from;
    const int to = stretch.to >= behind      ? stretch.to + delta
                   : stretch.to <= edit.from ? stretch.to
                                             : edit.from + edit.inserted;
    return {from, to};
}

bool isWordPart(const QString &text, int index) {
    return index >= 0 && index < text.size() &&
           (text.at(index).isLetterOrNumber() || text.at(index) == QLatin1Char('_'));
}

bool stands(const QString &spelling, const Stretch &at, const QString &text) {
    return text.midRef(at.from, at.to - at.from) == spelling;
}

bool standsAsWord(const QString &name, const Stretch &at, const QString &text) {
    return stands(name, at, text) && !isWordPart(text, at.from - 1) && !isWordPart(text, at.to);
}

} // namespace

TextEdit editBetween(const QString &before, const QString &after) {
    const int common = qMin(before.size(), after.size());
    const auto differs = std::mismatch(before.cbegin(), before.cbegin() + common, after.cbegin());
    const int from = int(differs.first - before.cbegin());
    int same = 0;
    while (same < common - from &&
           before.at(before.size() - same - 1) == after.at(after.size() - same - 1))
        ++same;
    return {from, before.size() - from - same, after.size() - from - same};
}

void move(ScriptSymbols *symbols, const TextEdit &edit) {
    for (ScriptName &name : symbols->names) {
        name.at = movedName(name.at, edit);
        name.visible = movedStretch(name.visible, edit);
        name.whole = movedStretch(name.whole, edit);
    }
    for (NameUse &use : symbols->uses)
        use.at = movedName(use.at, edit);
    for (NamedImport &import : symbols->imports)
        import.at = movedName(import.at, edit);
}

void dropWhatIsGone(ScriptSymbols *symbols, const QString &text) {
    QVector<int> numbers;
    QVector<ScriptName> names;
    for (const ScriptName &name : qAsConst(symbols->names)) {
        const bool isThere = standsAsWord(name.name, name.at, text);
        numbers.append(isThere ? names.size() : -1);
        if (isThere)
            names.append(name);
    }
    symbols->names = names;
    QVector<NameUse> uses;
    for (NameUse use : qAsConst(symbols->uses)) {
        if (!standsAsWord(use.name, use.at, text))
            continue;
        use.meaning = use.meaning < 0 ? -1 : numbers.at(use.meaning);
        uses.append(use);
    }
    symbols->uses = uses;
    QVector<NamedImport> &imports = symbols->imports;
    imports.erase(std::remove_if(imports.begin(), imports.end(),
                                 [&text](const NamedImport &import) {
                                     return !stands(import.written, import.at, text);
                                 }),
                  imports.end());
}

MovedSymbols::MovedSymbols(const QString &filePath)
    : path(filePath) {}

void MovedSymbols::change(const QString &text) {
    known.reset();
    if (hasSettled)
        edits.append(editBetween(now, text));
    now = text;
    if (edits.size() == mostEdits)
        catchUp();
}

void MovedSymbols::settle(std::shared_ptr<const ast::Program> program) {
    tree = std::move(program);
    unread = now;
    hasSettled = true;
    edits.clear();
    known.reset();
}

void MovedSymbols::catchUp() {
    const auto read = [this] { return symbolsOf(path, *unread, *tree); };
    if (unread)
        settled =
            tree == nullptr ? symbolsIn(path, *unread) : unlessOutOfMemory(read, ScriptSymbols());
    unread.reset();
    tree.reset();
    if (edits.isEmpty())
        return;
    for (const TextEdit &edit : qAsConst(edits))
        move(&settled, edit);
    edits.clear();
    dropWhatIsGone(&settled, now);
}

std::shared_ptr<const ScriptSymbols> MovedSymbols::symbols() {
    if (known)
        return known;
    if (hasSettled)
        catchUp();
    known = std::make_shared<const ScriptSymbols>(hasSettled ? settled : symbolsIn(path, now));
    return known;
}

} // namespace ctl
