// The printed forms of tokens and trees, for tests, tools and reports.
//
// Text is for reading, one line for each token or top-level statement. It leaves positions and the
// texts of parsed expressions out:
//   a + b * c                      (+ a (* b c))
//   -f(a, b)[1]                    (- f(a, b)[1])
//   (x++) +                        (+ (x ++) null)
//   if (a) return 1; else x = 2    if (a) { <return 1> } else { x = 2 }
//
// JSON is compact and complete: a token is [kind, text, line, column]; a node is an object with its
// "type" and every field by its name in the order of the record; a null pointer is null. "kind" of
// an expression node is the name of its ExprKind.
//
// Neither depends on the thread's stack, however deep a tree nests. Any thread.
#pragma once

#include "script/syntax_tree.h"
#include "script/token.h"

#include <QString>

#include <functional>
#include <vector>

namespace ast {

// Takes the pieces of a printed form that need not be in memory as a whole, one after the other.
using TextSink = std::function<void(const QString &piece)>;

// "line:column Name text", one token a line; the text is quoted as in JSON.
[[nodiscard]] QString tokensToText(const std::vector<Token> &tokens);
void tokensToText(const std::vector<Token> &tokens, const TextSink &sink);
[[nodiscard]] QString tokensToJson(const std::vector<Token> &tokens);
void tokensToJson(const std::vector<Token> &tokens, const TextSink &sink);

// The name of a token kind, such as "KwIf"; the number as text if there is no such kind.
[[nodiscard]] QString tokenKindName(qint32 kind);

// Functions first, then the other statements, as the tree holds them.
[[nodiscard]] QString programToText(const Program &program);
void programToText(const Program &program, const TextSink &sink);
[[nodiscard]] QString programToJson(const Program &program);
void programToJson(const Program &program, const TextSink &sink);

// A null node is "null" in both forms.
[[nodiscard]] QString expressionToText(const ExprNode *root);
[[nodiscard]] QString expressionToJson(const ExprNode *root);
[[nodiscard]] QString statementToText(const Stmt *statement);
[[nodiscard]] QString statementToJson(const Stmt *statement);

// `text` in double quotes, escaped as JSON asks; so is what would steer a terminal.
[[nodiscard]] QString quotedJson(const QString &text);

} // namespace ast
