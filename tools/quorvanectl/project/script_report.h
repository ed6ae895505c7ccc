// The syntax findings of one script and what it leaves open, and their JSON.
#pragma once

#include "script/script_diagnostics.h"

#include <QJsonObject>

namespace ctl {

inline constexpr char syntaxErrorText[] = "The script has a syntax error.";

struct ScriptReport {
    QString path;      // as it is registered, or given
    QString shownPath; // as text shows it: seen from the folder in which the command runs
    ast::ScriptCheckResult result;
    std::vector<ast::ScriptDiagnostic> warnings; // of script_warnings.h
    QStringList lines;                           // of the source
};

// Checks a text. A text that memory does not suffice for fails, with a line in `error`.
[[nodiscard]] bool checkText(const QString &path, const QString &text, ScriptReport *report,
                             QString *error);

// What a finding says. The one syntax error without a text of its own is a stray brace.
[[nodiscard]] QString wordsOf(const ast::ScriptDiagnostic &finding);

[[nodiscard]] QJsonObject reportJson(const ScriptReport &report);

} // namespace ctl
