// The names of a script while it is typed: those of the last text with which nothing was wrong, at their
// places in the text as it is now.
#pragma once

#include "quorvanectl/analysis/script_symbols.h"

#include <QString>
#include <QVector>

#include <memory>
#include <optional>

namespace ctl {

// A stretch of a text that makes room for another.
struct TextEdit {
    int from = 0;
    int removed = 0;  // units
    int inserted = 0; // units
};

// What leads from one text to the other: all that differs, as one edit.
[[nodiscard]] TextEdit editBetween(const QString &before, const QString &after);

// Moves every place behind the edit, and lets what it is made in grow or shrink.
void move(ScriptSymbols *symbols, const TextEdit &edit);

// Drops the names and the imports that do not stand at their places in this text.
void dropWhatIsGone(ScriptSymbols *symbols, const QString &text);

// One thread.
class MovedSymbols {
public:
    // Its imports count from where this file lies.
    explicit MovedSymbols(const QString &filePath = QString());

    // The next text of the script, one after the other.
    void change(const QString &text);
    // With the text as it is nothing is wrong: its names count from here on. The tree of it, where there is
    // one, is kept until they are asked for or the next text settles.
    void settle(std::shared_ptr<const ast::Program> program = nullptr);
    void letGoOfTree() { tree.reset(); }

    // Of the text as it is. As long as none has settled, what can be told of this one.
    [[nodiscard]] std::shared_ptr<const ScriptSymbols> symbols();

private:
    void catchUp();

    QString path;
    QString now;
    std::optional<QString> unread; // a settled text whose names have not been asked for yet
    std::shared_ptr<const ast::Program> tree; // of that text; may be null
    QVector<TextEdit> edits;                  // since the one that settled, and not yet made
    bool hasSettled = false;
    std::shared_ptr<const ScriptSymbols> known; // null: to be made from what stands above
    ScriptSymbols settled;
};

} // namespace ctl
