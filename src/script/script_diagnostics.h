// Findings of the script front end, and the syntax check of one script.
//
// The lexer and the parser speak in terse English with a position inside the text. Here a raw
// message becomes a finding: its position as numbers, a short code, and a text that a line operator
// reads. The texts are Chinese in every locale. Codes: YS100 lexical error, YS200 syntax error,
// YS404 import cycle, YS408 duplicate global; the last two come from script/project_checks.h.
//
// Free functions without state, for any thread once the function library is loaded.
#pragma once

#include "script/syntax_tree.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace ast {

inline constexpr char lexicalErrorCode[] = "YS100";
inline constexpr char syntaxErrorCode[] = "YS200";

// One finding. Lines and columns count from 1, columns in UTF-16 code units.
struct ScriptDiagnostic {
    qint32 line = 1;
    qint32 column = 1;
    qint32 endColumn = 0; // end of the marked stretch on that line
    qint32 severity = 0;  // 0 is an error, and all four codes have it; anything else is a warning
    QString code;
    QString message;
};

// The outcome of a check, with the findings in the order found.
struct ScriptCheckResult {
    bool passed = true; // whether errorCount is below 1
    qint32 errorCount = 0;
    qint32 warningCount = 0; // nothing raises it
    std::vector<ScriptDiagnostic> diagnostics;
};

// What the check of one script works on; lives for that script only.
struct ScriptCheckContext {
    QString text;
    QStringList lines; // the text split at line feeds, empty parts kept
    ScriptCheckResult result;
};

// The context of a text that has yet to be checked.
[[nodiscard]] ScriptCheckContext makeCheckContext(const QString &text);

// Lexes and parses `context.text`. True if it gave a program, which then goes into `program` if a
// place is given; else one finding, YS100 or YS200, is added to `context.result`. A message that
// the parser left behind beside a program is no finding: so an unclosed block at the end of a file
// passes. Who wants to tell of it gives a place for it in `leftBehind`; it is empty if there is none.
[[nodiscard]] bool checkScript(ScriptCheckContext &context,
                               std::shared_ptr<Program> *program = nullptr,
                               QString *leftBehind = nullptr);

// The operator's text for a raw message; the raw message itself where there is none.
[[nodiscard]] QString friendlyMessage(const QString &message);

// Reads the position "at 3:14", with or without parentheses, out of a raw message. False if there
// is none, with `line` and `column` left alone; either may be null.
bool extractPosition(const QString &message, qint32 *line, qint32 *column);

// The printed forms of a finding: "3:14-15 YS100 error: text", and an object with every field by
// its name.
[[nodiscard]] QString diagnosticText(const ScriptDiagnostic &diagnostic);
[[nodiscard]] QJsonObject diagnosticJson(const ScriptDiagnostic &diagnostic);

} // namespace ast
