// What a script leaves open. Neither the launcher nor the check for syntax errors says a word of it: the
// file ends before the mistake shows, and what lies between is read as something else.
#pragma once

#include "script/script_diagnostics.h"

#include <QString>

#include <vector>

namespace ctl {

inline constexpr char openStringCode[] = "open-string";
inline constexpr char openBracketCode[] = "open-bracket";
inline constexpr char incompleteCode[] = "incomplete-statement";

// In the order of the text, each of severity 1: a string, and each brace, parenthesis or bracket, that
// is not closed before the text ends (of these the first twenty), and the message that the parser left behind beside a program that
// passes, if that is not empty. A text with a character that the language does not know has none.
[[nodiscard]] std::vector<ast::ScriptDiagnostic> scriptWarnings(const QString &text,
                                                                const QString &leftBehind);

} // namespace ctl
