// Finds the row of the tables that a text of the launch log was made from.
#pragma once

#include "quorvanectl/log/known_lines.h"

#include <QStringList>

#include <string_view>

namespace ctl {

// A text and the row that it was made from; without a row, none is known.
struct KnownText {
    const KnownLine *line = nullptr;
    TableKind table = TableKind::LogLines;
    bool isEnglish = false; // of a row in two languages
    QStringList filled;     // what stands for %1 and so on; one that the text lacks is null
};

// What a message of the log is, by its beginning alone where `isCut`. Fast: nothing is copied.
[[nodiscard]] const KnownLine *kindOfMessage(std::string_view message, bool isCut = false);

// The same with all that was filled in.
[[nodiscard]] KnownText knownMessage(const QString &message, bool isCut = false);

// A reason within a message, or a finding of the validator.
[[nodiscard]] KnownText knownReason(const QString &reason);

} // namespace ctl
