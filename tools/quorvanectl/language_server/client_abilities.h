// What an editor says of itself when it begins.
#pragma once

#include "quorvanectl/language_server/text_positions.h"

#include <QJsonObject>

namespace ctl {

// What it does not say, it cannot.
struct ClientAbilities {
    ColumnUnit unit = ColumnUnit::Utf16;
    bool showsRelated = false;      // the other places of a finding
    bool registersWatchers = false; // tells of files that change on the disk
    bool showsProgress = false;     // of what the server does by itself
    bool fillsSnippets = false;     // puts in texts with places to fill in
    bool readsMarkdown = false;     // where it shows what a name stands for
    bool nestsSymbols = false;      // takes a symbol's name apart from its whole
    bool asksBeforeRename = false;  // whether there is something to rename
    bool takesOffsets = false;      // of the parameters in a signature
};

// Of the params of `initialize`.
[[nodiscard]] ClientAbilities abilitiesIn(const QJsonObject &params);

} // namespace ctl
